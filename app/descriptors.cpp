#include "app/descriptors.h"

#include "util/file_descriptor.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace descriptors {

namespace {

int openNull()
{
    return ::open("/dev/null", O_RDWR);
}

} // namespace

void fillStandardStreams()
{
    // The lowest free number is taken, so the first beyond the three tells that all are there.
    int opened = openNull();
    while (opened >= 0 && opened <= STDERR_FILENO)
        opened = openNull();
    if (opened >= 0)
        ::close(opened);
}

bool suffice()
{
    std::array<FileDescriptor, kNeeded> opened;
    for (FileDescriptor &each : opened)
        each = FileDescriptor(openNull());
    return std::all_of(opened.begin(), opened.end(),
                       [](const FileDescriptor &each) { return each >= 0; });
}

} // namespace descriptors
