#include "util/c_util.h"

#include "util/c_language.h"
#include "util/client_config.h"
#include "util/file_reader.h"
#include "util/ini_table.h"

#include <cstdio>
#include <QFile>

bool c_util::FileExists(const char *path)
{
    return file_reader::exists(path);
}

bool c_util::readfile(const char *path, char *buffer, int &count)
{
    return file_reader::readIntoBuffer(path, buffer, count);
}

bool c_util::readfile(const char *path, QByteArray &content)
{
    return file_reader::readWhole(path, content);
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
    return client_config::languageCodeOf(xml, language);
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
