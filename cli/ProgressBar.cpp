#include "cli/ProgressBar.h"

#include <algorithm>
#include <ostream>

namespace scrivly::cli {

namespace {
constexpr int kBarWidth = 30;
}

ProgressBar::ProgressBar(std::ostream& out, bool terminal, std::string label)
    : m_out(out), m_terminal(terminal), m_label(std::move(label)) {}

void ProgressBar::update(double fraction) {
    const int percent = static_cast<int>(std::clamp(fraction, 0.0, 1.0) * 100.0);
    if (percent == m_percent) {
        return;
    }
    m_percent = percent;
    if (!m_terminal) {
        m_out << m_label << ": " << percent << "%\n" << std::flush;
        return;
    }
    const int filled = percent * kBarWidth / 100;
    std::string bar;
    for (int i = 0; i < kBarWidth; ++i) {
        bar += i < filled ? "█" : "░";
    }
    m_out << '\r' << m_label << "  " << bar << ' '
          << std::string(percent < 10    ? 2
                         : percent < 100 ? 1
                                         : 0,
                         ' ')
          << percent << '%' << std::flush;
    m_open = true;
}

void ProgressBar::finish() {
    update(1.0);
    abandon();
}

void ProgressBar::abandon() {
    if (m_open) {
        m_out << '\n' << std::flush;
        m_open = false;
    }
}

} // namespace scrivly::cli
