#include "app/program_memory.h"

#include <algorithm>
#include <cstdlib>
#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace program_memory {

namespace {

using Segment = ElfW(Phdr);

// Where an address in the object's file lies, counted from a place that is known.
const char *placeOf(const dl_phdr_info &object, ElfW(Addr) address)
{
    const auto *known = reinterpret_cast<const char *>(object.dlpi_phdr);
    return known + (object.dlpi_addr + address - reinterpret_cast<ElfW(Addr)>(known));
}

// The program itself may have been unpacked to where it lies: then it is in no file.
bool isLibrary(const dl_phdr_info &object)
{
    return object.dlpi_name && *object.dlpi_name;
}

bool isOnlyRead(const Segment &segment)
{
    constexpr std::size_t kLarge = std::size_t{200} * 1024; // a call for less gains nothing
    return segment.p_type == PT_LOAD && segment.p_flags == PF_R && segment.p_memsz > kLarge;
}

// Linking wrote to what is only read since.
bool wasRelocated(const dl_phdr_info &object, const Segment &segment)
{
    if (segment.p_type != PT_DYNAMIC)
        return false;
    const auto *entry = reinterpret_cast<const ElfW(Dyn) *>(placeOf(object, segment.p_vaddr));
    for (; entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == DT_TEXTREL ||
            (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0))
            return true;
    }
    return false;
}

// Whole pages, for what lies beside may share those at the ends.
void advise(const char *begin, std::size_t size, int advice)
{
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t before = (page - reinterpret_cast<std::size_t>(begin) % page) % page;
    if (size > before)
        ::madvise(const_cast<char *>(begin + before), (size - before) / page * page, advice);
}

int giveBackObject(dl_phdr_info *object, std::size_t /*size*/, void * /*nothing*/)
{
    const Segment *const first = object->dlpi_phdr;
    const Segment *const end = first + object->dlpi_phnum;
    if (!isLibrary(*object) || std::any_of(first, end, [&](const Segment &segment) {
            return wasRelocated(*object, segment);
        }))
        return 0;
    std::for_each(first, end, [&](const Segment &segment) {
        if (isOnlyRead(segment))
            advise(placeOf(*object, segment.p_vaddr), segment.p_memsz, MADV_DONTNEED);
    });
    return 0;
}

constexpr std::size_t kRoom = std::size_t{1536} * 1024;
const char *roomBegin = nullptr;

} // namespace

void keepFreed()
{
#ifdef __GLIBC__
    constexpr int kMebibyte = 1024 * 1024;
    mallopt(M_MMAP_THRESHOLD, 4 * kMebibyte);
    mallopt(M_TRIM_THRESHOLD, 8 * kMebibyte);
#endif
}

void makeRoom()
{
    void *room = std::malloc(kRoom);
    roomBegin = static_cast<const char *>(room);
    std::free(room); // and kept
}

void fillRoom()
{
    if (roomBegin)
        advise(roomBegin, kRoom, MADV_POPULATE_WRITE);
}

void giveBackFiles()
{
    dl_iterate_phdr(giveBackObject, nullptr);
}

} // namespace program_memory
