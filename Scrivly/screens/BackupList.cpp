#include "Scrivly/screens/BackupList.h"

#include "Scrivly/screens/PasswordSheet.h"

#include <QBoxLayout>
#include <QDateTime>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QTimeZone>
#include <QTreeWidget>

#include <cmath>

namespace scrivly {

namespace {

QString backupDate(const std::optional<Date>& date) {
    if (!date) {
        return {};
    }
    const auto milliseconds = static_cast<qint64>(std::llround(date->unixSeconds() * 1000.0));
    return QLocale().toString(QDateTime::fromMSecsSinceEpoch(milliseconds).toLocalTime(),
                              QLocale::ShortFormat);
}

} // namespace

BackupList::BackupList(BackupOpener& opener, QWidget* parent)
    : QDialog(parent), m_opener(opener), m_table(new QTreeWidget(this)) {
    setObjectName(QStringLiteral("backupList"));
    setWindowTitle(tr("Choose a Backup"));
    setModal(true);
    resize(680, 300);
    auto* layout = new QVBoxLayout(this);
    auto* intro = new QLabel(tr("This folder holds several iPhone backups. Choose one."), this);
    intro->setWordWrap(true);
    layout->addWidget(intro);

    m_table->setRootIsDecorated(false);
    m_table->setHeaderLabels(
        {tr("Device"), tr("Model"), tr("iOS"), tr("Last Backup"), tr("Encrypted")});
    for (const BackupInfo& backup : opener.backups()) {
        auto* row = new QTreeWidgetItem(m_table);
        row->setText(0, QString::fromStdString(backup.deviceName));
        row->setText(1, QString::fromStdString(backup.productType));
        row->setText(2, QString::fromStdString(backup.productVersion));
        row->setText(3, backupDate(backup.lastBackupDate));
        row->setText(4, backup.encrypted ? tr("Yes") : tr("No"));
    }
    m_table->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    if (m_table->topLevelItemCount() > 0) {
        m_table->setCurrentItem(m_table->topLevelItem(0));
    }
    layout->addWidget(m_table, 1);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    auto* cancel = new QPushButton(tr("Cancel"), this);
    auto* open = new QPushButton(tr("Open"), this);
    open->setDefault(true);
    buttons->addWidget(cancel);
    buttons->addWidget(open);
    layout->addLayout(buttons);
    connect(open, &QPushButton::clicked, this, &BackupList::openSelected);
    connect(m_table, &QTreeWidget::itemActivated, this, &BackupList::openSelected);
    connect(cancel, &QPushButton::clicked, &opener, &BackupOpener::cancel);
    connect(this, &QDialog::rejected, &opener, [&opener] {
        if (opener.step() == BackupOpener::Step::choosing) {
            opener.cancel();
        }
    });
}

void BackupList::openSelected() {
    const int row = m_table->indexOfTopLevelItem(m_table->currentItem());
    if (row >= 0) {
        m_opener.choose(static_cast<std::size_t>(row));
    }
}

BackupSheets::BackupSheets(BackupOpener& opener, QWidget* window)
    : QObject(window), m_opener(opener), m_window(window) {
    connect(&opener, &BackupOpener::stepChanged, this, &BackupSheets::update);
    connect(&opener, &BackupOpener::errorChanged, this, &BackupSheets::update);
}

void BackupSheets::update() {
    using Step = BackupOpener::Step;
    const Step step = m_opener.step();
    if (step == Step::choosing && !m_list) {
        m_list = new BackupList(m_opener, m_window);
        m_list->setAttribute(Qt::WA_DeleteOnClose);
        m_list->open();
    } else if (step != Step::choosing && m_list) {
        m_list->close();
    }
    const bool asking = step == Step::password || step == Step::opening;
    if (asking && !m_password) {
        m_password = new PasswordSheet(m_opener, m_window);
        m_password->setAttribute(Qt::WA_DeleteOnClose);
        m_password->open();
    } else if (!asking && m_password) {
        m_password->close();
    }
    // Other failures end the attempt; the password sheet shows its own.
    if (step == Step::idle && !m_opener.error().isEmpty()) {
        auto* box = new QMessageBox(QMessageBox::Warning, tr("The backup couldn’t be opened"),
                                    m_opener.error(), QMessageBox::Ok, m_window);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setWindowModality(Qt::WindowModal);
        box->setObjectName(QStringLiteral("backupAlert"));
        box->open();
    }
}

} // namespace scrivly
