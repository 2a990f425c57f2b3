#pragma once

#ifndef Q_MOC_RUN
#include "Scrivly/model/BackupOpener.h"
#endif
#include "Scrivly/screens/PasswordSheet.h"

#include <QDialog>
#include <QPointer>

class QTreeWidget;

namespace scrivly {

// The backups of a folder that holds several: device name, model, iOS version, last backup and
// whether it is encrypted. Open (or a double click) opens the selected one.
class BackupList : public QDialog {
    Q_OBJECT

public:
    explicit BackupList(BackupOpener& opener, QWidget* parent = nullptr);
    QTreeWidget* table() const { return m_table; }
    void openSelected();

private:
    BackupOpener& m_opener;
    QTreeWidget* m_table;
};

// Shows over window what the opener asks for: the list, the password sheet (with its progress
// line), and an alert when a backup couldn't be opened.
class BackupSheets : public QObject {
    Q_OBJECT

public:
    BackupSheets(BackupOpener& opener, QWidget* window);

    // For the tests and pictures; null while not shown.
    BackupList* list() const { return m_list; }
    PasswordSheet* passwordSheet() const { return m_password; }

private:
    void update();

    BackupOpener& m_opener;
    QWidget* m_window;
    QPointer<BackupList> m_list;
    QPointer<PasswordSheet> m_password;
};

} // namespace scrivly
