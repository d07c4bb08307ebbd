#pragma once

// Conversions between UTF-8, 32-bit code points, byte-swapped UCS-2 and GBK, and the code pages
// behind them.
//
// UTF-8 and GBK texts are octets: a size or length of theirs counts octets, while one of code
// points counts units. UTF-8 goes up to the six-octet form, 0x7FFFFFFF; surrogates are code points
// like any other. Buffers are the caller's and do not overlap. Failures are told by the count
// returned alone: 0, or a short one. All functions are reentrant.
//
// A size is tested after a character was written, not before: allow for what a function's comment
// says lies beyond it.

/// The length of a UTF-8 sequence by its first octet, 1 to 6. A continuation octet counts as a
/// sequence of one; 0xFE and 0xFF count as six.
int code_get_utf8_byte_size(unsigned char first);

/// Counts the sequences of a zero-terminated text: each adds 1 to counters[0] and 1 to the counter
/// of its length. The counters are not cleared. A sequence cut by the terminator counts in full.
/// Does nothing for a null text.
void code_get_utf8_length(const char *utf8, int counters[7]);

/// Writes one code point as UTF-8, without a terminator, and returns the octets written, 1 to 6;
/// 0, and nothing written, above 0x7FFFFFFF. A negative value is written as its low seven bits.
/// `pOutput` must have room for six octets: the size is not looked at. A null one ends the program
/// with an assertion, in release builds too.
int code_unicode_to_utf8_one(long unicode, char *pOutput, int outputSize);

/// Reads one UTF-8 sequence and returns the octets consumed; 0, with the result 0, for a malformed
/// one. Reading stops at the first octet that is not a continuation, so a cut text is safe. The
/// forms are not told apart: an overlong one is read. A null pointer ends the program with an
/// assertion, in release builds too.
///
/// Peculiarities that are part of the contract: a sequence of two is refused when its second octet
/// is above 0x9F (U+00E9, C3 A9, is refused); a sequence of five has bits 24 and 25 in 30 and 31;
/// a sequence of six takes bits 8 to 15 from its fifth and sixth octets. So what comes back is what
/// was written below U+0080, for those of U+0080 to U+07FF without bit 0x20, and from U+0800 to
/// 0xFFFFFF.
int code_utf8_to_unicode_one(const char *pInput, long *unicode);

/// Turns code points up to a zero unit into UTF-8 and returns the octets written. Ends early once
/// more than `outputSize` octets are written, at most six beyond it. A terminator, not counted,
/// follows where it fits within `outputSize`. Units above 0x7FFFFFFF are skipped. Returns 0, with
/// `output` untouched, when a pointer is null or the size is below 1.
int code_unicode_to_utf8(const unsigned int *input, char *output, int outputSize);

/// Turns zero-terminated UTF-8 into code points and returns the units written: up to `capacity` + 1
/// of them. A terminating zero unit, not counted, follows where it fits within `capacity`. A
/// malformed sequence is never got over: the rest of the output, `capacity` + 1 units in all, is
/// zero units that count. Returns 0, with `output` untouched, when a pointer is null or the
/// capacity is below 1.
int code_utf8_to_unicode(const char *input, unsigned int *output, int capacity);

/// Turns `count` big-endian 16-bit units (the content of a BMPString) into UTF-8 and returns the
/// octets written. The units need no alignment. A zero unit is a character like any other. Ends
/// early once more than `outputSize` octets are written, at most three beyond it. A terminator, not
/// counted, follows where it fits within `outputSize`. Returns 0, with `output` untouched, when a
/// pointer is null or a number is below 1.
int code_unicode_to_utf8_reversebyte_BYTE(const void *input, int count, char *output,
                                          int outputSize);

/// The same for 32-bit slots, of which the first two octets in memory hold the big-endian unit. It
/// ends before a slot that is zero as a whole, too. Writes the input's address, whatever the
/// arguments, and that of each slot to the debug stream.
int code_unicode_to_utf8_reversebyte(const unsigned int *input, int count, char *output,
                                     int outputSize);

/// Turns `count` code points into GBK and returns the octets written, up to twice the count. The
/// euro sign is the single octet 0x80; a character GBK does not have gives two zero octets. No
/// terminator. Returns 0 when a pointer is null or the count is below 1.
int code_unicode_to_gbk(const unsigned int *input, char *output, int count);

/// Turns `length` octets of GBK into code points and returns the units written, up to `length`. The
/// octet 0x80 is the euro sign and swallows the octet after it; a pair without a character gives a
/// zero unit, and so does a lead octet at the end. No terminator. Returns 0 when a pointer is null
/// or the length is below 1.
int code_gbk_to_unicode(const char *input, unsigned int *output, int length);

/// Turns zero-terminated UTF-8 of n octets into GBK and returns the octets written; no terminator.
/// `output` must have room for 2 * (3n + 1) octets, because what follows a malformed sequence is
/// zero octets up to 3n + 1 characters in all. Returns 0 when a pointer is null, for an empty text
/// and when there is no memory for 3n + 2 units (n too large for that included).
int code_utf8_to_gbk(const char *input, char *output);

/// Turns zero-terminated GBK into UTF-8 by the rules of `code_unicode_to_utf8` for `output` and its
/// size, and returns the octets written. A pair without a character ends the text. Returns 0 when a
/// pointer is null, the size is below 1, and when there is no memory for a unit an octet.
int code_gbk_to_utf8(const char *input, char *output, int outputSize);

/// The code of a character in a code page, or 0 when it has none or the page is unknown. Values
/// below 0x80 come back as they are, whatever the page. The pages: 437, 720, 737, 771, 775, 850,
/// 852, 855, 857, 860, 861, 862, 863, 864, 865, 866, 869, and with codes of one or two octets (the
/// lead octet is the high one) 932, 936, 949 and 950.
unsigned short ff_uni2oem(unsigned int character, unsigned short codePage);

/// The character of a code in a code page, or 0; the other direction of `ff_uni2oem`.
unsigned short ff_oem2uni(unsigned short code, unsigned short codePage);

/// The upper-case form of a character by Unicode's simple mapping, as of Unicode 5.0; the character
/// itself when it has none or is above 0xFFFF.
unsigned int ff_wtoupper(unsigned int character);
