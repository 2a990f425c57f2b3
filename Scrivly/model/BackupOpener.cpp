#include "Scrivly/model/BackupOpener.h"

#include "Scrivly/model/AppModel.h"
#include "ScrivlyKit/backup/BackupError.h"
#include "ScrivlyKit/history/Sources.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace scrivly {

namespace {

// What a background step hands back: a value, or the backup's own failure, whose kind decides
// what the user is asked next.
template <typename T> struct Attempt {
    std::optional<T> value;
    std::optional<BackupError::Kind> kind;
    QString detail; // BackupError's (or another exception's) text
};

std::string fileName(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

} // namespace

BackupOpener::BackupOpener(AppModel& model, QObject* parent) : QObject(parent), m_model(model) {}

BackupOpener::~BackupOpener() {
    m_stop.request_stop();
}

void BackupOpener::openFolder(const QString& folder) {
    cancel();
    const std::uint64_t token = ++m_token;
    setError({});
    setStep(Step::finding);
    m_tasks.run(
        [folder = fileName(folder)]() -> Attempt<std::vector<BackupInfo>> {
            try {
                return {std::vector<BackupInfo>{Sources::findBackup(folder)}, {}, {}};
            } catch (const Sources::SeveralBackups& several) {
                return {several.backups, {}, {}};
            } catch (const BackupError& error) {
                return {std::nullopt, error.kind(), QString::fromUtf8(error.what())};
            }
        },
        [this, token](Outcome<Attempt<std::vector<BackupInfo>>> outcome) {
            if (token != m_token) {
                return;
            }
            if (!outcome.value || !outcome.value->value) {
                setStep(Step::idle);
                const bool none =
                    outcome.value && outcome.value->kind == BackupError::Kind::notBackup;
                setError(none ? tr("There is no iPhone backup in this folder. Choose the folder "
                                   "that holds the backup, or the one above it.")
                              : tr("The backup couldn’t be read: %1")
                                    .arg(outcome.value ? outcome.value->detail : outcome.error));
                return;
            }
            m_backups = std::move(*outcome.value->value);
            if (m_backups.size() == 1) {
                choose(0);
            } else {
                setStep(Step::choosing);
            }
        });
}

void BackupOpener::offerRemembered() {
    const QString remembered = m_model.rememberedBackup();
    if (!remembered.isEmpty() && m_step == Step::idle) {
        openFolder(remembered);
    }
}

void BackupOpener::choose(std::size_t index) {
    if (index >= m_backups.size()) {
        return;
    }
    m_backup = m_backups[index];
    m_backups.clear();
    setError({});
    if (m_backup->encrypted) {
        setStep(Step::password);
    } else {
        open(*m_backup, std::nullopt);
    }
}

void BackupOpener::submitPassword(const QString& password) {
    if (m_step != Step::password || !m_backup) {
        return;
    }
    QByteArray bytes = password.toUtf8();
    std::optional<std::string> secret(std::in_place, bytes.constData(), bytes.size());
    bytes.fill('\0');
    open(*m_backup, std::move(secret));
}

void BackupOpener::open(const BackupInfo& backup, std::optional<std::string> password) {
    const std::uint64_t token = ++m_token;
    m_stop = std::stop_source{};
    setError({});
    setStep(Step::opening);
    m_tasks.run(
        [backup, password = std::move(password),
         stop = m_stop.get_token()]() mutable -> Attempt<Sources::Backup> {
            // The password is wiped as soon as the keys are derived, whatever the outcome.
            auto wipe = [&password] {
                if (password) {
                    std::fill(password->begin(), password->end(), '\0');
                    password.reset();
                }
            };
            try {
                auto opened = Sources::backup(backup, password, stop);
                wipe();
                return {std::move(opened), {}, {}};
            } catch (const BackupError& error) {
                wipe();
                return {std::nullopt, error.kind(), QString::fromUtf8(error.what())};
            } catch (...) {
                wipe();
                throw;
            }
        },
        [this, token](Outcome<Attempt<Sources::Backup>> outcome) {
            if (token != m_token) {
                return; // cancelled, or another backup asked for since
            }
            if (outcome.value && outcome.value->value) {
                m_backup.reset();
                setStep(Step::idle);
                m_model.openBackup(std::move(*outcome.value->value));
                return;
            }
            const auto kind = outcome.value ? outcome.value->kind : std::nullopt;
            const bool encrypted = m_backup && m_backup->encrypted;
            if (kind == BackupError::Kind::cancelled) {
                setStep(encrypted ? Step::password : Step::idle);
                return;
            }
            if (kind == BackupError::Kind::wrongPassword ||
                kind == BackupError::Kind::needsPassword) {
                setError(tr("That password doesn’t open this backup. Check it and try again."));
                setStep(Step::password);
                return;
            }
            if (kind == BackupError::Kind::unfinished) {
                setError(tr("This backup isn’t finished. Back up the iPhone again, then open it."));
            } else if (kind == BackupError::Kind::noMessages) {
                setError(tr("This backup holds no Messages history."));
            } else {
                setError(tr("The backup couldn’t be read: %1")
                             .arg(outcome.value ? outcome.value->detail : outcome.error));
            }
            m_backup.reset();
            setStep(Step::idle);
        });
}

void BackupOpener::cancel() {
    ++m_token; // what is under way can no longer deliver
    m_stop.request_stop();
    setError({});
    if (m_step == Step::opening && m_backup && m_backup->encrypted) {
        setStep(Step::password);
        return;
    }
    m_backups.clear();
    m_backup.reset();
    setStep(Step::idle);
}

void BackupOpener::setStep(Step step) {
    if (step != m_step) {
        m_step = step;
        emit stepChanged();
    }
}

void BackupOpener::setError(const QString& error) {
    if (error != m_error) {
        m_error = error;
        emit errorChanged();
    }
}

} // namespace scrivly
