#pragma once

#include <cstdio>
#include <QByteArray>
#include <QTemporaryFile>
#include <unistd.h>

/// What `body` writes to standard output.
template <typename Body>
QByteArray printedBy(Body body)
{
    QTemporaryFile file;
    const int terminal = dup(STDOUT_FILENO);
    if (terminal < 0 || !file.open())
        return {};
    std::fflush(stdout);
    dup2(file.handle(), STDOUT_FILENO);
    body();
    std::fflush(stdout);
    dup2(terminal, STDOUT_FILENO);
    close(terminal);
    file.seek(0);
    return file.readAll();
}
