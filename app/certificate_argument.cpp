#include "app/certificate_argument.h"

#include "core/start_directory.h"

#include <filesystem>
#include <system_error>

namespace certificate_argument {
namespace {

// A folder can't be meant: those of the install directory would hide files of their names.
bool namesAFile(const QByteArray &path)
{
    std::error_code error;
    const auto type = std::filesystem::status(path.constData(), error);
    return exists(type) && !is_directory(type);
}

} // namespace

bool isCertificate(const QByteArray &argument)
{
    constexpr int kLongestPath = 255;
    return argument.size() > kLongestPath;
}

QByteArray filePath(const QByteArray &argument)
{
    const QByteArray start = startDirectory();
    if (argument.startsWith('/') || start.isEmpty() || namesAFile(argument))
        return argument;
    const QByteArray fromStart = start + '/' + argument;
    return namesAFile(fromStart) ? fromStart : argument;
}

} // namespace certificate_argument
