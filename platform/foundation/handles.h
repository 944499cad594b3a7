// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

namespace clipheave::platform {

/// Deleter made of a library's release function, which takes the pointer or its address.
template <auto Free> struct Releaser {
    template <class T> void operator()(T* pointer) const noexcept {
        // The pointer itself first: a function that takes void* takes the address as well.
        if constexpr (requires { Free(pointer); })
            Free(pointer);
        else
            Free(&pointer);
    }
};

/// A file descriptor that closes itself; -1 is none.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd) noexcept : m_fd(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_fd(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        reset(other.release());
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { reset(); }

    [[nodiscard]] int get() const noexcept { return m_fd; }
    [[nodiscard]] explicit operator bool() const noexcept { return m_fd >= 0; }
    int release() noexcept {
        const int fd = m_fd;
        m_fd = -1;
        return fd;
    }
    void reset(int fd = -1) noexcept; // defined in file_reader.cpp

private:
    int m_fd = -1;
};

} // namespace clipheave::platform
