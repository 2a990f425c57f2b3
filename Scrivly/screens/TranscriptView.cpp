#include "Scrivly/screens/TranscriptView.h"

#include "Scrivly/model/AppModel.h"
#include "Scrivly/screens/Spinner.h"
#include "Scrivly/screens/StatusView.h"
#include "Scrivly/screens/Symbols.h"
#include "Scrivly/screens/TranscriptModel.h"
#include "ScrivlyKit/export/ReactionSummary.h"

#include <QAction>
#include <QBoxLayout>
#include <QCheckBox>
#include <QClipboard>
#include <QDateEdit>
#include <QEvent>
#include <QFrame>
#include <QGuiApplication>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QStackedWidget>

#include <algorithm>

namespace scrivly {

namespace {

QDate toQDate(DayBounds::Day day) {
    return {day.year, day.month, day.day};
}

DayBounds::Day toDay(QDate date) {
    return {date.year(), date.month(), date.day()};
}

} // namespace

TranscriptView::TranscriptView(AppModel& model, QWidget* parent)
    : QWidget(parent), m_model(model),
      m_rows(new TranscriptModel(
          [&model](const std::vector<ShownReaction>& reactions) {
              return QString::fromStdString(reactionSummary(reactions, model.exportStrings()));
          },
          this)),
      m_useFrom(new QCheckBox(tr("From"), this)), m_from(new QDateEdit(this)),
      m_useTo(new QCheckBox(tr("To"), this)), m_to(new QDateEdit(this)),
      m_preview(new QPushButton(tr("Preview PDF"), this)),
      m_export(new QPushButton(tr("Export"), this)), m_stack(new QStackedWidget(this)),
      m_nothingSelected(new StatusView(QStringLiteral("bubble.left.and.bubble.right"), this)),
      m_loading(new QWidget(this)), m_list(new QListView(this)),
      m_noMessages(new StatusView(QStringLiteral("calendar.badge.exclamationmark"), this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    auto* bar = new QWidget(this);
    auto* barLayout = new QHBoxLayout(bar);
    barLayout->setContentsMargins(12, 8, 12, 8);
    barLayout->setSpacing(6);
    for (auto [box, edit, name] : {std::tuple{m_useFrom, m_from, tr("From date")},
                                   std::tuple{m_useTo, m_to, tr("To date")}}) {
        edit->setCalendarPopup(true);
        edit->setDisplayFormat(QLocale().dateFormat(QLocale::ShortFormat));
        edit->setAccessibleName(name);
        edit->setToolTip(name);
        barLayout->addWidget(box);
        barLayout->addWidget(edit);
        barLayout->addSpacing(10);
    }
    barLayout->addStretch(1);
    m_preview->setIcon(Symbols::icon(QStringLiteral("doc.text.magnifyingglass")));
    m_export->setIcon(Symbols::icon(QStringLiteral("square.and.arrow.up")));
    m_export->setToolTip(
        tr("Export this conversation as a PDF or CSV (%1)")
            .arg(
                QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E).toString(QKeySequence::NativeText)));
    barLayout->addWidget(m_preview);
    barLayout->addWidget(m_export);
    layout->addWidget(bar);
    auto* rule = new QFrame(this);
    rule->setFrameShape(QFrame::HLine);
    rule->setFrameShadow(QFrame::Sunken);
    layout->addWidget(rule);
    layout->addWidget(m_stack, 1);

    m_nothingSelected->setCompact(true);
    m_nothingSelected->setTitle(tr("Choose a Conversation"));
    m_nothingSelected->setText(
        tr("Pick a person or group on the left to see and export their messages."));
    m_noMessages->setCompact(true);
    m_noMessages->setTitle(tr("No Messages in These Dates"));
    m_noMessages->setText(tr("Widen the date range to see more."));

    auto* loadingLayout = new QVBoxLayout(m_loading);
    loadingLayout->addStretch(1);
    loadingLayout->addWidget(new Spinner(m_loading), 0, Qt::AlignCenter);
    loadingLayout->addStretch(1);

    m_list->setModel(m_rows);
    m_list->setItemDelegate(new TranscriptDelegate(*m_rows, *m_list));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setResizeMode(QListView::Adjust);
    m_list->setLayoutMode(QListView::Batched);
    m_list->setBatchSize(200);
    m_list->setUniformItemSizes(false);
    m_list->setAccessibleName(tr("Transcript"));
    auto* copy = new QAction(tr("Copy"), m_list);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &TranscriptView::copySelection);
    m_list->addAction(copy);

    m_stack->addWidget(m_nothingSelected);
    m_stack->addWidget(m_loading);
    m_stack->addWidget(m_list);
    m_stack->addWidget(m_noMessages);

    setTabOrder(m_useFrom, m_from);
    setTabOrder(m_from, m_useTo);
    setTabOrder(m_useTo, m_to);
    setTabOrder(m_to, m_preview);
    setTabOrder(m_preview, m_export);
    setTabOrder(m_export, m_list);

    connect(m_useFrom, &QCheckBox::toggled, &model, &AppModel::setUseFrom);
    connect(m_useTo, &QCheckBox::toggled, &model, &AppModel::setUseTo);
    connect(m_from, &QDateEdit::dateChanged, this,
            [this](QDate date) { m_model.setFromDay(toDay(date)); });
    connect(m_to, &QDateEdit::dateChanged, this,
            [this](QDate date) { m_model.setToDay(toDay(date)); });
    connect(m_preview, &QPushButton::clicked, this, [this] {
        // The export sheet shows the rendering's progress; the preview replaces it when done.
        if (!m_model.sheet()) {
            m_model.showExport();
        }
        m_model.showPreview();
    });
    connect(m_export, &QPushButton::clicked, &model, &AppModel::showExport);

    for (auto signal : {&AppModel::useFromChanged, &AppModel::useToChanged, &AppModel::fromChanged,
                        &AppModel::toChanged}) {
        connect(&model, signal, this, &TranscriptView::updateDates);
    }
    for (auto signal : {&AppModel::selectionChanged, &AppModel::transcriptChanged,
                        &AppModel::loadingMessagesChanged}) {
        connect(&model, signal, this, &TranscriptView::update);
    }
    updateDates();
    update();
}

void TranscriptView::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange) {
        m_rows->refreshTexts();
    }
    QWidget::changeEvent(event);
}

void TranscriptView::updateDates() {
    const QSignalBlocker blockFrom(m_from);
    const QSignalBlocker blockTo(m_to);
    const QSignalBlocker blockUseFrom(m_useFrom);
    const QSignalBlocker blockUseTo(m_useTo);
    m_useFrom->setChecked(m_model.useFrom());
    m_useTo->setChecked(m_model.useTo());
    m_from->setDate(toQDate(m_model.fromDay()));
    m_to->setDate(toQDate(m_model.toDay()));
    m_from->setEnabled(m_model.useFrom());
    m_to->setEnabled(m_model.useTo());
}

void TranscriptView::update() {
    const bool selected = m_model.selection().has_value();
    m_preview->setEnabled(selected);
    m_export->setEnabled(selected);
    m_rows->setTranscript(m_model.transcript());
    if (!selected) {
        m_stack->setCurrentWidget(m_nothingSelected);
    } else if (m_model.loadingMessages()) {
        m_stack->setCurrentWidget(m_loading);
    } else if (m_model.transcript() && m_model.transcript()->entries.empty()) {
        m_stack->setCurrentWidget(m_noMessages);
    } else if (m_model.transcript()) {
        m_stack->setCurrentWidget(m_list);
    } else {
        // Selected but not read (the read failed): the alert says why.
        m_stack->setCurrentWidget(m_nothingSelected);
    }
}

void TranscriptView::focusTranscript() {
    if (m_stack->currentWidget() == m_list) {
        m_list->setFocus(Qt::OtherFocusReason);
        if (!m_list->currentIndex().isValid() && m_rows->rowCount() > 0) {
            m_list->setCurrentIndex(m_rows->index(0));
        }
    }
}

void TranscriptView::copySelection() {
    QModelIndexList selected = m_list->selectionModel()->selectedIndexes();
    std::sort(selected.begin(), selected.end(),
              [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    QStringList texts;
    for (const QModelIndex& index : selected) {
        texts.append(index.data(Qt::DisplayRole).toString());
    }
    if (!texts.isEmpty()) {
        QGuiApplication::clipboard()->setText(texts.join(QStringLiteral("\n\n")));
    }
}

} // namespace scrivly
