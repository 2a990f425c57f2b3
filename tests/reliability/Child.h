#pragma once

#include <functional>
#include <string>

#include <sys/types.h>

namespace scrivly::testing {

// A forked copy of the test process running one function, for what must happen in another
// process: a writer beside the reader, a run killed mid-read, a resource limit. The function's
// exception text (or "") comes back through a pipe; the child never returns into the test.
class Child {
public:
    explicit Child(const std::function<void()>& body);
    ~Child(); // kills the child if it is still running
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t pid() const { return m_pid; }
    // Waits for the end; the text the body threw, or "" when it returned.
    std::string wait();
    void kill();

private:
    pid_t m_pid = -1;
    int m_report = -1;
};

} // namespace scrivly::testing
