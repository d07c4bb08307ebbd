#include "cert/certificate_input.h"

#include "asn/pxasn.h"

#include <algorithm>
#include <QList>
#include <QString>

namespace certificate_input {
namespace {

constexpr const char *kBeginLine = "-----BEGIN CERTIFICATE-----";
constexpr const char *kEndLine = "-----END CERTIFICATE-----";

QByteArray decodeBase64(const QByteArray &text)
{
    return QByteArray::fromBase64(text);
}

bool isOneSequence(const QByteArray &octets)
{
    return octets.startsWith(ASN_TAG_SEQUENCE) &&
           ASNCalcBlockLength(reinterpret_cast<const unsigned char *>(octets.constData()),
                              static_cast<unsigned int>(octets.size())) ==
               static_cast<unsigned int>(octets.size());
}

bool isBase64Character(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '/' || c == '=';
}

// Everything but armour and white space counts as base64, wherever it stands in the file.
QByteArray decodeWithoutArmour(const QByteArray &text)
{
    QString base64 = QString::fromLatin1(text.constData(), text.size());
    base64.remove(QLatin1Char('-'));
    base64.remove(QLatin1String("BEGIN CERTIFICATE"));
    base64.remove(QLatin1String("END CERTIFICATE"));
    base64 = base64.simplified();
    base64.remove(QLatin1Char(' '));
    return decodeBase64(base64.toLatin1());
}

} // namespace

QByteArray certificateOctets(const QByteArray &fileContent)
{
    const QByteArray text = fileContent.split('\0').first();
    if (!text.contains("BEGIN CERTIFICATE"))
        return fileContent + '\0';
    QByteArray octets = decodeWithoutArmour(text);
    if (isOneSequence(octets))
        return octets;
    QByteArray block = firstArmouredBlock(text);
    return isOneSequence(block) ? block : octets;
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
    const auto begin = text.indexOf(kBeginLine);
    const auto end = begin < 0 ? -1 : text.indexOf(kEndLine, begin);
    if (end < 0)
        return {};
    const auto bodyStart = begin + static_cast<int>(qstrlen(kBeginLine));
    QByteArray base64;
    const QList<QByteArray> lines = text.mid(bodyStart, end - bodyStart).split('\n');
    for (const QByteArray &untrimmed : lines) {
        const QByteArray line = untrimmed.trimmed();
        if (std::all_of(line.begin(), line.end(), isBase64Character))
            base64 += line;
    }
    return decodeBase64(base64);
}

} // namespace certificate_input
