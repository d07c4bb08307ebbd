#include "util/file_reader.h"

#include "util/file_descriptor.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <QDeadlineTimer>
#include <sys/stat.h>
#include <unistd.h>

namespace file_reader {
namespace {

// Devices are left alone, since opening one can already do something.
bool isRegularOrPipe(const struct stat &status)
{
    return S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode);
}

// Opens without blocking, so that a pipe that nobody writes to is simply at its end; only for
// another process's lease on a file it waits, as any reader does: the holder has been told, and the
// kernel ends the lease when it takes too long. `status` receives what was opened; -1 for anything
// but a readable regular file or pipe.
int openForReading(const char *path, struct stat &status)
{
    constexpr int kLeasePauseMs = 10;
    int fd = -1;
    do {
        if (::stat(path, &status) != 0 || !isRegularOrPipe(status))
            return -1;
        fd = ::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    } while (fd < 0 && errno == EWOULDBLOCK && ::poll(nullptr, 0, kLeasePauseMs) == 0);
    if (fd >= 0 && (::fstat(fd, &status) != 0 || !isRegularOrPipe(status))) {
        ::close(fd);
        return -1;
    }
    return fd;
}

bool waitForData(int fd, int patienceMs)
{
    pollfd wait = {fd, POLLIN, 0};
    const QDeadlineTimer deadline(patienceMs);
    int ready = 0;
    do
        ready = ::poll(&wait, 1, static_cast<int>(deadline.remainingTime()));
    while (ready < 0 && errno == EINTR);
    return ready > 0;
}

// Hands what is read to `take(octets, length)`, chunk by chunk. True when the end was met, false
// when reading failed, a pipe was silent for too long or `take` wants no more.
template <typename Take>
bool readToEnd(int fd, int pipePatienceMs, const Take &take)
{
    constexpr int kChunk = 64 * 1024;
    char chunk[kChunk];
    for (;;) {
        const ssize_t got = ::read(fd, chunk, kChunk);
        if (got == 0)
            return true;
        if (got > 0) {
            if (!take(chunk, static_cast<int>(got)))
                return false;
        } else if (errno == EAGAIN ? !waitForData(fd, pipePatienceMs) : errno != EINTR)
            return false;
    }
}

} // namespace

bool exists(const char *path)
{
    struct stat status = {};
    return ::stat(path, &status) == 0;
}

bool readIntoBuffer(const char *path, char *buffer, int &count)
{
    count = 0;
    if (!exists(path))
        return false;
    struct stat status = {};
    const FileDescriptor fd(openForReading(path, status));
    readToEnd(fd, kPipePatienceMs, [&](const char *octets, int length) {
        std::memcpy(buffer + count, octets, static_cast<size_t>(length));
        count += length;
        return true;
    });
    // The attempt that meets the end, or fails, counts as well: callers allow for one too many.
    ++count;
    return true;
}

bool readWhole(const char *path, QByteArray &content, int pipePatienceMs)
{
    content.clear();
    struct stat status = {};
    const FileDescriptor fd(openForReading(path, status));
    if (fd < 0)
        return false;
    const bool isPipe = S_ISFIFO(status.st_mode);
    const bool complete = (isPipe || status.st_size <= kMaxFileSize) &&
                          readToEnd(fd, pipePatienceMs, [&content](const char *octets, int length) {
                              content.append(octets, length);
                              return content.size() <= kMaxFileSize;
                          });
    if (complete && !(isPipe && content.isEmpty()))
        return true;
    content.clear();
    return false;
}

} // namespace file_reader
