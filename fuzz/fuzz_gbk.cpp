#include "fuzz_target.h"
#include "pxcpp/code_convert.h"

#include <string>
#include <vector>

namespace {

void requireRoomIsKeptBothWays(const std::string &text, int room)
{
    std::vector<char> utf8(std::size_t(room) + 6);
    const int written = code_gbk_to_utf8(text.c_str(), utf8.data(), room);
    require(written >= 0 && written <= room + 6);

    const std::size_t longest = 2 * (3 * text.size() + 1);
    std::vector<char> gbk(longest);
    const int converted = code_utf8_to_gbk(text.c_str(), gbk.data());
    require(converted >= 0 && std::size_t(converted) <= longest);
}

// Characters that were found come back as the octets they were found by.
void requireCharactersComeBack(const std::string &text)
{
    std::vector<unsigned int> units(text.size());
    const int count = code_gbk_to_unicode(text.data(), units.data(), int(text.size()));
    require(count >= 0 && count <= int(text.size()));
    for (int i = 0; i < count; ++i) {
        char octets[2] = {};
        unsigned int again = 0;
        const int length = code_unicode_to_gbk(&units[std::size_t(i)], octets, 1);
        require(code_gbk_to_unicode(octets, &again, length) == 1);
        require(again == units[std::size_t(i)]);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const int room = size > 0 ? 1 + data[0] : 1;
    const std::string text(data, data + size);
    requireRoomIsKeptBothWays(text, room);
    requireCharactersComeBack(text);
    return 0;
}
