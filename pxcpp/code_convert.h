#pragma once

// Conversions between UTF-8, 32-bit code points, byte-swapped UCS-2 and GBK.
//
// UTF-8 and GBK texts are octets; a size or length of theirs counts octets, one of code points
// counts units. UTF-8 goes up to the six-octet form, 0x7FFFFFFF; surrogates are code points like
// any other. Every buffer is the caller's and none may overlap. Nothing is reported but by the
// count returned: 0, or a short one, is a failure. All functions are reentrant.
//
// The array functions test the output's size after a character was written, not before: a caller
// allows for what the function's comment says lies beyond the size.

/// Writes one code point as UTF-8, without a terminator, and returns the octets written, 1 to 6; 0
/// and nothing written above 0x7FFFFFFF. A negative value is written as its low seven bits.
/// `pOutput` must have room for six octets: the size is not looked at. A null one ends the program
/// with an assertion, in release builds too.
int code_unicode_to_utf8_one(long unicode, char *pOutput, int outputSize);

/// Turns `count` big-endian 16-bit units (the content of a BMPString) into UTF-8 and returns the
/// octets written. The units need no alignment. A zero unit is a character like any other. Stops
/// early when more than `outputSize` octets are written, at most three beyond it; a terminator
/// follows when there is room for it within `outputSize`. Returns 0, with `output` untouched, when
/// a pointer is null or a number is below 1.
int code_unicode_to_utf8_reversebyte_BYTE(const void *input, int count, char *output,
                                          int outputSize);

/// The same for 32-bit slots, of which the first two octets in memory hold the big-endian unit. It
/// also ends before a slot that is zero in all its octets; when the first one is, it writes a
/// terminator and returns 0. Writes the input's address and that of each slot to the debug stream.
int code_unicode_to_utf8_reversebyte(const unsigned int *input, int count, char *output,
                                     int outputSize);
