#include "core/start_directory.h"

#include <filesystem>
#include <system_error>

void rememberStartDirectory()
{
    startDirectory();
}

QByteArray startDirectory()
{
    static const QByteArray directory = [] {
        std::error_code error;
        return QByteArray::fromStdString(std::filesystem::current_path(error).native());
    }();
    return directory;
}
