#include "Scrivly/screens/MainView.h"

#include "Scrivly/model/AppModel.h"
#include "Scrivly/model/PlatformTexts.h"
#include "Scrivly/screens/ConversationList.h"
#include "Scrivly/screens/StatusView.h"
#include "Scrivly/screens/Symbols.h"
#include "Scrivly/screens/TranscriptView.h"

#include <QAction>
#include <QBoxLayout>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QToolButton>

namespace scrivly {

namespace {

QString shortcutText(QKeySequence sequence) {
    return sequence.toString(QKeySequence::NativeText);
}

// Down from the search field moves into the list, so the list can be reached without a mouse.
class SearchKeys : public QObject {
public:
    SearchKeys(QListView* list, QObject* parent) : QObject(parent), m_list(list) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::KeyPress &&
            static_cast<QKeyEvent*>(event)->key() == Qt::Key_Down && m_list->model() &&
            m_list->model()->rowCount() > 0) {
            m_list->setFocus(Qt::TabFocusReason);
            if (!m_list->currentIndex().isValid()) {
                m_list->setCurrentIndex(m_list->model()->index(0, 0));
            }
            return true;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QListView* m_list;
};

} // namespace

MainView::MainView(AppModel& model, QWidget* parent)
    : QWidget(parent), m_model(model), m_rows(new ConversationListModel(this)),
      m_search(new QLineEdit(this)), m_reload(new QToolButton(this)),
      m_export(new QToolButton(this)), m_listStack(new QStackedWidget(this)),
      m_list(new QListView(this)),
      m_noConversations(new StatusView(QStringLiteral("bubble.left.and.bubble.right"), this)),
      m_contactsBar(new QFrame(this)), m_contactsText(new QLabel(this)),
      m_contactsButton(new QPushButton(this)), m_transcript(new TranscriptView(model, this)),
      m_detail(new QStackedWidget(this)),
      m_several(new StatusView(QStringLiteral("doc.richtext"), this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setChildrenCollapsible(false);
    layout->addWidget(splitter);

    auto* sidebar = new QWidget(splitter);
    sidebar->setMinimumWidth(240);
    auto* side = new QVBoxLayout(sidebar);
    side->setContentsMargins(0, 0, 0, 0);
    side->setSpacing(0);

    auto* top = new QHBoxLayout;
    top->setContentsMargins(10, 8, 8, 8);
    top->setSpacing(4);
    m_search->setPlaceholderText(tr("Search names or numbers"));
    m_search->setAccessibleName(tr("Search names or numbers"));
    m_search->setClearButtonEnabled(true);
    top->addWidget(m_search, 1);
    m_reload->setIcon(Symbols::icon(QStringLiteral("arrow.clockwise")));
    m_reload->setAutoRaise(true);
    m_reload->setAccessibleName(tr("Reload Messages"));
    m_reload->setToolTip(tr("Read Messages again for anything new (%1)")
                             .arg(shortcutText(QKeySequence(Qt::CTRL | Qt::Key_R))));
    top->addWidget(m_reload);
    m_export->setIcon(Symbols::icon(QStringLiteral("square.and.arrow.up")));
    m_export->setText(tr("Export"));
    m_export->setAutoRaise(true);
    m_export->setAccessibleName(tr("Export"));
    m_export->setToolTip(tr("Export this conversation as a PDF or CSV (%1)")
                             .arg(shortcutText(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E))));
    top->addWidget(m_export);
    side->addLayout(top);

    m_list->setModel(m_rows);
    m_list->setItemDelegate(new ConversationDelegate(m_list));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setUniformItemSizes(true);
    // Ctrl- and Shift-clicks choose several conversations for a production.
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    auto* selectAll = new QAction(tr("Select All"), m_list);
    connect(selectAll, &QAction::triggered, m_list, &QListView::selectAll);
    auto* produce = new QAction(tr("Produce…"), m_list);
    connect(produce, &QAction::triggered, &model, &AppModel::showProduce);
    m_list->addActions({selectAll, produce});
    m_list->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_list->setAccessibleName(tr("Conversations"));
    m_search->installEventFilter(new SearchKeys(m_list, this));
    m_noConversations->setCompact(true);
    m_noConversations->setTitle(tr("No Conversations"));
    m_noConversations->setText(PlatformTexts::noConversations());
    m_listStack->addWidget(m_list);
    m_listStack->addWidget(m_noConversations);
    auto* rule = new QFrame(this);
    rule->setFrameShape(QFrame::HLine);
    rule->setFrameShadow(QFrame::Sunken);
    side->addWidget(rule);
    side->addWidget(m_listStack, 1);

    auto* barLayout = new QHBoxLayout(m_contactsBar);
    barLayout->setContentsMargins(10, 8, 10, 8);
    barLayout->setSpacing(8);
    auto* contactsIcon = new QLabel(m_contactsBar);
    const int iconSize = m_contactsText->fontMetrics().height() + 4;
    contactsIcon->setPixmap(
        Symbols::icon(QStringLiteral("person.text.rectangle")).pixmap(iconSize, iconSize));
    barLayout->addWidget(contactsIcon, 0, Qt::AlignTop);
    auto* barText = new QVBoxLayout;
    barText->setSpacing(6);
    m_contactsText->setParent(m_contactsBar);
    m_contactsText->setWordWrap(true);
    barText->addWidget(m_contactsText);
    m_contactsButton->setParent(m_contactsBar);
    barText->addWidget(m_contactsButton, 0, Qt::AlignLeft);
    barLayout->addLayout(barText, 1);
    m_contactsBar->setAutoFillBackground(true);
    m_contactsBar->setBackgroundRole(QPalette::AlternateBase);
    m_contactsRule = new QFrame(this);
    m_contactsRule->setFrameShape(QFrame::HLine);
    m_contactsRule->setFrameShadow(QFrame::Sunken);
    side->addWidget(m_contactsRule);
    side->addWidget(m_contactsBar);

    splitter->addWidget(sidebar);
    m_several->setText(tr("Produce them as one set of numbered documents, or choose one to see "
                          "its messages."));
    connect(m_several->addButton(tr("Produce…")), &QPushButton::clicked, &model,
            &AppModel::showProduce);
    m_detail->addWidget(m_transcript);
    m_detail->addWidget(m_several);
    splitter->addWidget(m_detail);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({300, 700});

    setTabOrder(m_search, m_list);
    setTabOrder(m_list, m_contactsButton);

    connect(m_search, &QLineEdit::textChanged, &model, &AppModel::setSearch);
    connect(m_reload, &QToolButton::clicked, &model, &AppModel::reload);
    connect(m_export, &QToolButton::clicked, &model, &AppModel::showExport);
    connect(m_contactsButton, &QPushButton::clicked, this, [this] {
        if (m_model.contacts() == AppModel::ContactsAccess::notAsked) {
            m_model.requestContacts();
        } else {
            m_model.openContactsSettings();
        }
    });
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) {
                if (current.isValid()) {
                    m_model.select(m_rows->at(current.row()).id);
                }
            });
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &MainView::reportChosen);
    // Enter or a double click goes on to the transcript.
    connect(m_list, &QListView::activated, m_transcript, &TranscriptView::focusTranscript);

    connect(&model, &AppModel::conversationsChanged, this, &MainView::updateConversations);
    connect(&model, &AppModel::searchChanged, this, &MainView::updateConversations);
    connect(&model, &AppModel::selectionChanged, this, &MainView::updateSelection);
    connect(&model, &AppModel::contactsChanged, this, &MainView::updateContacts);
    connect(&model, &AppModel::databaseSourceChanged, this, &MainView::updateContacts);
    connect(&model, &AppModel::chosenChanged, this, &MainView::updateChosen);
    updateConversations();
    updateContacts();
    updateChosen();
}

void MainView::updateConversations() {
    if (m_search->text() != m_model.search()) {
        const QSignalBlocker block(m_search);
        m_search->setText(m_model.search());
    }
    // A new list forgets its selection; the chosen conversations it still shows stay chosen.
    const std::vector<std::string> chosen = m_model.chosen();
    m_rows->setConversations(m_model.filteredConversations());
    for (const std::string& id : chosen) {
        if (const int row = m_rows->rowOf(id); row >= 0) {
            const QSignalBlocker block(m_list->selectionModel());
            m_list->selectionModel()->select(m_rows->index(row), QItemSelectionModel::Select);
        }
    }
    // An empty history has its own screen; a search that matches nothing is just an empty list.
    m_listStack->setCurrentWidget(
        m_model.conversations().empty() ? static_cast<QWidget*>(m_noConversations) : m_list);
    updateSelection();
}

void MainView::updateSelection() {
    const bool selected = m_model.selection().has_value();
    const int row = selected ? m_rows->rowOf(*m_model.selection()) : -1;
    const QModelIndex index = row >= 0 ? m_rows->index(row) : QModelIndex();
    // Only a selection made elsewhere moves the list's (a click there has chosen already, and a
    // Ctrl-click adds to what was chosen); one among the chosen keeps them chosen.
    if (index != m_list->currentIndex()) {
        const QSignalBlocker block(m_list->selectionModel());
        m_list->selectionModel()->setCurrentIndex(index, m_list->selectionModel()->isSelected(index)
                                                             ? QItemSelectionModel::NoUpdate
                                                             : QItemSelectionModel::ClearAndSelect);
        m_list->viewport()->update();
    }
    if (index.isValid()) {
        m_list->scrollTo(index);
    }
    reportChosen();
    updateChosen();
}

void MainView::reportChosen() {
    std::vector<std::string> ids;
    for (int row = 0; row < m_rows->rowCount(); ++row) {
        if (m_list->selectionModel()->isSelected(m_rows->index(row))) {
            ids.push_back(m_rows->at(row).id);
        }
    }
    m_model.choose(std::move(ids));
}

void MainView::updateChosen() {
    const bool several = m_model.chosen().size() > 1;
    if (several) {
        m_several->setTitle(
            tr("%1 Conversations Selected").arg(QLocale().toString(m_model.chosen().size())));
    }
    m_detail->setCurrentWidget(several ? static_cast<QWidget*>(m_several) : m_transcript);
    // Export is of the one conversation on show.
    m_export->setEnabled(m_model.selection().has_value() && !several);
}

void MainView::updateContacts() {
    // Where no system pane decides and the user can't choose again, the refusal is explained
    // and left there.
#ifdef Q_OS_MACOS
    const bool canOpenSettings = true;
#else
    const bool canOpenSettings = m_model.canChooseContacts();
#endif
    switch (m_model.contacts()) {
    case AppModel::ContactsAccess::notAsked:
        m_contactsText->setText(tr("Show names instead of numbers."));
        m_contactsButton->setText(tr("Use Contacts"));
        m_contactsButton->show();
        m_contactsBar->show();
        break;
    case AppModel::ContactsAccess::denied:
        m_contactsText->setText(tr("Contacts is off: numbers show instead of names."));
        m_contactsButton->setText(tr("Open Settings"));
        m_contactsButton->setVisible(canOpenSettings);
        m_contactsBar->show();
        break;
    case AppModel::ContactsAccess::granted:
        m_contactsBar->hide();
        break;
    }
    m_contactsRule->setVisible(m_model.contacts() != AppModel::ContactsAccess::granted);
}

} // namespace scrivly
