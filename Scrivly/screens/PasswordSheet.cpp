#include "Scrivly/screens/PasswordSheet.h"

#include "Scrivly/screens/Spinner.h"

#include <QBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace scrivly {

PasswordSheet::PasswordSheet(BackupOpener& opener, QWidget* parent)
    : QDialog(parent), m_opener(opener), m_title(new QLabel(this)), m_password(new QLineEdit(this)),
      m_error(new QLabel(this)), m_progressRow(new QWidget(this)),
      m_cancel(new QPushButton(tr("Cancel"), this)), m_open(new QPushButton(tr("Open"), this)) {
    setObjectName(QStringLiteral("passwordSheet"));
    setWindowTitle(tr("Backup Password"));
    setModal(true);
    setMinimumWidth(460);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 22, 24, 18);
    layout->setSpacing(10);
    QFont bold = m_title->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    m_title->setFont(bold);
    m_title->setWordWrap(true);
    layout->addWidget(m_title);
    auto* explanation = new QLabel(
        tr("Enter the password that was set for encrypted backups in Finder or iTunes. Scrivly "
           "uses it only to open this backup and never stores it. A lost backup password can’t "
           "be recovered, by Scrivly or by Apple."),
        this);
    explanation->setWordWrap(true);
    layout->addWidget(explanation);

    m_password->setEchoMode(QLineEdit::Password);
    m_password->setPlaceholderText(tr("Backup password"));
    m_password->setObjectName(QStringLiteral("password"));
    layout->addWidget(m_password);
    m_error->setWordWrap(true);
    m_error->setStyleSheet(QStringLiteral("color: #c0392b;"));
    layout->addWidget(m_error);

    auto* progress = new QHBoxLayout(m_progressRow);
    progress->setContentsMargins(0, 0, 0, 0);
    progress->addWidget(new Spinner(m_progressRow, 18));
    auto* unlocking =
        new QLabel(tr("Unlocking the backup… This takes a few seconds."), m_progressRow);
    unlocking->setWordWrap(true);
    progress->addWidget(unlocking, 1);
    layout->addWidget(m_progressRow);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_cancel);
    buttons->addWidget(m_open);
    layout->addLayout(buttons);
    m_open->setDefault(true);

    connect(m_open, &QPushButton::clicked, this, &PasswordSheet::submit);
    connect(m_password, &QLineEdit::returnPressed, this, &PasswordSheet::submit);
    connect(m_password, &QLineEdit::textChanged, this, &PasswordSheet::update);
    connect(m_cancel, &QPushButton::clicked, &opener, &BackupOpener::cancel);
    // Escape cancels as the button does; the opener's step closes the sheet.
    connect(this, &QDialog::rejected, &opener, [&opener] {
        if (opener.step() == BackupOpener::Step::password ||
            opener.step() == BackupOpener::Step::opening) {
            opener.cancel();
        }
    });
    connect(&opener, &BackupOpener::stepChanged, this, &PasswordSheet::update);
    connect(&opener, &BackupOpener::errorChanged, this, &PasswordSheet::update);
    update();
}

void PasswordSheet::update() {
    const auto& backup = m_opener.backup();
    const QString device = backup ? QString::fromStdString(backup->deviceName) : QString();
    m_title->setText(device.isEmpty() ? tr("This iPhone backup is encrypted")
                                      : tr("The backup of “%1” is encrypted").arg(device));
    const bool opening = m_opener.step() == BackupOpener::Step::opening;
    m_progressRow->setVisible(opening);
    m_password->setEnabled(!opening);
    m_open->setEnabled(!opening && !m_password->text().isEmpty());
    m_error->setText(m_opener.error());
    m_error->setVisible(!m_opener.error().isEmpty() && !opening);
    if (!opening && m_opener.step() == BackupOpener::Step::password) {
        m_password->setFocus();
    }
}

void PasswordSheet::submit() {
    if (m_password->text().isEmpty() || m_opener.step() != BackupOpener::Step::password) {
        return;
    }
    const QString password = m_password->text();
    // The field lets go of it at once; the opener wipes its own copy after the derivation.
    m_password->clear();
    m_opener.submitPassword(password);
}

} // namespace scrivly
