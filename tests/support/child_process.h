#pragma once

#include <csignal>
#include <cstdio>
#include <QByteArray>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

struct child_end
{
    int signal = 0;    ///< what ended it, or 0
    QByteArray output; ///< what it wrote to standard output and error
};

/// Runs `body` in a forked child and waits for its end.
template <typename Body>
child_end runInChild(Body body)
{
    int ends[2];
    if (pipe(ends) != 0)
        return {};
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        std::signal(SIGABRT, SIG_DFL);
        body();
        std::fflush(stdout);
        _exit(0);
    }
    close(ends[1]);
    child_end result;
    char text[512];
    for (ssize_t size = 0; (size = read(ends[0], text, sizeof text)) > 0;)
        result.output.append(text, int(size));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return result;
}

/// Runs `body` in a forked child that gets no more memory: with a sanitizer no more than the limit
/// in programs with small_allocations.cpp, without one hardly any.
template <typename Body>
child_end runWithoutMemory(Body body)
{
    return runInChild([&] {
#ifndef __SANITIZE_ADDRESS__
        rlimit before{};
        getrlimit(RLIMIT_AS, &before);
        const rlimit none{1, before.rlim_max};
        setrlimit(RLIMIT_AS, &none);
#endif
        body();
#ifndef __SANITIZE_ADDRESS__
        setrlimit(RLIMIT_AS, &before); // what is left to do takes some
#endif
    });
}
