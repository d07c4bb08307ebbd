#pragma once

#include <cstdio>
#include <QByteArray>
#include <unistd.h>

/// What `body` writes to standard output.
template <typename Body>
QByteArray printedBy(Body body)
{
    std::fflush(stdout);
    const int terminal = dup(STDOUT_FILENO);
    std::FILE *file = std::tmpfile();
    dup2(fileno(file), STDOUT_FILENO);
    body();
    std::fflush(stdout);
    dup2(terminal, STDOUT_FILENO);
    close(terminal);
    std::fseek(file, 0, SEEK_END);
    QByteArray printed(static_cast<int>(std::ftell(file)), '\0');
    std::rewind(file);
    printed.resize(static_cast<int>(
        std::fread(printed.data(), 1, static_cast<std::size_t>(printed.size()), file)));
    std::fclose(file);
    return printed;
}
