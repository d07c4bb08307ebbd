#pragma once

#include <QByteArray>
#include <QString>
#include <string>

/// File and configuration helpers without state. File names are in the encoding of the file
/// system, as `QFile::encodeName` gives it.
class c_util
{
public:
    /// A file to be read whole that is larger is refused.
    static constexpr qint64 kMaxFileSize = 64LL * 1024 * 1024;

    /// True when anything, of any kind, exists at `path`.
    bool FileExists(const char *path);

    /// Reads a whole file into `buffer`, which must hold the file and one octet more; nothing is
    /// bounded here. `count` receives the number of read attempts: one more than the file's octets,
    /// because the attempt that meets the end counts too. False, with count 0 and the buffer
    /// untouched, when nothing exists at `path`; true otherwise, also when it can't be read.
    bool readfile(const char *path, char *buffer, int &count);

    /// The same for a file of any size up to `kMaxFileSize`: `content` receives the octets of a
    /// regular file, or of a pipe up to its writer's end. False, with `content` empty, for anything
    /// else: a directory, a device, a socket, a pipe without a writer, an unreadable or larger
    /// file, or a pipe whose writer isn't done within 15 seconds. A file that shrinks meanwhile
    /// gives what was read.
    bool readfile(const char *path, QByteArray &content);

    /// Appends `text` and a line feed to the file, which is made when missing. True when something
    /// was written.
    bool writefile(const char *path, const std::string &text);

    /// Looks `key` up in `section` of the language file `fileName`. True when `value`, which
    /// receives the text or an empty one, is not empty.
    bool GetKeyValue(const char *fileName, const QString &section, const QString &key,
                     QString &value);

    /// The suite's language code in a client configuration: the text of the first `PXClient` in
    /// the first `Language` below the root of the XML text. False, with `language` untouched, when
    /// the text does not parse or has none.
    bool GetCurLang(const char *xml, QString &language);

    /// Strips the armour of a PEM certificate by position: the first 28 characters and the last 31
    /// go, as do line ends in between. The result is still base64, and it is not terminated.
    /// `output` must hold `length` characters; `count` receives how many were written. Always true.
    bool base64cert_to_dercert(const char *text, int length, char *output, int &count);
};
