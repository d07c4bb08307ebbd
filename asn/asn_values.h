#pragma once

#include "asn/asn_block.h"

/// Values of DER contents: times, object identifiers and bit strings. Results are 1 for success and
/// 0 for failure, after which outputs are as they were where nothing else is said; nothing is
/// printed. Views of a content are borrowed for the call. Time is linear in the content.

/// A time's content at most: the longest that means something has about 24 octets, fractions of a
/// second can be added without end.
constexpr unsigned int ASN_MAX_TIME_OCTETS = 48;
/// Characters of an identifier's dotted text, and octets of its encoding, at most: the longest in
/// use have about half of either.
constexpr unsigned int ASN_MAX_OID_TEXT = 99;
constexpr unsigned int ASN_MAX_OID_OCTETS = 96;

/// Error codes of `ASNGetTime`.
enum ASN_TIME_ERROR : unsigned int { ASN_TIME_OK = 0, ASN_TIME_MALFORMED = 1, ASN_TIME_RANGE = 2 };

/// A BIT STRING's value. `ASNGetBitStringData` allocates `data`, and the caller frees it with
/// `free`; the setters only read it.
struct stASN_BIT_STRING
{
    unsigned char unusedBits; ///< as encoded, neither checked nor applied to the last octet
    unsigned int length;      ///< octets of `data`
    unsigned char *data;
};

/// Seconds since 1970-01-01 00:00:00 UTC of a time, 0 on any error. `error`, which may be null, is
/// always set.
///
///     UTCTime         (X.680, 47): YYMMDDhhmm[ss](Z | (+|-)hhmm)
///     GeneralizedTime (X.680, 46): YYYYMMDDhhmm[ss][fraction](Z | (+|-)hhmm | nothing: local time)
///
/// YY below 50 is 20YY. A zone reaches to 12:59. Fractions are passed over, a day is not held
/// against its month, and the text ends at a NUL. Malformed are all other tags, and contents of
/// more than `ASN_MAX_TIME_OCTETS`. Out of range is what the sum's sign, or `mktime`, refuses.
/// Deliberate: the seconds of whole years are computed in 32 bits, so years from 2039 on and before
/// 1902 wrap.
long long ASNGetTime(const stASN_BLOCK_HEADER *leaf, unsigned int *error);

/// The value of exactly `digits` decimal digits at the cursor, which moves past each digit read.
/// `*error` becomes 1 for another character, where the cursor stays and the result is 0, and for a
/// value outside `minimum` to `maximum`, both inclusive, which is returned all the same. It is
/// never cleared.
int mypint(const char **cursor, int digits, int minimum, int maximum, int *error);

/// Dotted text of an OBJECT IDENTIFIER's content (X.690, 8.19). `*outputLength` holds the output's
/// capacity and receives the text's length without its terminator; when it is less than that, and
/// when `output` is null, nothing is written and the result is 1. `output` needs room for the
/// terminator as well. Texts of more than `ASN_MAX_OID_TEXT` characters and contents below two
/// octets are refused. Arcs wrap in 32 bits and show as signed; one that the content's end cuts off
/// is left out.
/// Deliberate: the first octet alone gives the first two arcs.
int ASNGetOIDName(const unsigned char *content, unsigned int length, char *output,
                  unsigned int *outputLength);

/// The reverse, from zero-terminated text. `*outputLength` holds the capacity and receives the
/// octets written; when it is less than those, or when `output` or `outputLength` is null, nothing
/// is written and the result is 1. Refused: null text, both outputs null, a component that is no
/// number, more than `ASN_MAX_OID_OCTETS`. An empty component counts as 0, and a text of one
/// component has no octets. Deliberate: an arc of 0 after the second is dropped.
int ASNGetOIDData(const char *text, unsigned char *output, unsigned int *outputLength);

/// Takes a BIT STRING leaf apart (X.690, 8.6): the unused-bits octet, and the octets behind it, as
/// a copy that is the caller's. 0 for anything else, for an empty content and when memory is
/// exhausted.
int ASNGetBitStringData(const stASN_BLOCK_HEADER *leaf, stASN_BIT_STRING *record);

/// Stores a bit string in a BIT STRING leaf, whose old content ends. 0 for anything else, for null
/// octets of a length above 0 and when memory is exhausted.
int ASNSetBitStringDataEx(stASN_BLOCK_HEADER *leaf, const stASN_BIT_STRING *record);
int ASNSetBitStringData(stASN_BLOCK_HEADER *leaf, const unsigned char *data, unsigned int length,
                        unsigned char unusedBits);
