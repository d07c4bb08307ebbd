#include "asn/asn_values.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

namespace {

constexpr int kSecondsPerDay = 86400;

struct TimeFields
{
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int offsetMinutes = 0;
    bool isLocal = false;
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isLeapYear(int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysBeforeMonth(int year, int month)
{
    constexpr int kLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int days = month > 2 && isLeapYear(year) ? 1 : 0;
    for (int m = 1; m < month; ++m)
        days += kLengths[m - 1];
    return days;
}

// Seconds may be missing, but are two digits when they begin.
void readSeconds(const char *&cursor, TimeFields &fields, int &error)
{
    if (isDigit(*cursor))
        fields.second = mypint(&cursor, 2, 0, 59, &error);
}

void readZone(const char *&cursor, bool mayBeLocal, TimeFields &fields, int &error)
{
    if (*cursor == '\0' && mayBeLocal) {
        fields.isLocal = true;
        return;
    }
    const char zone = *cursor++;
    if (zone == '+' || zone == '-') {
        const int hours = mypint(&cursor, 2, 0, 12, &error);
        const int minutes = mypint(&cursor, 2, 0, 59, &error);
        fields.offsetMinutes = (zone == '+' ? 1 : -1) * (hours * 60 + minutes);
    } else if (zone != 'Z') {
        error = 1;
        return;
    }
    if (*cursor != '\0')
        error = 1;
}

bool readFields(const char *text, bool isGeneralized, TimeFields &fields)
{
    const char *cursor = text;
    int error = 0;
    if (isGeneralized) {
        fields.year = mypint(&cursor, 4, 0, 9999, &error);
    } else {
        const int year = mypint(&cursor, 2, 0, 99, &error);
        fields.year = year + (year < 50 ? 2000 : 1900);
    }
    struct Field
    {
        int *value;
        int minimum;
        int maximum;
    };
    const Field twoDigitFields[] = {{&fields.month, 1, 12},
                                    {&fields.day, 1, 31},
                                    {&fields.hour, 0, 23},
                                    {&fields.minute, 0, 59}};
    // After an error the rest is read in vain, and the end of the text still stops it.
    for (const Field &field : twoDigitFields)
        *field.value = mypint(&cursor, 2, field.minimum, field.maximum, &error);
    readSeconds(cursor, fields, error);
    while (isGeneralized && *cursor != '\0' && std::strchr("0123456789.,", *cursor))
        ++cursor;
    readZone(cursor, isGeneralized, fields, error);
    return !error;
}

// The days of leap years since 1970, and the correction of the Gregorian calendar for centuries.
std::int64_t leapDays(int year)
{
    std::int64_t days = 0;
    if (year >= 1970) {
        days = (year - 1969) / 4;
        for (int century = 2100; year > century; century += 100)
            days -= century % 400 != 0 ? 1 : 0;
    } else {
        days = -((1972 - year) / 4);
        for (int century = 1900; year < 1901 && year <= century; century -= 100)
            days += century % 400 != 0 ? 1 : 0;
    }
    return days;
}

std::int64_t utcSeconds(const TimeFields &fields, unsigned int &error)
{
    constexpr int kSecondsPerYear = 31536000;
    // Deliberate: this product wraps in 32 bits.
    const auto years = static_cast<std::int32_t>(static_cast<std::uint32_t>(fields.year - 1970) *
                                                 static_cast<std::uint32_t>(kSecondsPerYear));
    const std::int64_t days = fields.day - 1 + daysBeforeMonth(fields.year, fields.month);
    const std::int64_t seconds = fields.second + (fields.minute - fields.offsetMinutes) * 60 +
                                 fields.hour * 3600 + days * kSecondsPerDay + years +
                                 leapDays(fields.year) * kSecondsPerDay;
    const bool inRange = fields.year >= 1970 ? seconds >= 0 : seconds < 0;
    error = inRange ? ASN_TIME_OK : ASN_TIME_RANGE;
    return inRange ? seconds : 0;
}

std::int64_t localSeconds(const TimeFields &fields, unsigned int &error)
{
    std::tm time = {};
    time.tm_year = fields.year - 1900;
    time.tm_mon = fields.month - 1;
    time.tm_mday = fields.day;
    time.tm_hour = fields.hour;
    time.tm_min = fields.minute;
    time.tm_sec = fields.second;
    time.tm_isdst = -1;
    const std::time_t seconds = std::mktime(&time);
    error = seconds == -1 ? ASN_TIME_RANGE : ASN_TIME_OK;
    return seconds == -1 ? 0 : seconds;
}

// There is always room for one.
void appendArc(char *&end, std::int32_t arc)
{
    constexpr int kMostCharacters = 11;
    end = std::to_chars(end, end + kMostCharacters, arc).ptr;
}

// Base 128, most significant group first, all but the last octet with the high bit.
void appendSubidentifier(std::vector<unsigned char> &octets, unsigned long value)
{
    int shift = 0;
    while (value >> shift >= 128)
        shift += 7;
    for (; shift >= 0; shift -= 7)
        octets.push_back(
            static_cast<unsigned char>((value >> shift & 0x7F) | (shift > 0 ? 0x80 : 0)));
}

} // namespace

int mypint(const char **cursor, int digits, int minimum, int maximum, int *error)
{
    std::uint32_t sum = 0; // more than nine digits wrap
    for (int i = 0; i < digits; ++i, ++*cursor) {
        if (!isDigit(**cursor)) {
            *error = 1;
            return 0;
        }
        sum = sum * 10 + static_cast<std::uint32_t>(**cursor - '0');
    }
    const auto value = static_cast<std::int32_t>(sum);
    if (value < minimum || value > maximum)
        *error = 1;
    return value;
}

long long ASNGetTime(const stASN_BLOCK_HEADER *leaf, unsigned int *error)
{
    unsigned int ownError = 0;
    unsigned int &code = error ? *error : ownError;
    code = ASN_TIME_MALFORMED;
    if (!leaf || (leaf->tag != ASN_TAG_UTC_TIME && leaf->tag != ASN_TAG_GENERALIZED_TIME) ||
        leaf->contentLength > ASN_MAX_TIME_OCTETS)
        return 0;
    char text[ASN_MAX_TIME_OCTETS + 1] = {};
    if (leaf->contentLength > 0)
        std::memcpy(text, leaf->content, leaf->contentLength);
    TimeFields fields;
    if (!readFields(text, leaf->tag == ASN_TAG_GENERALIZED_TIME, fields))
        return 0;
    return fields.isLocal ? localSeconds(fields, code) : utcSeconds(fields, code);
}

int ASNGetOIDName(const unsigned char *content, unsigned int length, char *output,
                  unsigned int *outputLength)
{
    if (!outputLength || !content || length < 2)
        return 0;
    constexpr unsigned int kLongestArc = 12; // with its dot
    char text[ASN_MAX_OID_TEXT + kLongestArc];
    char *end = text;
    appendArc(end, content[0] / 40);
    *end++ = '.';
    appendArc(end, content[0] % 40);
    std::uint32_t value = 0;
    for (unsigned int i = 1; i < length; ++i) {
        value = value * 128 + (content[i] & 0x7F);
        if (content[i] & 0x80)
            continue;
        *end++ = '.';
        appendArc(end, static_cast<std::int32_t>(value));
        if (end > text + ASN_MAX_OID_TEXT)
            return 0;
        value = 0;
    }
    const auto size = static_cast<unsigned int>(end - text);
    if (!output || *outputLength < size)
        return 1;
    std::memcpy(output, text, size);
    output[size] = '\0';
    *outputLength = size;
    return 1;
}

int ASNGetOIDData(const char *text, unsigned char *output, unsigned int *outputLength)
{
    if (!text || (!output && !outputLength))
        return 0;
    std::vector<unsigned char> octets;
    long first = 0;
    for (int component = 0;; ++component) {
        const std::size_t digits = std::strspn(text, "0123456789");
        const long value = std::strtol(text, nullptr, 10); // of what is no number it isn't asked
        text += digits;
        if (*text != '.' && *text != '\0')
            return 0;
        if (component == 0)
            first = value;
        else if (component == 1)
            octets.push_back(static_cast<unsigned char>(static_cast<unsigned long>(first) * 40 +
                                                        static_cast<unsigned long>(value)));
        else if (value > 0)
            appendSubidentifier(octets, static_cast<unsigned long>(value));
        if (octets.size() > ASN_MAX_OID_OCTETS)
            return 0;
        if (*text++ == '\0')
            break;
    }
    if (!output || !outputLength || *outputLength < octets.size())
        return 1;
    if (!octets.empty())
        std::memcpy(output, octets.data(), octets.size());
    *outputLength = static_cast<unsigned int>(octets.size());
    return 1;
}

int ASNGetBitStringData(const stASN_BLOCK_HEADER *leaf, stASN_BIT_STRING *record)
{
    if (!leaf || !record || leaf->tag != ASN_TAG_BIT_STRING || leaf->contentLength == 0)
        return 0;
    const unsigned int length = leaf->contentLength - 1;
    auto *data = static_cast<unsigned char *>(std::malloc(length > 0 ? length : 1));
    if (!data)
        return 0;
    std::memcpy(data, leaf->content + 1, length);
    *record = {leaf->content[0], length, data};
    return 1;
}

int ASNSetBitStringDataEx(stASN_BLOCK_HEADER *leaf, const stASN_BIT_STRING *record)
{
    if (!leaf || !record || leaf->tag != ASN_TAG_BIT_STRING)
        return 0;
    return ASNSetBitStringData(leaf, record->data, record->length, record->unusedBits);
}

int ASNSetBitStringData(stASN_BLOCK_HEADER *leaf, const unsigned char *data, unsigned int length,
                        unsigned char unusedBits)
{
    if (!leaf || leaf->tag != ASN_TAG_BIT_STRING || (!data && length > 0))
        return 0;
    const unsigned int size = length + 1;
    if (size == 0)
        return 0;
    auto *content = static_cast<unsigned char *>(std::malloc(size));
    if (!content)
        return 0;
    content[0] = unusedBits;
    if (length > 0)
        std::memcpy(content + 1, data, length);
    const int stored = ASNSetBlockData(leaf, content, size);
    std::free(content);
    return stored;
}
