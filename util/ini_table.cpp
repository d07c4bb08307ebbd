#include "util/ini_table.h"

#include "util/file_reader.h"
#include "util/plain_ini.h"
#include "util/qt_compat.h"

#include <algorithm>
#include <ctime>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSettings>
#include <QStringList>
#include <QTemporaryFile>
#include <sys/stat.h>
#include <tuple>
#include <vector>

namespace ini_table {
namespace {

constexpr long long kNanosecondsPerSecond = 1000000000LL;

// File times move in ticks of the kernel's clock, 10 ms at most. A file that was changed within the
// last tick can change once more without its times telling. Where no file has nanoseconds, as on
// FAT, times move in whole seconds or two.
constexpr long long kClockTick = 20000000LL;
constexpr long long kWholeSeconds = 2 * kNanosecondsPerSecond + kClockTick;

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

FileIdentity identityOf(const struct stat &status)
{
    return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
            nanoseconds(status.st_ctim)};
}

bool isSettled(const FileIdentity &identity)
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const long long age = nanoseconds(now) - identity.changed;
    const bool isCoarse = identity.changed % kNanosecondsPerSecond == 0;
    const long long tick = isCoarse ? kWholeSeconds : kClockTick;
    return age > tick || age < -tick;
}

using Texts = QHash<QString, QString>;

// `QSettings` keeps files in a cache of its own, by name, size and millisecond, with whatever codec
// they were first read. A copy under a name that was never used gets past it; where none can be
// made, the file itself must do.
template <typename Ask>
auto askSettings(const QByteArray &path, const QByteArray &content, const Ask &ask)
{
    QTemporaryFile copy;
    const bool copied = copy.open() && copy.write(content) == content.size() && copy.flush();
    QSettings settings(copied ? copy.fileName() : QFile::decodeName(path), QSettings::IniFormat);
    readAsUtf8(settings);
    return ask(settings);
}

Texts allTexts(const QSettings &settings)
{
    Texts texts;
    const QStringList keys = settings.allKeys();
    texts.reserve(keys.size());
    for (const QString &key : keys) // one may be empty, which alone settings complain about
        texts.insert(key, settings.value(QLatin1Char('/') + key).toString());
    return texts;
}

// What stands before the first section; all of it where a quote may hide which one that is.
QString beforeSections(const QString &text)
{
    static const QRegularExpression head(QStringLiteral(R"((?:\A\xEF\xBB\xBF|^)[ \t]*\[)"),
                                         QRegularExpression::MultilineOption);
    const QString before = text.left(text.indexOf(head)); // all of it if there is none
    return before.contains(QLatin1Char('"')) ? text : before;
}

// `QSettings` parses no more of a file than the one section that a key seems to lie in. Where the
// name of a section may hold a slash, or that of a key before the sections, it finds less than what
// a file that is parsed as a whole has.
bool dependsOnTheQuestion(const QByteArray &content)
{
    static const QRegularExpression oddSection(
        QStringLiteral(R"(\[[^\]]*[/\\%]|\[\s*general\s*\])"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression comment(QStringLiteral(R"(^[ \t]*;[^\r\n]*)"),
                                            QRegularExpression::MultilineOption);
    static const QRegularExpression oddKey(QStringLiteral(R"([/\\%])"));
    const QString text = QString::fromLatin1(content.constData(), content.size());
    return text.contains(oddSection) || beforeSections(text).remove(comment).contains(oddKey);
}

// How many are at work, and which one it was that began last while there was none.
int g_atOnce = 0;
unsigned long g_lastAtOnce = 0;

struct ParsedFile
{
    QString path;
    QByteArray encodedPath;
    FileIdentity identity;
    unsigned long askedAtOnce = 0; ///< the last that asked for its state
    bool settled = false;
    bool isPlain = false;
    PlainIni plain;       ///< of a plain file
    Texts texts;          ///< of any other
    QByteArray toBeAsked; ///< its content, where each look-up has to ask settings of its own
};

void parse(ParsedFile &file, const FileIdentity &identity, bool isRegular)
{
    file = {
        file.path, file.encodedPath, identity, file.askedAtOnce, isSettled(identity), false, {}, {},
        {}};
    // Not before the file is asked for its times: what changes after that may carry the same.
    QByteArray content;
    // What keeps a regular file from being read may pass without a trace in its times.
    const bool isRead =
        file_reader::readWhole(file.encodedPath.constData(), content, file_reader::kNoPatience);
    if (!isRead && isRegular)
        file.settled = false;
    file.isPlain = file.plain.read(content);
    if (file.isPlain)
        return;
    file.plain = {};
    if (dependsOnTheQuestion(content))
        file.toBeAsked = content;
    else
        file.texts = askSettings(file.encodedPath, content, allTexts);
}

// A few files keep their copies, for one certificate may ask for texts of several in turn; the one
// that was met first goes first.
ParsedFile &copyOf(const QString &path)
{
    constexpr std::size_t kMost = 4;
    static std::vector<ParsedFile> files;
    const auto found = std::find_if(files.begin(), files.end(),
                                    [&](const ParsedFile &file) { return file.path == path; });
    if (found != files.end())
        return *found;
    if (files.size() == kMost)
        files.erase(files.begin());
    files.emplace_back();
    files.back().path = path;
    files.back().encodedPath = QFile::encodeName(path);
    return files.back();
}

ParsedFile &current(const QString &path)
{
    ParsedFile &file = copyOf(path);
    if (g_atOnce > 0 && file.askedAtOnce == g_lastAtOnce)
        return file;
    struct stat status = {};
    const bool exists = ::stat(file.encodedPath.constData(), &status) == 0;
    const FileIdentity identity = exists ? identityOf(status) : FileIdentity();
    if (!file.settled || !(file.identity == identity))
        parse(file, identity, S_ISREG(status.st_mode));
    file.askedAtOnce = g_lastAtOnce;
    return file;
}

// As `QSettings` takes keys: without slashes at either end, and one at a time within.
QString normalizedKey(const QString &key)
{
    return key.split(QLatin1Char('/'), Qt::SkipEmptyParts).join(QLatin1Char('/'));
}

} // namespace

AtOnce::AtOnce()
{
    if (g_atOnce++ == 0)
        ++g_lastAtOnce;
}

AtOnce::~AtOnce()
{
    --g_atOnce;
}

QString lookup(const QString &path, QStringView section, QStringView key)
{
    ParsedFile &file = current(path);
    if (file.isPlain)
        return file.plain.value(section, key);
    const QString name = normalizedKey(section.toString() + QLatin1Char('/') + key.toString());
    if (file.toBeAsked.isEmpty())
        return file.texts.value(name);
    return askSettings(file.encodedPath, file.toBeAsked, [&name](const QSettings &settings) {
        return settings.value(QLatin1Char('/') + name).toString();
    });
}

} // namespace ini_table
