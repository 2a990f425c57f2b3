#pragma once

#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/pdf/PDFExport.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

// One export of a transcript as a document, for the command line and the application alike.
namespace scrivly::ExportJob {

enum class Format { pdf, csv };

struct Result {
    std::vector<std::uint8_t> data;
    int pageCount = 0; // pages of a PDF; 0 for a CSV
};

// Fraction from 0 to 1, from the calling thread.
using Progress = PDFExport::Progress;
using Cancelled = PDFExport::Cancelled;
using Failed = PDFExport::Failed;

// Makes the document. Throws Cancelled when stop was requested before it was finished, Failed
// when the PDF could not be made.
Result run(Format format, const Transcript& transcript, const ExportOptions& options,
           const ExportStrings& strings, const Progress& progress = {}, std::stop_token stop = {});

// Writes a finished document to path whole or not at all: the bytes go to a temporary file
// beside it, which is flushed and renamed into place, so a failure or an interrupt never leaves
// a partial file. An existing file keeps its permissions. Throws SaveFailed.
void save(const std::string& path, const std::vector<std::uint8_t>& data);

// what(): "The export couldn’t be saved: " followed by the path and the reason.
class SaveFailed : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace scrivly::ExportJob
