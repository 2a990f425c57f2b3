#include "ScrivlyKit/history/ExportJob.h"

#include "ScrivlyKit/export/CSVExport.h"
#include "ScrivlyKit/platform/FileSystem.h"

#include <cerrno>
#include <cstring>

namespace scrivly::ExportJob {

Result run(Format format, const Transcript& transcript, const ExportOptions& options,
           const ExportStrings& strings, const Progress& progress, std::stop_token stop) {
    Result result;
    if (format == Format::csv) {
        const std::string text = CSVExport::render(transcript, options, strings);
        result.data.assign(text.begin(), text.end());
    } else {
        auto pdf = PDFExport::render(transcript, options, strings, progress, stop);
        result.data = std::move(pdf.data);
        result.pageCount = pdf.pageCount;
    }
    if (stop.stop_requested()) {
        throw Cancelled();
    }
    return result;
}

void save(const std::string& path, const std::vector<std::uint8_t>& data) {
    try {
        FileSystem::writeFileAtomically(path,
                                        {reinterpret_cast<const char*>(data.data()), data.size()});
    } catch (const std::system_error& error) {
        throw SaveFailed("The export couldn’t be saved: " + path + ": " +
                         std::strerror(error.code().value()));
    }
}

} // namespace scrivly::ExportJob
