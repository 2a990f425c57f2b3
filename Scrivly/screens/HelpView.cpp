#include "Scrivly/screens/HelpView.h"

#include "Scrivly/model/PlatformTexts.h"
#include "Scrivly/screens/AppConfig.h"
#include "Scrivly/screens/Symbols.h"

#include <QBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QListWidget>
#include <QSplitter>
#include <QTextBrowser>

#include <algorithm>

namespace scrivly {

namespace {

QString native(QKeySequence sequence) {
    return sequence.toString(QKeySequence::NativeText);
}

} // namespace

std::vector<Topic> HelpView::topics() {
    const QString exportKeys = native(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E));
    const QString reloadKeys = native(QKeySequence(Qt::CTRL | Qt::Key_R));
    const QString support = QLatin1String(AppConfig::kSupportAddress);
    const QString website = QUrl(QLatin1String(AppConfig::kWebsite)).host();
    return {
        {QStringLiteral("start"),
         tr("Getting started"),
         QStringLiteral("play.circle"),
         {PlatformTexts::helpGettingStarted(),
          tr("Choose Use Contacts so phone numbers and emails show as names. Without it, exports "
             "show the numbers."),
          tr("Pick a person or group on the left. One person’s iMessage and text-message (SMS) "
             "chats are shown together.")}},
        {QStringLiteral("export"),
         tr("Exporting"),
         QStringLiteral("square.and.arrow.up"),
         {tr("Set a date range with From and To (whole days), then choose Export… (%1). Preview "
             "shows the PDF before you save it.")
              .arg(exportKeys),
          tr("PDFs label every sender, show the time of each message, put photos inline (iPhone "
             "HEIC photos become JPEG), list other files by name, and show reactions as text "
             "under the message."),
          tr("Every page is numbered “Page 1 of 12”. Add a number prefix for Bates-style numbers "
             "at the bottom right (SMITH-000001, SMITH-000002…), and a header such as a case name "
             "at the top of every page. The cover page lists the participants, dates and counts."),
          tr("CSV saves one row per message (date, time, sender, text, attachments, reactions) "
             "for Numbers or Excel."),
          tr("Scrivly lays messages out; it doesn’t change their wording. Whether a printout is "
             "accepted somewhere (a court, an insurer) is up to them: ask before you rely on "
             "it.")}},
        {QStringLiteral("missing"),
         tr("Missing messages or photos"),
         QStringLiteral("questionmark.circle"),
         {PlatformTexts::helpMissingMessages().arg(reloadKeys), PlatformTexts::helpMissingPhotos(),
          tr("Unsent messages aren’t included: Messages doesn’t keep their words.")}},
        {QStringLiteral("privacy"),
         tr("Your data and privacy"),
         QStringLiteral("lock.shield"),
         {tr("Each time Scrivly reads your messages (the list, or a conversation you open), it "
             "copies the Messages database into a private temporary folder, reads the copy and "
             "deletes it right away. No copy is kept between reads, and if Scrivly stops "
             "unexpectedly, it clears anything left the next time it opens. It never writes to "
             "Messages’ files, and nothing about your messages or contacts is uploaded or sent "
             "anywhere."),
          tr("Exports are new files, saved only where you choose."),
          tr("Scrivly connects to the internet only to look for updates on its website, %1. "
             "It sends nothing about you or your messages when it does.")
              .arg(website)}},
        {QStringLiteral("support"),
         tr("Support"),
         QStringLiteral("envelope"),
         {tr("Questions, ideas or a problem? Email %1; a person reads every message.")
              .arg(support)}},
    };
}

HelpView::HelpView(QWidget* parent)
    : QWidget(parent, Qt::Window), m_topics(topics()), m_list(new QListWidget(this)),
      m_text(new QTextBrowser(this)) {
    setWindowTitle(tr("Scrivly Help"));
    setObjectName(QStringLiteral("help"));
    resize(760, 500);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 10);
    auto* splitter = new QSplitter(this);
    splitter->setChildrenCollapsible(false);
    layout->addWidget(splitter, 1);

    m_list->setIconSize(QSize(20, 20));
    m_list->setSpacing(2);
    m_list->setAccessibleName(tr("Help topics"));
    for (const Topic& topic : m_topics) {
        auto* item = new QListWidgetItem(Symbols::icon(topic.symbol), topic.title, m_list);
        item->setData(Qt::UserRole, topic.id);
    }
    // Wide enough for the longest title in any language, so none is cut and no scrollbar shows.
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const int listWidth = std::max(210, m_list->sizeHintForColumn(0) + 2 * m_list->frameWidth() +
                                            4 * m_list->spacing() + 8);
    m_list->setMinimumWidth(listWidth);
    splitter->addWidget(m_list);
    m_text->setOpenExternalLinks(true);
    m_text->setFrameShape(QFrame::NoFrame);
    m_text->setAccessibleName(tr("Help text"));
    m_text->document()->setDocumentMargin(18);
    splitter->addWidget(m_text);
    splitter->setStretchFactor(1, 1);
    resize(std::max(760, listWidth + 540), 500);
    splitter->setSizes({listWidth, width() - listWidth});

    auto* link = new QLabel(this);
    const QString website = QLatin1String(AppConfig::kWebsite);
    link->setText(
        QStringLiteral("<a href=\"%1\">%2</a>")
            .arg(website, tr("Scrivly on the web: %1").arg(QUrl(website).host()).toHtmlEscaped()));
    link->setOpenExternalLinks(true);
    link->setTextInteractionFlags(Qt::TextBrowserInteraction);
    link->setAlignment(Qt::AlignCenter);
    layout->addWidget(link);

    connect(m_list, &QListWidget::currentRowChanged, this, &HelpView::showRow);
    m_list->setCurrentRow(0);
}

std::optional<QString> HelpView::selectedTopic() const {
    const int row = m_list->currentRow();
    if (row < 0) {
        return std::nullopt;
    }
    return m_topics[row].id;
}

void HelpView::showTopic(const QString& id) {
    for (std::size_t row = 0; row < m_topics.size(); ++row) {
        if (m_topics[row].id == id) {
            m_list->setCurrentRow(static_cast<int>(row));
        }
    }
}

void HelpView::showRow(int row) {
    if (row < 0 || row >= static_cast<int>(m_topics.size())) {
        m_text->clear();
        return;
    }
    const Topic& topic = m_topics[row];
    QString html = QStringLiteral("<h2>%1</h2>").arg(topic.title.toHtmlEscaped());
    const QString support = QLatin1String(AppConfig::kSupportAddress);
    for (const QString& paragraph : topic.paragraphs) {
        QString escaped = paragraph.toHtmlEscaped();
        // The support address is a link that starts an e-mail.
        escaped.replace(support, QStringLiteral("<a href=\"mailto:%1\">%1</a>").arg(support));
        html += QStringLiteral("<p style=\"line-height: 130%\">%1</p>").arg(escaped);
    }
    m_text->setHtml(html);
}

} // namespace scrivly
