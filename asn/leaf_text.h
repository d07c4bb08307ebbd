#pragma once

#include <QByteArray>
#include <QString>

/// The forms in which a flattened leaf (`PXAsnBlock::printData_ex`) is said, each with its way
/// back. Who flattens and who reads what was flattened both find the form here.
namespace leaf_text {

/// What may be either takes the form of characters from one octet more on: a shorter one is a
/// number rather than a name.
constexpr int kMostHexOctets = 3;

// Writing. Nothing stands before the first octet or behind the last; no octets give an empty text.

/// Two upper-case digits an octet and a blank between octets: "04 1F".
QString hex(const QByteArray &octets);
/// A blank between characters, each octet a Latin-1 one: "a b c".
QString characters(const QByteArray &octets);
/// `hex` up to `kMostHexOctets`, `characters` above.
QString hexOrCharacters(const QByteArray &octets);

// Reading back.

/// What `characters` wrote, as Latin-1 text without its blanks. Any other text as it is, unless it
/// happens to have a blank at every second place.
QString closedUp(const QString &text);
/// The octets of what `hexOrCharacters` wrote, in the form of `hex`. Any other text is judged by
/// its length alone: one of even length, or of less than seven characters, comes back as it is.
QString asHex(const QString &text);
/// The first two octets of flags of a BIT STRING (X.690, 8.6) whose content, the unused-bits octet
/// included, `hex` wrote: the first in the low octet of the result, the second above it. An octet
/// that is missing counts as 0; what is no digit is passed over.
int flags(const QString &bitString);

} // namespace leaf_text
