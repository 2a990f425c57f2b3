#pragma once

#include "Scrivly/model/AppSettings.h"
#include "Scrivly/model/Platform.h"
#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/history/History.h"
#include "ScrivlyKit/names/NameBook.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace scrivly {

class Tasks;
struct ProductionReport;

// The produce sheet's fields. Kept for the session only, never saved.
struct ProduceForm {
    QString folder; // new or empty; made when absent
    QString batesPrefix;
    std::int64_t batesStart = 1;
    bool perDay = false;
    bool split = false;
    int splitMegabytes = 35; // decimal, as courts state their limits
    bool natives = false;
    bool spreadsheets = false;
    bool loadFile = false;
    QString custodian; // empty: the name of the user's own messages

    bool operator==(const ProduceForm&) const = default;
};

// The produce sheet's side of the model: many conversations made at once into one numbered set
// of documents on a worker thread, with progress, cancelling and the outcome in words. Lives on
// the main thread, like the model that owns it.
class ProduceFlow : public QObject {
    Q_OBJECT

public:
    // What a production is made of, as the model holds it at the time of the call.
    struct Subject {
        const std::optional<MessagesReader>& reader; // nothing to produce without one
        const NameBook& names;
        std::vector<std::string> conversations; // ids, in the list's order
        DayRange days;
        History::Settings history; // the user's name, zone and locale
        std::string header;
        const AppSettings& settings; // paper, covers and photos
    };

    // platform and tasks must outlive the flow.
    ProduceFlow(Platform& platform, Tasks& tasks, QObject* parent = nullptr);
    // Stops a production under way; the library removes what it had written.
    ~ProduceFlow() override;

    const ProduceForm& form() const { return m_form; }
    void setForm(const ProduceForm& form);

    // From produce until the work has come back, cancelled or not.
    bool producing() const { return m_task.has_value(); }
    // Cancel was asked for and the work has yet to stop.
    bool cancelling() const { return m_task && m_task->cancelled; }
    std::optional<double> progress() const { return m_progress; }
    // Why the last attempt made nothing, in words for the sheet.
    const std::optional<QString>& problem() const { return m_problem; }
    // "Produced 3 documents, SMITH-000001 to SMITH-000011" once the last production is in place.
    const std::optional<QString>& finished() const { return m_finished; }
    const std::optional<QString>& producedFolder() const { return m_producedFolder; }

    // Checks the form, then writes the production; the outcome arrives through stateChanged.
    void produce(const Subject& subject);
    // Stops the production under way; nothing of it is left.
    void cancel();
    void showInFolder();
    // The outcome belongs to the sheet it was made in.
    void clearOutcome();

    // The outcome line for a finished production.
    static QString finishedText(const ProductionReport& report);

signals:
    void formChanged();
    // producing, cancelling, progress, problem or finished changed.
    void stateChanged();

private:
    struct Task {
        std::stop_source stop;
        std::uint64_t token = 0;
        bool cancelled = false;
    };

    // Why the form can't be produced as it stands, or nothing.
    std::optional<QString> formProblem(const Subject& subject) const;

    Platform& m_platform;
    Tasks& m_tasks;
    ProduceForm m_form;
    std::optional<Task> m_task;
    std::uint64_t m_token = 0;
    std::optional<double> m_progress;
    std::optional<QString> m_problem;
    std::optional<QString> m_finished;
    std::optional<QString> m_producedFolder;
};

} // namespace scrivly
