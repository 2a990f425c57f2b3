#pragma once

#include <QWidget>

class QCheckBox;
class QDateEdit;
class QListView;
class QPushButton;
class QStackedWidget;

namespace scrivly {

class AppModel;
class StatusView;
class TranscriptModel;

// The right column of the main screen: the date range, the export buttons and the transcript of
// the selected conversation (or why there is none).
class TranscriptView : public QWidget {
    Q_OBJECT

public:
    TranscriptView(AppModel& model, QWidget* parent = nullptr);

    QListView* list() const { return m_list; }
    TranscriptModel& rows() const { return *m_rows; }
    // Puts the keyboard focus on the transcript.
    void focusTranscript();

protected:
    // Reactions are shown in the texts of the language now installed.
    void changeEvent(QEvent* event) override;

private:
    void update();
    void updateDates();
    void copySelection();

    AppModel& m_model;
    TranscriptModel* m_rows;
    QCheckBox* m_useFrom;
    QDateEdit* m_from;
    QCheckBox* m_useTo;
    QDateEdit* m_to;
    QPushButton* m_preview;
    QPushButton* m_export;
    QStackedWidget* m_stack;
    StatusView* m_nothingSelected;
    QWidget* m_loading;
    QListView* m_list;
    StatusView* m_noMessages;
};

} // namespace scrivly
