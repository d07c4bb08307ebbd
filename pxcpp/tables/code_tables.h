#pragma once

#include <cstdint>

// The data behind code_convert.cpp, written by tools/generate_codepages.py. C1 controls and
// private-use characters are left out.
namespace code_tables {

/// A character and its code, or the other way round.
struct pair
{
    std::uint16_t from;
    std::uint16_t to;
};

// Double-byte pages, sorted by `from`. The last pair of each array, at least, is a filler
// (0xFFFF, 0) past the real ones, which the search takes as its upper bound and never looks at.
extern const pair unicode_to_932[7390];
extern const pair unicode_from_932[7390];
extern const pair unicode_to_936[21793];
extern const pair unicode_from_936[21793];
extern const pair unicode_to_949[17049];
extern const pair unicode_from_949[17049];
extern const pair unicode_to_950[13504];
extern const pair unicode_from_950[13504];

/// The single-byte pages by number, 437 first, ended by 0.
extern const std::uint16_t oem_pages[18];
/// In the same order, the characters of the octets 0x80 to 0xFF; 0 where there is none.
extern const std::uint16_t oem_to_unicode[17][128];

// Simple upper-case mappings below U+1000 and from there on, as records of 16-bit words: the first
// character; a command in the high octet and the number of characters in the low one; for command
// 0, that many upper-case forms. Sorted, ended by a first character of 0.
extern const std::uint16_t upper_case_low[];
extern const std::uint16_t upper_case_high[];

} // namespace code_tables
