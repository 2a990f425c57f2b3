#pragma once

#include "Scrivly/model/Tasks.h"
#include "ScrivlyKit/backup/BackupInfo.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace scrivly {

class AppModel;

// Opening an iPhone backup: the folder the user chose, the backup among several, the password
// of an encrypted one, and the key derivation (seconds) on a worker thread that Cancel stops.
// What opens goes to the model (AppModel::openBackup), which remembers the folder.
//
// The password is handed to the derivation and wiped there; it is never kept here, written or
// reported. Lives on the main thread. The model must outlive it.
class BackupOpener : public QObject {
    Q_OBJECT

public:
    // idle: nothing asked; finding: reading the folder; choosing: several backups, pick one;
    // password: an encrypted backup waits for its password; opening: deriving and reading.
    enum class Step { idle, finding, choosing, password, opening };
    Q_ENUM(Step)

    explicit BackupOpener(AppModel& model, QObject* parent = nullptr);
    // Stops a derivation under way and waits for it.
    ~BackupOpener() override;

    Step step() const { return m_step; }
    // The backups of the folder, while choosing.
    const std::vector<BackupInfo>& backups() const { return m_backups; }
    // The backup being opened (password, opening).
    const std::optional<BackupInfo>& backup() const { return m_backup; }
    // Why the last attempt failed (a wrong password among others); empty when it didn't.
    const QString& error() const { return m_error; }

    // Reads the folder: a device folder or a folder of them.
    void openFolder(const QString& folder);
    // At launch: the backup opened last time, if any, asking for its password again.
    void offerRemembered();
    // While choosing: opens backups()[index].
    void choose(std::size_t index);
    // While asking: tries password. The caller should clear its own copy.
    void submitPassword(const QString& password);
    // Stops the finding or derivation under way, or closes the list or the password question.
    void cancel();

signals:
    void stepChanged();
    void errorChanged();

private:
    void open(const BackupInfo& backup, std::optional<std::string> password);
    void setStep(Step step);
    void setError(const QString& error);

    AppModel& m_model;
    Step m_step = Step::idle;
    std::vector<BackupInfo> m_backups;
    std::optional<BackupInfo> m_backup;
    QString m_error;
    std::stop_source m_stop;
    std::uint64_t m_token = 0;
    // Last, so that it goes first: it waits for a derivation, which the destructor stops.
    Tasks m_tasks{1};
};

} // namespace scrivly
