#include "asn/pxasn.h"
#include "cert/certificate_input.h"
#include "fuzz_application.h"
#include "fuzz_target.h"
#include "second_reading.h"

#include <cstdio>
#include <QCoreApplication>

namespace {

const QByteArray kWords = "BEGIN CERTIFICATE";

QByteArray armoured(const QByteArray &base64, const char *lineEnd)
{
    const QByteArray dashes(5, '-');
    QByteArray text = dashes + kWords + dashes + lineEnd;
    for (int i = 0; i < base64.size(); i += 64)
        text += base64.mid(i, 64) + lineEnd;
    return text + dashes + "END CERTIFICATE" + dashes + lineEnd;
}

bool isOneSequence(const QByteArray &octets)
{
    const SecondReading reading = SecondReader(octets).root();
    return reading.tag == ASN_TAG_SEQUENCE && reading.size == octets.size();
}

// All but armour and white space, as base64: what a file that holds nothing else stands for.
QByteArray decodedWhole(const QByteArray &text)
{
    QString base64 = QString::fromLatin1(text); // which has no NUL
    for (const char *armour : {"-", "BEGIN CERTIFICATE", "END CERTIFICATE"})
        base64.remove(QLatin1String(armour));
    return QByteArray::fromBase64(base64.simplified().remove(QLatin1Char(' ')).toLatin1());
}

void requireOctetsAreExpected(const QByteArray &content)
{
    const QByteArray octets = certificate_input::certificateOctets(content);
    const QByteArray text = content.left(static_cast<int>(qstrnlen(content, uint(content.size()))));
    if (!text.contains(kWords)) {
        require(octets == content + '\0');
        return;
    }
    const QByteArray whole = decodedWhole(text);
    const QByteArray block = certificate_input::firstArmouredBlock(text);
    require(octets.size() <= text.size());
    require(octets == whole || octets == block);
    require(octets == whole || !isOneSequence(whole));
    require(octets == block || isOneSequence(whole) || !isOneSequence(block));
}

// However its base64 is broken into lines, and whatever follows it, armour gives back what it
// holds.
void requireArmourGivesBack(const QByteArray &der)
{
    const QByteArray base64 = der.toBase64();
    for (const char *lineEnd : {"\n", "\r\n", "\r", "\n\n"}) {
        const QByteArray text = armoured(base64, lineEnd);
        require(certificate_input::firstArmouredBlock(text) == der);
        if (!isOneSequence(der))
            continue;
        require(certificate_input::certificateOctets(text) == der);
        require(certificate_input::certificateOctets(text + '\0' + text) == der);
    }
}

// What is opened begins with the element that a second reading finds, if that finds a SEQUENCE.
void requireOpensTheSame(const QByteArray &octets)
{
    PXAsn document(nullptr);
    certificate_input::open(document, octets);
    const SecondReading reading = SecondReader(octets).root();
    if (reading.tag != ASN_TAG_SEQUENCE)
        return;
    require(document.checkTag(ASN_TAG_SEQUENCE));
    require(document.getChildCount() == static_cast<int>(reading.children.size()));
    for (int i = 0; i < document.getChildCount(); ++i)
        require(document.getChild(i, reading.children[std::size_t(i)].tag));
}

} // namespace

// Files as users have them: DER, PEM, base64, and text around any of these.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static std::FILE *const nowhere = std::freopen("/dev/null", "w", stdout);
    require(nowhere);
    startApplication<QCoreApplication>("fuzz_input");
    const QByteArray content(reinterpret_cast<const char *>(data), static_cast<int>(size));
    requireOctetsAreExpected(content);
    requireArmourGivesBack(content);
    requireOpensTheSame(content);
    requireOpensTheSame(certificate_input::certificateOctets(content));
    return 0;
}
