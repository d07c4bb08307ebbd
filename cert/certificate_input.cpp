#include "cert/certificate_input.h"

#include "asn/octet_view.h"
#include "asn/pxasn.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace certificate_input {
namespace {

constexpr const char *kBeginLine = "-----BEGIN CERTIFICATE-----";
constexpr const char *kEndLine = "-----END CERTIFICATE-----";

// In place: what is no base64 is passed over.
QByteArray decoded(QByteArray base64)
{
    return QByteArray::fromBase64Encoding(std::move(base64)).decoded;
}

// Octets of the SEQUENCE that the octets begin with; 0 when there is none that fits.
unsigned int lengthOfSequence(const QByteArray &octets)
{
    if (!octets.startsWith(ASN_TAG_SEQUENCE))
        return 0;
    return ASNCalcBlockLength(reinterpret_cast<const unsigned char *>(octets.constData()),
                              static_cast<unsigned int>(octets.size()));
}

bool isOneSequence(const QByteArray &octets)
{
    return !octets.isEmpty() &&
           lengthOfSequence(octets) == static_cast<unsigned int>(octets.size());
}

bool isBase64Character(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '/' || c == '=';
}

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Appends the line, without white space around it, if it is base64.
void appendBase64(QByteArray &base64, const char *begin, const char *end)
{
    begin = std::find_if_not(begin, end, isSpace);
    while (end != begin && isSpace(end[-1]))
        --end;
    if (std::all_of(begin, end, isBase64Character))
        base64.append(begin, static_cast<int>(end - begin));
}

// Everything but armour counts as base64, wherever it stands in the text.
QByteArray decodedWithoutArmour(const QByteArray &text)
{
    QByteArray base64(text.constData(), text.size());
    base64.replace("-", "");
    base64.replace("BEGIN CERTIFICATE", "");
    base64.replace("END CERTIFICATE", "");
    return decoded(std::move(base64));
}

// The part from where the words first stand; none where they don't. The C library's search looks at
// one octet in a score, the toolkit's at each.
OctetView partFrom(OctetView text, const char *words)
{
    const void *found = ::memmem(text.data, text.size, words, std::strlen(words));
    if (!found)
        return {};
    const auto *begin = static_cast<const unsigned char *>(found);
    return {begin, static_cast<unsigned int>(text.data + text.size - begin)};
}

// What stands between the armour's first line and its last one; empty without them.
QByteArray armouredText(const QByteArray &text)
{
    const OctetView armoured = partFrom(viewOf(text), kBeginLine);
    if (!armoured.data)
        return {};
    const auto line = static_cast<unsigned int>(std::strlen(kBeginLine));
    const OctetView body = {armoured.data + line, armoured.size - line};
    const OctetView behind = partFrom(body, kEndLine);
    return behind.data ? QByteArray::fromRawData(reinterpret_cast<const char *>(body.data),
                                                 static_cast<int>(behind.data - body.data))
                       : QByteArray();
}

// The text up to the first NUL; it lives as long as the octets.
QByteArray textOf(const QByteArray &octets)
{
    const auto end = octets.indexOf('\0');
    return end < 0 ? octets : QByteArray::fromRawData(octets.constData(), end);
}

} // namespace

QByteArray certificateOctets(QByteArray fileContent)
{
    const QByteArray text = textOf(fileContent);
    if (!partFrom(viewOf(text), "BEGIN CERTIFICATE").data)
        return std::move(fileContent += '\0');
    QByteArray octets = decodedWithoutArmour(text);
    if (isOneSequence(octets))
        return octets;
    QByteArray block = firstArmouredBlock(text);
    // A comment before the armour may begin with a SEQUENCE by chance, and so may a block that lost
    // a line for the blank in it; a certificate is longer than either.
    const bool isBlock = isOneSequence(block) || lengthOfSequence(block) > lengthOfSequence(octets);
    return isBlock ? block : octets;
}

void open(PXAsn &document, const QByteArray &certificate)
{
    document.open(certificate);
    if (document.checkTag(ASN_TAG_SEQUENCE))
        return;
    const QByteArray block = firstArmouredBlock(certificate);
    if (block.isEmpty())
        return;
    document.close();
    document.open(block);
}

QByteArray firstArmouredBlock(const QByteArray &text)
{
    const QByteArray body = armouredText(text);
    QByteArray base64;
    for (auto line = body.begin(); line != body.end();) {
        const auto end = std::find_if(line, body.end(), isLineEnd);
        appendBase64(base64, line, end);
        line = std::find_if_not(end, body.end(), isLineEnd);
    }
    return decoded(std::move(base64));
}

} // namespace certificate_input
