#pragma once

#include <cstdint>
#include <QByteArray>
#include <QString>

// Base64 (RFC 4648, section 4) without line breaks, by a table of 65 characters: the 64 digits by
// value, then the padding character.
//
// The PXBase64 functions use one table for the whole process. Setting it is not synchronised with
// its use; otherwise all functions are reentrant. They tell a failure by a line on standard output
// as well; the Ex functions, which are given the table, print nothing. Buffers returned are the
// caller's, to be released as each comment says; a length is written on success only.

/// Makes `table` the current one and returns it; null restores "A-Za-z0-9+/=". The table is not
/// copied: it must outlive its use, and its characters may be changed in place. The default table
/// is writable, too.
char *PXBase64SetTableCode(const char *table);

/// Encodes `length` octets into zero-terminated text, released with `free`. Null for a null `data`,
/// when there is no memory, and, without a line, for a length of 0.
char *PXBase64Encode(const void *data, std::uint64_t length);

/// The first position of a character in the current table, 0 to 64, or 255.
unsigned char GetTableIndex(char character);

/// Decodes zero-terminated text into octets, released with `free`; a zero octet follows them. An
/// empty text gives an empty buffer. Null for a null text, when there is no memory, and when the
/// length is no multiple of four or any character, a line break say, is not in the current table.
///
/// `length`, which may be null, receives the number of octets. Padding counts in the last group
/// only; elsewhere it stands for zero bits and is not noticed.
unsigned char *PXBase64Decode(const char *text, std::uint64_t *length);

/// Encodes an array; a null string for an empty one. Characters of the table are Latin-1.
QString PXBase64EncodeEx(QByteArray data);

/// Decodes `length` characters into a buffer of `length` octets (one, if below 1), released with
/// `delete[]`. Null for a null text or table and when there is no memory.
///
/// The character at `length` is read as well, so the text must reach that far: a terminator is what
/// belongs there. A character that is not in the table ends its group of four as padding does, and
/// decoding goes on with the next group. `count`, which may be null, receives the number of octets
/// decoded, none for a length below 1.
unsigned char *DeCodeBase64Ex(const char *text, int length, const char *table, int *count);

/// Encodes `length` octets into zero-terminated text, released with `free`; a length below 1 gives
/// an empty one. Null for a null `data` or table and when there is no memory.
char *EnCodeBase64Ex(const void *data, int length, const char *table);
