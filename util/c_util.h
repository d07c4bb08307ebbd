#pragma once

#include <QByteArray>
#include <QString>
#include <string>

/// The suite's file and configuration helpers under their published names; without state. File
/// names are in the encoding of the file system, as `QFile::encodeName` gives it. Results are the
/// caller's, and every text that is taken is only read.
class c_util
{
public:
    /// `file_reader::exists`.
    bool FileExists(const char *path);

    /// `file_reader::readIntoBuffer`: nothing is bounded, and `count` is one too many.
    bool readfile(const char *path, char *buffer, int &count);

    /// `file_reader::readWhole`: up to `file_reader::kMaxFileSize`, and `content` is empty after
    /// failure.
    bool readfile(const char *path, QByteArray &content);

    /// Appends `text` and a line feed to the file, which is made when missing. True when something
    /// was written.
    bool writefile(const char *path, const std::string &text);

    /// Looks `key` up in `section` of the language file `fileName`, which lies where `c_language`
    /// says; the language in force takes no part. True when `value`, which receives the text or an
    /// empty one, is not empty. Costs as `ini_table::lookup`.
    bool GetKeyValue(const char *fileName, const QString &section, const QString &key,
                     QString &value);

    /// `client_config::languageCodeOf`: `language` is untouched after failure.
    bool GetCurLang(const char *xml, QString &language);

    /// Strips the armour of a PEM certificate by position: the first 28 characters and the last 31
    /// go, as do line ends in between; a zero octet ends what is copied. The result is still
    /// base64, whatever the name says, and it is not terminated. `output` must hold `length`
    /// characters; `count` receives how many were written, 0 for a text of less than 59. Always
    /// true.
    bool base64cert_to_dercert(const char *text, int length, char *output, int &count);
};
