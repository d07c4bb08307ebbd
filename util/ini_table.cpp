#include "util/ini_table.h"

#include "util/file_reader.h"
#include "util/qt_compat.h"

#include <ctime>
#include <QFile>
#include <QHash>
#include <QSettings>
#include <QStringList>
#include <QTemporaryFile>
#include <sys/stat.h>
#include <tuple>

namespace ini_table {
namespace {

constexpr long long kNanosecondsPerSecond = 1000000000LL;

// File times move in ticks of the kernel's clock, 10 ms at most. A file that was changed within the
// last tick can change once more without its times telling.
constexpr long long kClockTick = 20000000LL;

long long nanoseconds(const timespec &time)
{
    return time.tv_sec * kNanosecondsPerSecond + time.tv_nsec;
}

struct FileIdentity
{
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = -1; // no file has it
    long long modified = 0;
    long long changed = 0;

    bool operator==(const FileIdentity &other) const
    {
        return std::tie(device, inode, size, modified, changed) ==
               std::tie(other.device, other.inode, other.size, other.modified, other.changed);
    }
};

FileIdentity identityOf(const QByteArray &path)
{
    struct stat status = {};
    if (::stat(path.constData(), &status) != 0)
        return {};
    return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
            nanoseconds(status.st_ctim)};
}

bool isSettled(const FileIdentity &identity)
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const long long age = nanoseconds(now) - identity.changed;
    return age > kClockTick || age < -kClockTick;
}

using Texts = QHash<QString, QString>;

// `QSettings` keeps files in a cache of its own, by name, size and millisecond, with whatever codec
// they were first read. A copy under a name that was never used gets past it; where none can be
// made, the file itself must do.
Texts parse(const QByteArray &path, const QByteArray &content)
{
    Texts texts;
    if (content.isEmpty())
        return texts;
    QTemporaryFile copy;
    const bool copied = copy.open() && copy.write(content) == content.size() && copy.flush();
    QSettings settings(copied ? copy.fileName() : QFile::decodeName(path), QSettings::IniFormat);
    readAsUtf8(settings);
    const QStringList keys = settings.allKeys();
    texts.reserve(keys.size());
    for (const QString &key : keys)
        texts.insert(key, settings.value(key).toString());
    return texts;
}

struct ParsedFile
{
    QByteArray path;
    FileIdentity identity;
    bool settled = false;
    Texts texts;
};

const Texts &textsOf(const QByteArray &path)
{
    static ParsedFile file;
    const FileIdentity identity = identityOf(path);
    if (file.settled && file.path == path && file.identity == identity)
        return file.texts;
    // Asked before the file is read: what changes after that may carry the same times.
    const bool settled = isSettled(identity);
    QByteArray content;
    file_reader::readWhole(path.constData(), content);
    file = {path, identity, settled, parse(path, content)};
    return file.texts;
}

// As `QSettings` takes keys: without slashes at either end, and one at a time within.
QString normalizedKey(const QString &key)
{
    return key.split(QLatin1Char('/'), Qt::SkipEmptyParts).join(QLatin1Char('/'));
}

} // namespace

QString lookup(const QString &path, const QString &section, const QString &key)
{
    return textsOf(QFile::encodeName(path)).value(normalizedKey(section + QLatin1Char('/') + key));
}

} // namespace ini_table
