#include "fuzz_target.h"
#include "pxcpp/code_convert.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

void requireCountersAddUp(const std::string &text)
{
    int counters[7] = {};
    code_get_utf8_length(text.c_str(), counters);
    int sum = 0;
    std::for_each(counters + 1, counters + 7, [&](int counter) { sum += counter; });
    require(counters[0] == sum);
}

void requireRoomIsKept(const std::string &text, int room)
{
    std::vector<unsigned int> units(std::size_t(room) + 1);
    const int count = code_utf8_to_unicode(text.c_str(), units.data(), room);
    require(count >= 0 && count <= room + 1);
    require(count >= room || units[std::size_t(count)] == 0);

    units.push_back(0);
    std::vector<char> output(std::size_t(room) + 6);
    const int written = code_unicode_to_utf8(units.data(), output.data(), room);
    require(written >= 0 && written <= room + 6);
    require(written >= room || output[std::size_t(written)] == '\0');
}

// What one sequence of up to four octets is read as is written no longer, and reads the same.
void requireSequenceComesBack(const std::string &text)
{
    long unicode = -1;
    const int consumed = code_utf8_to_unicode_one(text.c_str(), &unicode);
    require(consumed != 0 || unicode == 0);
    char again[7] = {};
    if ((consumed == 3 || consumed == 4) && unicode >= 0x800) {
        long unicodeAgain = -1;
        require(code_unicode_to_utf8_one(unicode, again, 6) <= consumed);
        require(code_utf8_to_unicode_one(again, &unicodeAgain) != 0 && unicodeAgain == unicode);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // The first octet is the room there is; a text ends at its first zero octet.
    const int room = size > 0 ? 1 + data[0] : 1;
    const std::string text(data, data + size);
    requireCountersAddUp(text);
    requireRoomIsKept(text, room);
    requireSequenceComesBack(text);
    return 0;
}
