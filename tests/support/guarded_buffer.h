#pragma once

#include <cstddef>
#include <cstring>
#include <QtGlobal>
#include <sys/mman.h>
#include <unistd.h>

/// `count` elements that end where a page begins which can't be touched: one octet read or written
/// past them ends the program, with or without a sanitizer. Filled with 0xA5.
template <typename T>
class GuardedBuffer
{
public:
    explicit GuardedBuffer(std::size_t count)
    {
        const auto page = std::size_t(sysconf(_SC_PAGESIZE));
        const std::size_t octets = count * sizeof(T);
        const std::size_t usable = (octets + page - 1) / page * page;
        m_size = usable + page;
        m_memory =
            mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        Q_ASSERT(m_memory != MAP_FAILED);
        std::memset(m_memory, 0xA5, usable);
        mprotect(static_cast<char *>(m_memory) + usable, page, PROT_NONE);
        m_data = reinterpret_cast<T *>(static_cast<char *>(m_memory) + usable - octets);
    }

    /// A copy of `count` elements.
    GuardedBuffer(const void *source, std::size_t count)
        : GuardedBuffer(count)
    {
        std::memcpy(m_data, source, count * sizeof(T));
    }

    ~GuardedBuffer() { munmap(m_memory, m_size); }

    GuardedBuffer(const GuardedBuffer &) = delete;
    GuardedBuffer &operator=(const GuardedBuffer &) = delete;

    T *get() const { return m_data; }
    T &operator[](std::size_t i) const { return m_data[i]; }

private:
    void *m_memory;
    std::size_t m_size;
    T *m_data;
};
