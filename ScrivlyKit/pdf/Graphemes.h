#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

struct UText;
struct UBreakIterator;

namespace scrivly::pdf {

// The boundaries of the characters as the user perceives them (grapheme clusters) in UTF-8 text,
// which must outlive this. Where ICU cannot walk the text, code point boundaries stand in.
class Graphemes {
public:
    explicit Graphemes(std::string_view text);
    ~Graphemes();
    Graphemes(const Graphemes&) = delete;
    Graphemes& operator=(const Graphemes&) = delete;

    // The last boundary at or before offset.
    std::size_t atOrBefore(std::size_t offset);
    // The first boundary after offset.
    std::size_t after(std::size_t offset);

private:
    struct UTextDeleter {
        void operator()(UText* text) const noexcept;
    };
    struct BreakIteratorDeleter {
        void operator()(UBreakIterator* iterator) const noexcept;
    };

    std::string_view m_text;
    std::unique_ptr<UText, UTextDeleter> m_utext;
    std::unique_ptr<UBreakIterator, BreakIteratorDeleter> m_iterator;
};

} // namespace scrivly::pdf
