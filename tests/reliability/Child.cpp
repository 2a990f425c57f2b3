#include "tests/reliability/Child.h"

#include <csignal>
#include <exception>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

namespace scrivly::testing {

Child::Child(const std::function<void()>& body) {
    int ends[2];
    if (::pipe(ends) != 0) {
        throw std::runtime_error("pipe failed");
    }
    m_pid = ::fork();
    if (m_pid < 0) {
        throw std::runtime_error("fork failed");
    }
    if (m_pid == 0) {
        ::close(ends[0]);
        std::string text;
        try {
            body();
        } catch (const std::exception& error) {
            text = error.what();
            if (text.empty()) {
                text = "(exception without text)";
            }
        }
        for (std::size_t written = 0; written < text.size();) {
            const auto put = ::write(ends[1], text.data() + written, text.size() - written);
            if (put <= 0) {
                break;
            }
            written += static_cast<std::size_t>(put);
        }
        ::_exit(0); // no destructors, no test-framework clean-up of the parent's state
    }
    ::close(ends[1]);
    m_report = ends[0];
}

Child::~Child() {
    kill();
    if (m_report >= 0) {
        ::close(m_report);
    }
}

std::string Child::wait() {
    std::string text;
    char buffer[512];
    for (ssize_t got; (got = ::read(m_report, buffer, sizeof buffer)) > 0;) {
        text.append(buffer, static_cast<std::size_t>(got));
    }
    int status = 0;
    ::waitpid(m_pid, &status, 0);
    m_pid = -1;
    if (!WIFEXITED(status)) {
        return "child ended abnormally";
    }
    return text;
}

void Child::kill() {
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
        m_pid = -1;
    }
}

} // namespace scrivly::testing
