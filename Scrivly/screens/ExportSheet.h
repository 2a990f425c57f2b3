#pragma once

#include <QDialog>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QSpinBox;

namespace scrivly {

class AppModel;

// The line shown after a save: a check mark, "Saved " and the file's name, and "Show in
// Folder" ("Show in Finder" on a Mac). Hidden until something was saved.
class SavedLine : public QWidget {
    Q_OBJECT

public:
    SavedLine(AppModel& model, QWidget* parent = nullptr);

private:
    void update();

    AppModel& m_model;
    QLabel* m_text;
};

// The export sheet: the document's title, header and paper, page numbers, and the buttons that
// preview, export a CSV or make and save the PDF, with the progress of the PDF being made.
class ExportSheet : public QDialog {
    Q_OBJECT

public:
    ExportSheet(AppModel& model, QWidget* parent);

    QPushButton* cancelButton() const { return m_cancel; }
    QPushButton* exportPDFButton() const { return m_exportPDF; }
    QWidget* progressRow() const { return m_progressRow; }

private:
    void updateForm();
    void updateSettings();
    void updateExporting();

    AppModel& m_model;
    QLineEdit* m_title;
    QLineEdit* m_header;
    QComboBox* m_paper;
    QCheckBox* m_cover;
    QCheckBox* m_photos;
    QLineEdit* m_prefix;
    QLabel* m_startLabel;
    QSpinBox* m_start;
    QWidget* m_progressRow;
    QProgressBar* m_progress;
    QPushButton* m_cancel;
    QPushButton* m_close;
    QPushButton* m_preview;
    QPushButton* m_exportCSV;
    QPushButton* m_exportPDF;
};

} // namespace scrivly
