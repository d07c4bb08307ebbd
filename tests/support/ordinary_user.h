#pragma once

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

/// Whether `works()` is true for a user whom permissions bind: in a child process that has dropped
/// to "nobody" when the test runs as root.
template <typename Function>
bool asOrdinaryUser(const Function &works)
{
    constexpr uid_t kNobody = 65534;
    const pid_t child = ::fork();
    if (child == 0) {
        if (::geteuid() == 0 && (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 ||
                                 ::setuid(kNobody) != 0 || ::geteuid() != kNobody))
            ::_exit(2);
        ::_exit(works() ? 0 : 1);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}
