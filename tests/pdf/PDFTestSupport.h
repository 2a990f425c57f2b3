#pragma once

#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ImageConverter.h"
#include "ScrivlyKit/pdf/PDFExport.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace scrivly::testing {

// 2024-03-05 09:00 in New York, the first day of every made-up conversation.
inline constexpr double kMarchFifth = 1709647200.0;
inline constexpr double kDay = 86400.0;

// Options independent of the machine the tests run on.
inline ExportOptions testOptions() {
    ExportOptions options;
    options.timeZone = "America/New_York";
    options.locale = "en_US";
    return options;
}

// Builds a transcript entry by entry.
class TranscriptBuilder {
public:
    explicit TranscriptBuilder(std::string title = "Jordan Avery") {
        m_transcript.title = std::move(title);
        m_transcript.participants = {m_transcript.title};
    }

    // A message `minutes` after 09:00 on the given day (0 = March 5, 2024).
    TranscriptEntry& add(int day, double minutes, const std::string& sender,
                         const std::string& text, bool fromMe = false) {
        TranscriptEntry entry;
        entry.id = static_cast<std::int64_t>(m_transcript.entries.size()) + 1;
        entry.date = Date::fromUnixSeconds(kMarchFifth + day * kDay + minutes * 60);
        entry.sender = fromMe ? "Me" : sender;
        entry.isFromMe = fromMe;
        entry.text = text;
        entry.service = "iMessage";
        m_transcript.entries.push_back(std::move(entry));
        return m_transcript.entries.back();
    }

    Transcript& transcript() { return m_transcript; }

private:
    Transcript m_transcript;
};

inline Attachment attachment(std::int64_t rowID, const std::string& path, const std::string& name,
                             std::optional<std::string> mimeType = std::nullopt,
                             std::optional<std::string> uti = std::nullopt) {
    Attachment result;
    result.rowID = rowID;
    result.path = path;
    result.name = name;
    result.mimeType = std::move(mimeType);
    result.uti = std::move(uti);
    result.totalBytes = 1234;
    return result;
}

// A made-up picture: a colour gradient of the given size, written as PNG.
inline bool writePicture(const std::string& path, int width, int height) {
    ImageConverter::Image image{width, height, 3, {}};
    image.pixels.resize(static_cast<std::size_t>(width) * height * 3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            auto* pixel = &image.pixels[(static_cast<std::size_t>(y) * width + x) * 3];
            pixel[0] = static_cast<std::uint8_t>(x * 255 / width);
            pixel[1] = static_cast<std::uint8_t>(y * 255 / height);
            pixel[2] = 140;
        }
    }
    return ImageConverter::write(image, path, "png");
}

// The text items of a page, in order.
inline std::vector<const PDFExport::Placed*> textItems(const PDFExport::PageLayout& page) {
    std::vector<const PDFExport::Placed*> items;
    for (const auto& item : page.items) {
        if (item.kind == PDFExport::Placed::Kind::text) {
            items.push_back(&item);
        }
    }
    return items;
}

// Runs a shell command and returns what it printed; the exit status goes to `status`.
inline std::string commandOutput(const std::string& command, int* status = nullptr) {
    std::string output;
    FILE* pipe = popen(("(" + command + ") 2>&1").c_str(), "r");
    if (pipe == nullptr) {
        if (status != nullptr) {
            *status = -1;
        }
        return output;
    }
    char buffer[4096];
    std::size_t read = 0;
    while ((read = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        output.append(buffer, read);
    }
    const int result = pclose(pipe);
    if (status != nullptr) {
        *status = result;
    }
    return output;
}

} // namespace scrivly::testing
