#include "util/c_util.h"

#include "util/c_language.h"
#include "util/file_descriptor.h"
#include "util/ini_table.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <QDeadlineTimer>
#include <QFile>
#include <sys/stat.h>
#include <tinyxml2.h>
#include <unistd.h>

namespace {

// Devices are left alone, since opening one can already do something.
bool isRegularOrPipe(const struct stat &status)
{
    return S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode);
}

// Opens without blocking, so that a pipe that nobody writes to is simply at its end. `status`
// receives what was opened; -1 for anything but a readable regular file or pipe.
int openForReading(const char *path, struct stat &status)
{
    if (::stat(path, &status) != 0 || !isRegularOrPipe(status))
        return -1;
    const int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd >= 0 && (::fstat(fd, &status) != 0 || !isRegularOrPipe(status))) {
        ::close(fd);
        return -1;
    }
    return fd;
}

// A pipe's writer that isn't done by then is taken for one that never will be.
constexpr int kPipePatienceMs = 15000;

bool waitForData(int fd, const QDeadlineTimer &deadline)
{
    pollfd wait = {fd, POLLIN, 0};
    int ready = 0;
    do
        ready = ::poll(&wait, 1, static_cast<int>(deadline.remainingTime()));
    while (ready < 0 && errno == EINTR);
    return ready > 0;
}

// Hands what is read to `take(octets, length)`, chunk by chunk. True when the end was met, false
// when reading failed or `take` wants no more.
template <typename Take>
bool readToEnd(int fd, const Take &take)
{
    constexpr int kChunk = 64 * 1024;
    char chunk[kChunk];
    const QDeadlineTimer deadline(kPipePatienceMs);
    for (;;) {
        const ssize_t got = ::read(fd, chunk, kChunk);
        if (got == 0)
            return true;
        if (got > 0) {
            if (!take(chunk, static_cast<int>(got)))
                return false;
        } else if (errno == EAGAIN ? !waitForData(fd, deadline) : errno != EINTR)
            return false;
    }
}

} // namespace

bool c_util::FileExists(const char *path)
{
    struct stat status = {};
    return ::stat(path, &status) == 0;
}

bool c_util::readfile(const char *path, char *buffer, int &count)
{
    count = 0;
    if (!FileExists(path))
        return false;
    struct stat status = {};
    const FileDescriptor fd(openForReading(path, status));
    readToEnd(fd, [&](const char *octets, int length) {
        std::memcpy(buffer + count, octets, static_cast<size_t>(length));
        count += length;
        return true;
    });
    // The attempt that meets the end, or fails, counts as well: callers allow for one too many.
    ++count;
    return true;
}

bool c_util::readfile(const char *path, QByteArray &content)
{
    content.clear();
    struct stat status = {};
    const FileDescriptor fd(openForReading(path, status));
    if (fd < 0)
        return false;
    const bool isPipe = S_ISFIFO(status.st_mode);
    const bool complete = (isPipe || status.st_size <= kMaxFileSize) &&
                          readToEnd(fd, [&content](const char *octets, int length) {
                              content.append(octets, length);
                              return content.size() <= kMaxFileSize;
                          });
    if (complete && !(isPipe && content.isEmpty()))
        return true;
    content.clear();
    return false;
}

bool c_util::writefile(const char *path, const std::string &text)
{
    FILE *file = std::fopen(path, "a+");
    if (!file)
        return false;
    const std::string line = text + '\n';
    const bool written = std::fwrite(line.data(), line.size(), 1, file) >= 1;
    std::fclose(file);
    return written;
}

bool c_util::GetKeyValue(const char *fileName, const QString &section, const QString &key,
                         QString &value)
{
    const QString path = c_language::GetLangPtr()->languageFilePath(QFile::decodeName(fileName));
    value = ini_table::lookup(path, section, key);
    return !value.isEmpty();
}

bool c_util::GetCurLang(const char *xml, QString &language)
{
    tinyxml2::XMLDocument document;
    if (document.Parse(xml) != tinyxml2::XML_SUCCESS)
        return false;
    const tinyxml2::XMLConstHandle root(document.RootElement());
    const tinyxml2::XMLElement *client =
        root.FirstChildElement("Language").FirstChildElement("PXClient").ToElement();
    const char *text = client ? client->GetText() : nullptr;
    if (!text)
        return false;
    language = QString::fromLatin1(text);
    return true;
}

bool c_util::base64cert_to_dercert(const char *text, int length, char *output, int &count)
{
    constexpr int kBeginLine = 28; // the armour's first line with its line feed
    constexpr int kArmour = 59;    // both armour lines with their line ends
    count = 0;
    if (length < kArmour)
        return true;
    const int end = length - kArmour + kBeginLine;
    for (int i = kBeginLine; i < end && text[i] != '\0'; ++i) {
        if (text[i] != '\r' && text[i] != '\n')
            output[count++] = text[i];
    }
    return true;
}
