#pragma once

#include "Scrivly/model/AppSettings.h"
#include "Scrivly/model/ExportForm.h"
#include "Scrivly/model/Platform.h"
#include "Scrivly/model/RenderKey.h"
#include "ScrivlyKit/conversations/DayBounds.h"
#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/history/ExportJob.h"
#include "ScrivlyKit/records/SourceDescription.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace scrivly {

class Tasks;

// The export panel's side of the model: the form, the texts of exports in the application's
// language, the PDF made in the background (and reused for an equal RenderKey), the preview, and
// saving a PDF or CSV where the user chooses. Lives on the main thread, like the model that owns
// it; the model hands in what is exported with each call.
class ExportFlow : public QObject {
    Q_OBJECT

public:
    // What an export is made of, as the model holds it at the time of the call.
    struct Subject {
        const std::optional<Transcript>& transcript; // nothing to export without one
        const std::optional<std::string>& conversation;
        std::string title; // the conversation's title; empty without one
        DayBounds::Range bounds;
        const NameBook& names;
        const AppSettings& settings;
    };

    struct LastRender {
        RenderKey key;
        Date madeAt;
        ExportJob::Result result;
    };

    // A finished PDF is reused for an equal key for less than this many seconds.
    static constexpr double kReuseSeconds = 900;

    // platform and tasks must outlive the flow.
    ExportFlow(Platform& platform, Tasks& tasks, QObject* parent = nullptr);
    // Stops a rendering under way.
    ~ExportFlow() override;

    const ExportForm& form() const { return m_form; }
    void setForm(const ExportForm& form);
    bool exporting() const { return m_exporting; }
    std::optional<double> renderProgress() const { return m_renderProgress; }
    const std::optional<QString>& lastExport() const { return m_lastExport; }
    const std::optional<QByteArray>& previewData() const { return m_previewData; }

    // Every text of an export, looked up once per language and kept: see retranslate and setMe.
    const ExportStrings& strings() const { return m_strings; }
    // Looks the texts up again, in the language now installed.
    void retranslate();
    // The name of the user's own messages.
    void setMe(const std::string& me);
    // What the cover's "Source" line names: a database file by its name and folder (on a Mac,
    // the user's own history as such), the demonstration history, an iPhone backup by its
    // device, iOS version and date.
    void setSource(const SourceDescription& source);

    ExportOptions options(const Subject& subject) const;
    // The name the save panel proposes, such as "Book Club – Messages.pdf".
    QString defaultFileName(const Subject& subject, ExportKind kind) const;

    // Renders the PDF (or reuses the last one), then emits previewReady.
    void preview(const Subject& subject);
    // Ask for a destination, then write the file; a failure is reported through problem.
    void exportPDF(const Subject& subject);
    void exportCSV(const Subject& subject);
    // Stops the rendering under way; nothing is kept from it.
    void cancelRender();
    // Stops the rendering under way and forgets the last one: for another history.
    void discardRendering();
    void showInFinder();
    // "Saved …" belongs to the conversation it was exported from.
    void clearLastExport();

signals:
    void formChanged();
    void exportingChanged();
    void renderProgressChanged();
    void lastExportChanged();
    void previewDataChanged();
    // previewData holds the PDF asked for by preview.
    void previewReady();
    // Something the user should be told, in an alert.
    void problem(const QString& description);

private:
    struct RenderTask {
        std::stop_source stop;
        std::uint64_t token = 0;
    };

    RenderKey renderKey(const Subject& subject) const;
    void renderPDF(const Subject& subject, std::function<void(const ExportJob::Result&)> done,
                   std::function<void(const QString&)> failed);
    void save(const QString& path, const std::vector<std::uint8_t>& data);

    void setExporting(bool exporting);
    void setRenderProgress(std::optional<double> progress);
    void setLastExport(const std::optional<QString>& path);
    void setPreviewData(const std::optional<QByteArray>& data);

    Platform& m_platform;
    Tasks& m_tasks;
    ExportForm m_form;
    bool m_exporting = false;
    std::optional<double> m_renderProgress;
    std::optional<QString> m_lastExport;
    std::optional<QByteArray> m_previewData;
    std::optional<RenderTask> m_renderTask;
    std::optional<LastRender> m_lastRender;
    std::uint64_t m_renderToken = 0;
    ExportStrings m_strings;
    QString sourceText() const;
    static SourceDescription ownHistory() {
        SourceDescription own;
        own.kind = SourceDescription::Kind::userHistory;
        return own;
    }
    SourceDescription m_source = ownHistory();
};

} // namespace scrivly
