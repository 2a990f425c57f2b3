#pragma once

#include <cstdio>
#include <memory>
#include <unistd.h>

namespace scrivly {

// Owns one open file descriptor (or none, when negative) and closes it when it goes.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~FileDescriptor() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            reset(other.release());
        }
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return m_descriptor; }
    explicit operator bool() const { return m_descriptor >= 0; }

    // Closes now, so that a failing close (the last chance to report a write error) is seen.
    int close() {
        const int result = ::close(m_descriptor);
        m_descriptor = -1;
        return result;
    }
    int release() {
        const int descriptor = m_descriptor;
        m_descriptor = -1;
        return descriptor;
    }
    void reset(int descriptor = -1) {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
        m_descriptor = descriptor;
    }

private:
    int m_descriptor = -1;
};

// Owns a C stream and closes it when it goes.
struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

} // namespace scrivly
