#include "ScrivlyKit/export/PaperSize.h"

namespace scrivly::Paper {

PageSize size(PaperSize paper) {
    switch (paper) {
    case PaperSize::letter:
        return {kSizes[0], kSizes[1]};
    case PaperSize::a4:
        return {kSizes[2], kSizes[3]};
    }
    return {kSizes[0], kSizes[1]};
}

std::string rawValue(PaperSize paper) {
    switch (paper) {
    case PaperSize::letter:
        return "letter";
    case PaperSize::a4:
        return "a4";
    }
    return "letter";
}

std::optional<PaperSize> fromRawValue(std::string_view raw) {
    for (const auto paper : kAll) {
        if (raw == rawValue(paper)) {
            return paper;
        }
    }
    return std::nullopt;
}

std::string displayName(PaperSize paper) {
    switch (paper) {
    case PaperSize::letter:
        return "US Letter";
    case PaperSize::a4:
        return "A4";
    }
    return "US Letter";
}

} // namespace scrivly::Paper
