#include "app/certificate_argument.h"

#include "core/start_directory.h"
#include "util/c_util.h"

namespace certificate_argument {

bool isCertificate(const QByteArray &argument)
{
    constexpr int kLongestPath = 255;
    return argument.size() > kLongestPath;
}

QByteArray filePath(const QByteArray &argument)
{
    const QByteArray start = startDirectory();
    if (argument.startsWith('/') || start.isEmpty() || c_util().FileExists(argument.constData()))
        return argument;
    const QByteArray fromStart = start + '/' + argument;
    return c_util().FileExists(fromStart.constData()) ? fromStart : argument;
}

} // namespace certificate_argument
