// In the build that counts what tests run through: the counts are written, too, of a process that a
// test ends by SIGTERM, or that leaves without its exit handlers.
#include <csignal>
#include <cstdlib>
#include <unistd.h>

// NOLINTBEGIN(bugprone-reserved-identifier): the compiler's and the linker's names.
extern "C" {
void __gcov_dump();
[[noreturn]] void __real__exit(int status);
[[noreturn]] void __wrap__exit(int status)
{
    __gcov_dump();
    __real__exit(status);
}
}
// NOLINTEND(bugprone-reserved-identifier)

[[gnu::constructor]] static void leaveByItself()
{
    std::signal(SIGTERM, [](int number) { ::_exit(128 + number); });
}
