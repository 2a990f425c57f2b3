#include "ScrivlyKit/contacts/ContactCard.h"

#include "ScrivlyKit/text/Unicode.h"

namespace scrivly {

std::string ContactCard::name() const {
    auto full = joinedName({fullName});
    return full.empty() ? joinedName({organisation}) : full;
}

std::string ContactCard::joinedName(std::initializer_list<std::string_view> parts) {
    // A name is shown on one line: line breaks and doubled spaces from the card would only
    // disturb the transcript's layout.
    std::string result;
    bool pendingSpace = false;
    for (const auto part : parts) {
        pendingSpace = !result.empty();
        std::size_t offset = 0;
        while (offset < part.size()) {
            const auto start = offset;
            const auto codePoint = Unicode::nextCodePoint(part, offset);
            if (Unicode::isWhiteSpace(codePoint)) {
                pendingSpace = !result.empty();
                continue;
            }
            if (pendingSpace) {
                result += ' ';
                pendingSpace = false;
            }
            result.append(part.substr(start, offset - start));
        }
    }
    return result;
}

} // namespace scrivly
