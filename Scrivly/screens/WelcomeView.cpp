#include "Scrivly/screens/WelcomeView.h"

#include "Scrivly/model/AppModel.h"
#include "Scrivly/model/PlatformTexts.h"
#include "Scrivly/screens/Symbols.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include <functional>

namespace scrivly {

WelcomeView::WelcomeView(AppModel& model, std::function<void()> help, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(tr("Welcome to Scrivly"));
    auto* layout = new QVBoxLayout(this);
    // As tall as the wrapped texts need at this width, no taller.
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->setContentsMargins(36, 30, 36, 24);
    layout->setSpacing(8);

    auto* icon = new QLabel(this);
    icon->setPixmap(Symbols::appIcon().pixmap(72, 72));
    layout->addWidget(icon, 0, Qt::AlignHCenter);

    auto* title = new QLabel(tr("Welcome to Scrivly"), this);
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.8);
    titleFont.setBold(true);
    title->setFont(titleFont);
    title->setAlignment(Qt::AlignCenter);
    layout->addWidget(title);
    auto* subtitle = new QLabel(tr("Export Messages conversations to clean, dated PDFs"), this);
    subtitle->setAlignment(Qt::AlignCenter);
    subtitle->setWordWrap(true);
    subtitle->setForegroundRole(QPalette::PlaceholderText);
    QFont subtitleFont = subtitle->font();
    subtitleFont.setPointSizeF(subtitleFont.pointSizeF() * 1.1);
    subtitle->setFont(subtitleFont);
    layout->addWidget(subtitle);
    layout->addSpacing(18);

    struct Feature {
        const char* symbol;
        QString heading;
        QString line;
    };
    const Feature features[] = {
        {"lock.shield", tr("Private by design"), PlatformTexts::welcomePrivacy()},
        {"person.2", tr("Pick a person or group"),
         tr("Search by name or number, set a date range, and see exactly what will be "
            "exported.")},
        {"doc.richtext", tr("Clean PDFs and spreadsheets"),
         tr("Labeled senders, timestamps, photos inline, reactions as text, page numbers and an "
            "optional header or Bates-style numbers.")},
    };
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(18);
    grid->setColumnStretch(1, 1);
    int row = 0;
    for (const Feature& feature : features) {
        auto* symbol = new QLabel(this);
        symbol->setPixmap(Symbols::icon(QLatin1String(feature.symbol)).pixmap(36, 36));
        grid->addWidget(symbol, row, 0, Qt::AlignTop | Qt::AlignHCenter);
        auto* text = new QLabel(this);
        text->setWordWrap(true);
        text->setFixedWidth(400);
        text->setTextFormat(Qt::RichText);
        text->setText(QStringLiteral("<b>%1</b><br>%2")
                          .arg(feature.heading.toHtmlEscaped(), feature.line.toHtmlEscaped()));
        text->setAccessibleName(feature.heading);
        text->setAccessibleDescription(feature.line);
        grid->addWidget(text, row, 1);
        ++row;
    }
    layout->addLayout(grid);
    layout->addSpacing(22);

    auto* buttons = new QHBoxLayout;
    auto* helpButton = new QPushButton(tr("Help"), this);
    auto* start = new QPushButton(tr("Get Started"), this);
    start->setDefault(true);
    start->setMinimumWidth(140);
    buttons->addWidget(helpButton);
    buttons->addStretch(1);
    buttons->addWidget(start);
    layout->addLayout(buttons);

    connect(helpButton, &QPushButton::clicked, this, std::move(help));
    connect(start, &QPushButton::clicked, &model, &AppModel::finishOnboarding);
    start->setFocus(Qt::OtherFocusReason);
}

} // namespace scrivly
