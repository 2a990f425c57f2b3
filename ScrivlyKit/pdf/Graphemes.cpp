#include "ScrivlyKit/pdf/Graphemes.h"

#include <unicode/ubrk.h>
#include <unicode/utext.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace scrivly::pdf {

void Graphemes::UTextDeleter::operator()(UText* text) const noexcept {
    utext_close(text);
}

void Graphemes::BreakIteratorDeleter::operator()(UBreakIterator* iterator) const noexcept {
    ubrk_close(iterator);
}

Graphemes::Graphemes(std::string_view text) : m_text(text) {
    // ICU counts in 32 bits; a longer text falls back to code points.
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        return;
    }
    UErrorCode status = U_ZERO_ERROR;
    m_utext.reset(
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status));
    m_iterator.reset(ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status));
    if (U_SUCCESS(status)) {
        ubrk_setUText(m_iterator.get(), m_utext.get(), &status);
    }
    if (U_FAILURE(status)) {
        m_iterator.reset();
    }
}

Graphemes::~Graphemes() = default;

std::size_t Graphemes::atOrBefore(std::size_t offset) {
    if (m_iterator == nullptr) {
        while (offset > 0 && offset < m_text.size() && (m_text[offset] & 0xC0) == 0x80) {
            --offset;
        }
        return offset;
    }
    const auto position = static_cast<std::int32_t>(offset);
    if (ubrk_isBoundary(m_iterator.get(), position)) {
        return offset;
    }
    const std::int32_t found = ubrk_preceding(m_iterator.get(), position);
    return found == UBRK_DONE ? 0 : static_cast<std::size_t>(found);
}

std::size_t Graphemes::after(std::size_t offset) {
    if (m_iterator == nullptr) {
        do {
            ++offset;
        } while (offset < m_text.size() && (m_text[offset] & 0xC0) == 0x80);
        return std::min(offset, m_text.size());
    }
    const std::int32_t found = ubrk_following(m_iterator.get(), static_cast<std::int32_t>(offset));
    return found == UBRK_DONE ? m_text.size() : static_cast<std::size_t>(found);
}

} // namespace scrivly::pdf
