#pragma once

#include <QDialog>

#include <functional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QSpinBox;

namespace scrivly {

class AppModel;
struct ProduceForm;

// The produce sheet: what a production is in one line, which conversations and days it takes,
// its numbering and what goes with the PDFs, the folder it is written into, then its progress
// with Cancel and the outcome with "Show in Folder". A problem shows as text in the sheet.
class ProduceSheet : public QDialog {
    Q_OBJECT

public:
    ProduceSheet(AppModel& model, QWidget* parent);

    QPushButton* produceButton() const { return m_produce; }
    QPushButton* cancelButton() const { return m_cancel; }
    QWidget* progressRow() const { return m_progressRow; }
    QWidget* doneRow() const { return m_doneRow; }
    QLabel* problemLabel() const { return m_problem; }
    QLabel* doneLabel() const { return m_done; }
    QLineEdit* folderField() const { return m_folder; }
    QLineEdit* prefixField() const { return m_prefix; }

    // A folder named "Production" in the documents folder, numbered on past ones that hold files.
    static QString suggestedFolder();

private:
    void change(const std::function<void(ProduceForm&)>& edit);
    void chooseFolder();
    void updateForm();
    void updateState();
    void updateSubject();

    AppModel& m_model;
    QLabel* m_conversations;
    QLabel* m_dates;
    QLineEdit* m_prefix;
    QSpinBox* m_start;
    QCheckBox* m_perDay;
    QCheckBox* m_split;
    QSpinBox* m_splitSize;
    QCheckBox* m_natives;
    QCheckBox* m_spreadsheets;
    QCheckBox* m_loadFile;
    QLineEdit* m_custodian;
    QLineEdit* m_folder;
    QPushButton* m_choose;
    QWidget* m_form;
    QLabel* m_problem;
    QWidget* m_progressRow;
    QLabel* m_progressText;
    QProgressBar* m_progress;
    QPushButton* m_cancel;
    QWidget* m_doneRow;
    QLabel* m_done;
    QPushButton* m_close;
    QPushButton* m_produce;
};

} // namespace scrivly
