#include "asn/node_values.h"

#include "asn/asn_values.h"
#include "asn/octet_view.h"
#include "pxcpp/code_convert.h"
#include "util/texts.h"

#include <cstring>
#include <vector>

namespace node_values {
namespace {

QString latin1(const QByteArray &octets)
{
    return QString::fromLatin1(octets.constData(), octets.size());
}

QString identifierText(const QByteArray &content)
{
    const OctetView octets = viewOf(content);
    char text[ASN_MAX_OID_TEXT + 1];
    unsigned int length = sizeof text;
    if (!ASNGetOIDName(octets.data, octets.size, text, &length))
        return {};
    return texts::nameOfIdentifier(QLatin1String(text, static_cast<int>(length)));
}

// The converters may write a whole character beyond the size they are told.
constexpr int kConverterOverrun = 6;

QString textOfBmp(const QByteArray &content)
{
    const int length = static_cast<int>(content.size());
    const int size = length * 2 + 1;
    QByteArray utf8(size + kConverterOverrun, '\0');
    const int written =
        code_unicode_to_utf8_reversebyte_BYTE(content.constData(), length / 2, utf8.data(), size);
    return QString::fromUtf8(utf8.constData(), written);
}

QByteArray octetsOfBmp(const QByteArray &content)
{
    const int length = static_cast<int>(content.size());
    const int units = length / 2;
    std::vector<unsigned int> widened(static_cast<std::size_t>(units) + 1, 0);
    for (std::size_t i = 0; i + 1 < widened.size(); ++i)
        std::memcpy(&widened[i], content.constData() + 2 * i, 2);
    const int size = length * 2 + 1;
    QByteArray utf8(size + kConverterOverrun, '\0');
    utf8.truncate(code_unicode_to_utf8_reversebyte(widened.data(), units, utf8.data(), size));
    return utf8;
}

int tagOf(const stASN_BLOCK_HEADER *node)
{
    return node ? node->tag : ASN_TAG_ANY;
}

} // namespace

QByteArray content(const stASN_BLOCK_HEADER *node)
{
    return copyOf(viewOf(contentView(node)));
}

QByteArray contentView(const stASN_BLOCK_HEADER *node)
{
    if (!node || ASNIsConstructed(node->tag) || node->rawFlag != 1 || !node->content ||
        node->contentLength > kMostOctets)
        return {};
    return QByteArray::fromRawData(reinterpret_cast<const char *>(node->content),
                                   static_cast<int>(node->contentLength));
}

QString text(const stASN_BLOCK_HEADER *node)
{
    const QByteArray octets = contentView(node);
    switch (tagOf(node)) {
    case ASN_TAG_OBJECT_IDENTIFIER:
        return identifierText(octets);
    case ASN_TAG_BIT_STRING:
        return latin1(octets.mid(1));
    case ASN_TAG_UTF8_STRING:
        return QString::fromUtf8(octets.constData(), octets.size());
    case ASN_TAG_BMP_STRING:
        return textOfBmp(octets);
    default:
        return latin1(octets);
    }
}

QByteArray octets(const stASN_BLOCK_HEADER *node)
{
    switch (tagOf(node)) {
    case ASN_TAG_BIT_STRING:
        return contentView(node).mid(1);
    case ASN_TAG_BMP_STRING:
        return octetsOfBmp(contentView(node));
    default:
        return content(node);
    }
}

int number(const stASN_BLOCK_HEADER *node)
{
    const QByteArray octets = contentView(node);
    if (tagOf(node) != ASN_TAG_INTEGER)
        return 0;
    if (octets.size() != 1 && octets.size() != 2 && octets.size() != 4)
        return 0;
    unsigned int value = 0;
    for (auto octet = octets.crbegin(); octet != octets.crend(); ++octet)
        value = value << 8 | static_cast<unsigned char>(*octet);
    return static_cast<int>(value);
}

} // namespace node_values
