#include "ScrivlyKit/history/Suggestions.h"

#include "ScrivlyKit/names/NameBook.h"
#include "ScrivlyKit/text/Unicode.h"

#include <algorithm>
#include <sstream>

namespace scrivly {

namespace {

constexpr std::size_t kMostSuggestions = 5;

std::vector<std::string> words(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream stream(Unicode::lowercased(text));
    for (std::string word; stream >> word;) {
        result.push_back(word);
    }
    return result;
}

// Edits (insertions, deletions, substitutions of bytes) from a to b, stopping early past limit.
std::size_t distance(const std::string& a, const std::string& b, std::size_t limit) {
    if ((a.size() > b.size() ? a.size() - b.size() : b.size() - a.size()) > limit) {
        return limit + 1;
    }
    std::vector<std::size_t> previous(b.size() + 1);
    std::vector<std::size_t> current(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        previous[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        std::size_t best = current[0];
        for (std::size_t j = 1; j <= b.size(); ++j) {
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1,
                                   previous[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            best = std::min(best, current[j]);
        }
        if (best > limit) {
            return limit + 1;
        }
        std::swap(previous, current);
    }
    return previous[b.size()];
}

// The texts a conversation answers to: its title and its participants' names.
std::vector<std::string> names(const Conversation& conversation) {
    std::vector<std::string> result{Unicode::lowercased(conversation.title)};
    for (const auto& participant : conversation.participants) {
        result.push_back(Unicode::lowercased(participant));
    }
    return result;
}

bool hasAddress(const Conversation& conversation, const std::string& text) {
    const auto wanted = NameBook::key(text);
    // Only a number or an e-mail address: any text at all has an "o:" key.
    if (!wanted || wanted->starts_with("o:")) {
        return false;
    }
    return std::any_of(
        conversation.addresses.begin(), conversation.addresses.end(),
        [&](const std::string& address) { return NameBook::key(address) == wanted; });
}

bool holdsWords(const Conversation& conversation, const std::vector<std::string>& wanted) {
    if (wanted.empty()) {
        return false;
    }
    const auto texts = names(conversation);
    return std::all_of(wanted.begin(), wanted.end(), [&](const std::string& word) {
        return std::any_of(texts.begin(), texts.end(), [&](const std::string& name) {
            return name.find(word) != std::string::npos;
        });
    });
}

bool nearlyNamed(const Conversation& conversation, const std::string& text) {
    const std::string wanted = Unicode::lowercased(Unicode::trimmed(text));
    // One typo in a short name, two in a longer one.
    const std::size_t limit = wanted.size() < 8 ? 1 : 2;
    const auto texts = names(conversation);
    return std::any_of(texts.begin(), texts.end(), [&](const std::string& name) {
        return distance(wanted, name, limit) <= limit;
    });
}

} // namespace

std::vector<Conversation> likelyConversations(const std::vector<Conversation>& conversations,
                                              const std::string& text) {
    const auto wanted = words(text);
    std::vector<Conversation> result;
    const auto addWhere = [&](const auto& matches) {
        for (const auto& conversation : conversations) {
            if (result.size() == kMostSuggestions) {
                return;
            }
            const bool listed = std::any_of(result.begin(), result.end(), [&](const auto& shown) {
                return shown.id == conversation.id;
            });
            if (!listed && matches(conversation)) {
                result.push_back(conversation);
            }
        }
    };
    // The person's own conversation before the groups they are in.
    addWhere([&](const Conversation& conversation) {
        return !conversation.isGroup && hasAddress(conversation, text);
    });
    addWhere([&](const Conversation& conversation) { return hasAddress(conversation, text); });
    addWhere([&](const Conversation& conversation) { return holdsWords(conversation, wanted); });
    addWhere([&](const Conversation& conversation) { return nearlyNamed(conversation, text); });
    return result;
}

} // namespace scrivly
