#pragma once

#include <unistd.h>
#include <utility>

/// Owns an open file descriptor and closes it at the end; negative stands for none. Moved from, it
/// holds none, or, by assignment, what the other held. Converts for borrowing: the number is good
/// while the owner lives.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd)
        : m_fd(fd)
    {
    }
    ~FileDescriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    FileDescriptor(FileDescriptor &&other) noexcept
        : m_fd(std::exchange(other.m_fd, -1))
    {
    }
    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;

    operator int() const { return m_fd; }

private:
    int m_fd = -1;
};
