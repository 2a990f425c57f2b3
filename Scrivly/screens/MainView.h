#pragma once

#include <QWidget>

class QFrame;
class QLabel;
class QLineEdit;
class QListView;
class QPushButton;
class QSplitter;
class QStackedWidget;
class QToolButton;

namespace scrivly {

class AppModel;
class ConversationListModel;
class StatusView;
class TranscriptView;

// The main screen: the searchable conversation list with its contacts bar on the left, the
// transcript on the right. Several conversations may be chosen in the list, for a production;
// the right side then says how many, with a button to produce them.
class MainView : public QWidget {
    Q_OBJECT

public:
    MainView(AppModel& model, QWidget* parent = nullptr);

    QLineEdit* searchField() const { return m_search; }
    QListView* list() const { return m_list; }
    TranscriptView* transcript() const { return m_transcript; }
    // Shown in the transcript's place while several conversations are chosen.
    StatusView* severalChosen() const { return m_several; }
    QToolButton* exportButton() const { return m_export; }

private:
    void updateConversations();
    void updateSelection();
    void updateContacts();
    void updateChosen();
    // Tells the model which rows are chosen, in the list's order.
    void reportChosen();

    AppModel& m_model;
    ConversationListModel* m_rows;
    QLineEdit* m_search;
    QToolButton* m_reload;
    QToolButton* m_export;
    QStackedWidget* m_listStack;
    QListView* m_list;
    StatusView* m_noConversations;
    QFrame* m_contactsRule = nullptr;
    QWidget* m_contactsBar;
    QLabel* m_contactsText;
    QPushButton* m_contactsButton;
    TranscriptView* m_transcript;
    QStackedWidget* m_detail;
    StatusView* m_several;
};

} // namespace scrivly
