#pragma once

#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

// A transcript as a paginated PDF: a layout pass that decides what goes on which page, then a
// drawing pass that adds the page chrome and writes the document.
namespace scrivly::PDFExport {

struct Result {
    std::vector<std::uint8_t> data;
    int pageCount = 0;
};

// Thrown when the stop token was triggered during an export.
class Cancelled : public std::exception {
public:
    const char* what() const noexcept override { return "The export was cancelled."; }
};

// Thrown when the PDF could not be made.
class Failed : public std::exception {
public:
    explicit Failed(std::string message) : m_message(std::move(message)) {}
    const char* what() const noexcept override { return m_message.c_str(); }

private:
    std::string m_message;
};

// Progress is a fraction from 0 to 1, reported once per whole percent, from the calling thread.
using Progress = std::function<void(double fraction)>;

Result render(const Transcript& transcript, const ExportOptions& options,
              const ExportStrings& strings, const Progress& progress = {},
              std::stop_token stop = {});

} // namespace scrivly::PDFExport
