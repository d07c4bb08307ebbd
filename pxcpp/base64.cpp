#include "pxcpp/base64.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

using octet = unsigned char;

constexpr std::size_t kTableSize = 65;
constexpr octet kPadding = 64;
constexpr octet kUnknown = 255;

char defaultTable[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
static_assert(sizeof defaultTable == kTableSize + 1);

const char *currentTable = defaultTable;

/// The first position of every character in `table`, `missing` for those it does not have. Made
/// anew by each call that decodes, since a caller may change a table's characters at any time.
template <typename Position>
std::array<Position, 256> positions(const char *table, std::size_t size, Position missing)
{
    std::array<Position, 256> result;
    result.fill(missing);
    for (std::size_t i = size; i-- > 0;)
        result[octet(table[i])] = Position(i);
    return result;
}

std::uint64_t groupsOf(std::uint64_t length, std::uint64_t size)
{
    return length / size + (length % size != 0 ? 1 : 0);
}

/// Encodes `length` octets; `text` has room for four characters a group.
void encode(const octet *data, std::uint64_t length, const char *table, char *text)
{
    const octet *end = data + length / 3 * 3;
    for (; data != end; data += 3) {
        *text++ = table[data[0] >> 2];
        *text++ = table[(data[0] & 3) << 4 | data[1] >> 4];
        *text++ = table[(data[1] & 15) << 2 | data[2] >> 6];
        *text++ = table[data[2] & 63];
    }
    const auto rest = length % 3;
    if (rest != 0) {
        const octet second = rest == 2 ? data[1] : octet(0);
        *text++ = table[data[0] >> 2];
        *text++ = table[(data[0] & 3) << 4 | second >> 4];
        *text++ = table[rest == 2 ? (second & 15) << 2 : kPadding];
        *text++ = table[kPadding];
    }
}

octet firstOctet(unsigned int i0, unsigned int i1)
{
    return octet((i0 << 2) + ((i1 >> 4) & 3));
}

octet secondOctet(unsigned int i1, unsigned int i2)
{
    return octet((i1 << 4) + ((i2 >> 2) & 15));
}

octet thirdOctet(unsigned int i2, unsigned int i3)
{
    return octet((i2 << 6) + (i3 & 63));
}

/// Decodes groups of four characters, padding as zero bits. False when one is not in the table.
bool decodeGroups(const char *text, std::size_t groups, octet *data)
{
    const auto index = positions<octet>(currentTable, kTableSize, kUnknown);
    const octet *at = reinterpret_cast<const octet *>(text);
    for (const octet *end = at + 4 * groups; at != end; at += 4) {
        const unsigned int i0 = index[at[0]];
        const unsigned int i1 = index[at[1]];
        const unsigned int i2 = index[at[2]];
        const unsigned int i3 = index[at[3]];
        if ((i0 | i1 | i2 | i3) > 127)
            return false;
        *data++ = firstOctet(i0, i1);
        *data++ = secondOctet(i1, i2);
        *data++ = thirdOctet(i2, i3);
    }
    return true;
}

} // namespace

char *PXBase64SetTableCode(const char *table)
{
    currentTable = table ? table : defaultTable;
    // As writable as it was given, like strchr's result.
    return const_cast<char *>(currentTable);
}

char *PXBase64Encode(const void *data, std::uint64_t length)
{
    if (!data) {
        std::puts("argument error...... pbtdata is null.");
        return nullptr;
    }
    if (length == 0)
        return nullptr;
    const std::uint64_t groups = groupsOf(length, 3);
    void *text = groups <= (SIZE_MAX - 1) / 4 ? std::calloc(groups * 4 + 1, 1) : nullptr;
    if (!text) {
        std::puts("memory not enough...........");
        return nullptr;
    }
    encode(static_cast<const octet *>(data), length, currentTable, static_cast<char *>(text));
    return static_cast<char *>(text);
}

unsigned char GetTableIndex(char character)
{
    const void *found = std::memchr(currentTable, octet(character), kTableSize);
    return found ? octet(static_cast<const char *>(found) - currentTable) : kUnknown;
}

unsigned char *PXBase64Decode(const char *text, std::uint64_t *length)
{
    if (!text) {
        std::puts("[PXBase64Decode] pszBase64Code == NULL.");
        return nullptr;
    }
    const std::size_t size = std::strlen(text);
    std::uint64_t decoded = size / 4 * 3;
    auto *data = static_cast<octet *>(std::calloc(decoded + 1, 1));
    if (!data) {
        std::puts("[PXBase64Decode] malloc error.");
        return nullptr;
    }
    // An incomplete group would hold the terminator, which no table has.
    if (size % 4 != 0 || !decodeGroups(text, size / 4, data)) {
        std::free(data);
        std::puts("[PXBase64Decode] btValue[0] == 0xFF.");
        return nullptr;
    }
    // Deliberate: the last group alone decides the length; padding elsewhere is not noticed.
    if (size != 0 && GetTableIndex(text[size - 2]) == kPadding)
        decoded -= 2;
    else if (size != 0 && GetTableIndex(text[size - 1]) == kPadding)
        decoded -= 1;
    data[decoded] = 0; // bits that padding leaves over may stand there
    if (length)
        *length = decoded;
    return data;
}

QString PXBase64EncodeEx(QByteArray data)
{
    char *text = PXBase64Encode(data.data(), std::uint64_t(data.size()));
    QString result = QString::fromLatin1(text);
    std::free(text);
    return result;
}

unsigned char *DeCodeBase64Ex(const char *text, int length, const char *table, int *count)
{
    if (!text || !table)
        return nullptr;
    const std::size_t size = length > 0 ? std::size_t(length) : 0;
    auto *data = new (std::nothrow) octet[std::max<std::size_t>(size, 1)]();
    if (!data)
        return nullptr;
    // A table may have more than 65 characters, and then positions above 64.
    const auto index = positions<std::size_t>(table, std::strlen(table), kPadding);
    const auto valueAt = [&](std::size_t position) {
        // Deliberate: the character at the length is read as well.
        return position <= size ? unsigned(index[octet(text[position])]) : kPadding;
    };
    octet *end = data;
    for (std::size_t at = 0; at < size; at += 4) {
        const unsigned int i0 = valueAt(at);
        const unsigned int i1 = valueAt(at + 1);
        const unsigned int i2 = valueAt(at + 2);
        const unsigned int i3 = valueAt(at + 3);
        *end++ = firstOctet(i0, i1);
        // Deliberate: padding, or a character the table has not, ends its own group only.
        if (i2 != kPadding) {
            *end++ = secondOctet(i1, i2);
            if (i3 != kPadding)
                *end++ = thirdOctet(i2, i3);
        }
    }
    if (count)
        *count = int(end - data);
    return data;
}

char *EnCodeBase64Ex(const void *data, int length, const char *table)
{
    const std::uint64_t size = length > 0 ? std::uint64_t(length) : 0;
    // The estimate alone is too small from 12,582,910 octets on.
    const float estimate = (float(size) / 3 + 1) * 4 + 1;
    const std::uint64_t need = groupsOf(size, 3) * 4 + 1;
    auto *text = static_cast<char *>(std::calloc(std::max(std::uint64_t(estimate), need), 1));
    if (!text)
        return nullptr;
    if (!data || !table) {
        std::free(text);
        return nullptr;
    }
    encode(static_cast<const octet *>(data), size, table, text);
    return text;
}
