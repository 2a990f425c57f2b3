#pragma once

#include <iosfwd>
#include <string>

namespace scrivly::cli {

// Progress of a long task on standard error: a bar redrawn in place on a terminal, otherwise one
// line per whole percent (for logs and other programs).
class ProgressBar {
public:
    ProgressBar(std::ostream& out, bool terminal, std::string label);

    // fraction from 0 to 1; repeated percentages are not drawn again.
    void update(double fraction);
    // Draws 100 % and ends the line.
    void finish();
    // Ends the line where the bar stands (after a failure or a cancellation).
    void abandon();

private:
    std::ostream& m_out;
    bool m_terminal;
    std::string m_label;
    int m_percent = -1;
    bool m_open = false;
};

} // namespace scrivly::cli
