#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace scrivly {

// An sRGB colour, components 0 to 1.
struct SenderColor {
    double red = 0;
    double green = 0;
    double blue = 0;

    bool operator==(const SenderColor&) const = default;
};

// The colour of each sender in one transcript, the same in the PDF and on the screen: the user's
// own messages have one colour of their own, and everyone else takes the next colour of a fixed
// palette in the order they first appear (round the palette again after its last colour).
class SenderColors {
public:
    static const SenderColor kMine;

    // The colour of sender; fromMe messages get kMine whatever the sender's name.
    SenderColor colorOf(const std::string& sender, bool fromMe);

private:
    std::map<std::string, SenderColor> m_assigned;
};

} // namespace scrivly
