#include "Scrivly/screens/AboutPanel.h"

#include "Scrivly/model/PlatformTexts.h"
#include "Scrivly/screens/AppConfig.h"
#include "Scrivly/screens/Symbols.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace scrivly {

AboutPanel::AboutPanel(QWidget* parent) : QDialog(parent) {
    setWindowTitle(tr("About Scrivly"));
    setFixedWidth(380);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 24, 28, 18);
    layout->setSpacing(6);

    auto* icon = new QLabel(this);
    icon->setPixmap(Symbols::appIcon().pixmap(96, 96));
    layout->addWidget(icon, 0, Qt::AlignHCenter);
    auto* name = new QLabel(QLatin1String(AppConfig::kDisplayName), this);
    QFont nameFont = name->font();
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.6);
    nameFont.setBold(true);
    name->setFont(nameFont);
    layout->addWidget(name, 0, Qt::AlignHCenter);
    auto* version = new QLabel(tr("Version %1").arg(AppConfig::version()), this);
    version->setForegroundRole(QPalette::PlaceholderText);
    version->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(version, 0, Qt::AlignHCenter);
    layout->addSpacing(10);

    const QString address = QLatin1String(AppConfig::kSupportAddress);
    for (const QString& text :
         {tr("Export Messages conversations to clean, dated PDFs").toHtmlEscaped(),
          PlatformTexts::aboutPrivacy().toHtmlEscaped().arg(
              QStringLiteral("<a href=\"mailto:%1\">%1</a>").arg(address))}) {
        auto* line = new QLabel(text, this);
        line->setWordWrap(true);
        line->setAlignment(Qt::AlignCenter);
        line->setTextFormat(Qt::RichText);
        line->setOpenExternalLinks(true);
        layout->addWidget(line);
    }
    layout->addSpacing(12);
    auto* close = new QPushButton(tr("OK"), this);
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    layout->addWidget(close, 0, Qt::AlignRight);
}

} // namespace scrivly
