// A library of large parts: one that is only read and one that is written to. With PX_RELOCATED,
// linking writes to the first.

#include <cstddef>

constexpr std::size_t kSize = std::size_t{400} * 1024;

extern "C" {

extern const char readOnly[kSize];
const char readOnly[kSize] = {1, 2, 3};
char written[kSize] = {4, 5, 6};

int answer()
{
    return 42;
}

#ifdef PX_RELOCATED
[[gnu::visibility("hidden")]] extern int (*const relocated)();
asm(".pushsection .rodata\n.balign 8\nrelocated: .quad answer\n.popsection");

int ask()
{
    return relocated();
}
#else
int ask()
{
    return answer();
}
#endif

} // extern "C"
