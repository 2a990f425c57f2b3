#pragma once

#include "ScrivlyKit/conversations/Conversation.h"

#include <string>
#include <vector>

namespace scrivly {

// Up to five conversations a user probably meant by text that names none exactly, best first:
// those with a participant's phone number or e-mail address however it is written (the person's
// own before groups), then titles or
// participant names that hold every word of the text, then those within a small typo of it.
std::vector<Conversation> likelyConversations(const std::vector<Conversation>& conversations,
                                              const std::string& text);

} // namespace scrivly
