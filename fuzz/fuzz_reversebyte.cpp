#include "fuzz_target.h"
#include "pxcpp/code_convert.h"

#include <algorithm>
#include <cstring>
#include <QtGlobal>
#include <vector>

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    const int room = size > 0 ? 1 + data[0] : 1;
    const std::size_t count = size / 2;

    std::vector<char> output(std::size_t(room) + 3);
    const int written =
        code_unicode_to_utf8_reversebyte_BYTE(data, int(count), output.data(), room);
    require(written >= 0 && written <= room + 3);
    require(count == 0 || written >= room || output[std::size_t(written)] == '\0');

    // Slots end at a zero one; up to there both forms write the same.
    std::vector<unsigned int> slots32(count);
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(&slots32[i], data + 2 * i, 2);
    const auto units = std::find(slots32.begin(), slots32.end(), 0U) - slots32.begin();
    std::vector<char> expected(std::size_t(room) + 3);
    const int length =
        code_unicode_to_utf8_reversebyte_BYTE(data, int(units), expected.data(), room);
    require(code_unicode_to_utf8_reversebyte(slots32.data(), int(count), output.data(), room) ==
            length);
    require(std::equal(expected.begin(), expected.begin() + length, output.begin()));
    return 0;
}
