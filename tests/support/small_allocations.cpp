// Lets the sanitizer's allocator fail as the C library's does.
extern "C" const char *__asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=64";
}
