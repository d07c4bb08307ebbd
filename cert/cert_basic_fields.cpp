#include "cert/c_pxcert.h"

#include "asn/leaf_text.h"
#include "asn/pxasn_element.h"
#include "cert/display_date.h"
#include "util/text_keys.h"
#include "util/texts.h"

#include <QDebug>

namespace {

bool fail(const char *field)
{
    qDebug("[PXCertificate::parseTBSCertificate] ...tbsCertificate %s fail", field);
    return false;
}

// The object layer has looked the identifier up in the OID section already.
QString translatedName(const PXAsnElement &identifier)
{
    return texts::raw(identifier.toString());
}

// A single text needs no copy, however long it is.
QString joined(const QStringList &texts, QLatin1String between)
{
    return texts.size() == 1 ? texts.first() : texts.join(between);
}

bool readTime(const PXAsnElement &element, QDateTime &time)
{
    constexpr int kUtcTimeLength = 13;
    constexpr int kGeneralizedTimeLength = 15;
    const QString text = element.toString();
    if (!text.endsWith(QLatin1Char('Z')))
        return false;
    if (element.checkTag(ASN_TAG_UTC_TIME) && text.size() == kUtcTimeLength)
        time = c_pxcert::fromUTCTime(text);
    else if (element.checkTag(ASN_TAG_GENERALIZED_TIME) && text.size() == kGeneralizedTimeLength)
        time = c_pxcert::fromGeneralizedTime(text);
    else
        return false;
    return true;
}

// A number of exactly two digits at `position`, or -1.
int twoDigits(const QString &text, int position)
{
    const ushort tens = text.at(position).unicode();
    const ushort ones = text.at(position + 1).unicode();
    const auto isDigit = [](ushort c) { return c >= '0' && c <= '9'; };
    return isDigit(tens) && isDigit(ones) ? (tens - '0') * 10 + (ones - '0') : -1;
}

// Deliberate: certificate times are UTC, but are read as a clock at UTC-8, so that they show the
// wall-clock time at UTC+8, eight hours later.
QDateTime eightHoursLater(int year, const QString &text, int monthPosition)
{
    constexpr int kSecondsWestOfUtc = -28800;
    const int p = monthPosition;
    const QDate date(year, twoDigits(text, p), twoDigits(text, p + 2));
    const QTime time(twoDigits(text, p + 4), twoDigits(text, p + 6), twoDigits(text, p + 8));
    // An invalid time of day would silently become midnight.
    if (!date.isValid() || !time.isValid())
        return {};
    return QDateTime(date, time, Qt::OffsetFromUTC, kSecondsWestOfUtc).toUTC();
}

} // namespace

bool c_pxcert::parseTBSCertificate_basedata(PXAsnBlock *document)
{
    return document && readBasicFields(PXAsnElement(document).getChild(0, ASN_TAG_SEQUENCE));
}

// TBSCertificate ::= SEQUENCE { version, serialNumber, signature, issuer, validity, subject,
// subjectPublicKeyInfo, ... }
bool c_pxcert::readBasicFields(const PXAsnElement &tbs)
{
    if (!tbs)
        return false;
    int next = 0;
    if (!readVersion(tbs, next))
        return false;
    const bool complete = readSerialNumber(tbs.getChild(next, ASN_TAG_INTEGER)) &&
                          readSignatureAlgorithm(tbs.getChild(next + 1, ASN_TAG_SEQUENCE)) &&
                          readName(tbs.getChild(next + 2, ASN_TAG_SEQUENCE), "issuer",
                                   text_keys::kIssuer, m_issuerCN, m_issuerO) &&
                          readValidity(tbs.getChild(next + 3, ASN_TAG_SEQUENCE)) &&
                          readName(tbs.getChild(next + 4, ASN_TAG_SEQUENCE), "subject",
                                   text_keys::kSubject, m_subjectCN, m_subjectO) &&
                          readPublicKey(tbs.getChild(next + 5, ASN_TAG_SEQUENCE));
    if (complete)
        qDebug("[PXCertificate::parseTBSCertificate] end");
    return complete;
}

// Version ::= INTEGER { v1(0), v2(1), v3(2) }, [0] EXPLICIT, absent in a v1 certificate.
bool c_pxcert::readVersion(const PXAsnElement &tbs, int &next)
{
    const PXAsnElement wrapper = tbs.getChild(next, ASN_TAG_VERSION);
    if (!wrapper) {
        fail("version");
        return true;
    }
    const PXAsnElement version = wrapper.getChild(0, ASN_TAG_INTEGER);
    if (!version)
        return fail("version2");
    m_version = version.toInt();
    // One more than the greatest number wraps.
    const int shown = static_cast<int>(static_cast<unsigned int>(m_version) + 1);
    add_node(texts::shown(text_keys::kVersion), QStringLiteral("V%1").arg(shown));
    ++next;
    return true;
}

// CertificateSerialNumber ::= INTEGER
bool c_pxcert::readSerialNumber(const PXAsnElement &serialNumber)
{
    if (!serialNumber)
        return fail("serialNumber");
    m_serialNumber = QString::fromLatin1(serialNumber.toByteArray().toHex());
    add_node(texts::shown(text_keys::kSerialNumber), m_serialNumber);
    return true;
}

// signature AlgorithmIdentifier
bool c_pxcert::readSignatureAlgorithm(const PXAsnElement &signature)
{
    const texts::AtOnce atOnce;
    if (!signature)
        return fail("signature");
    const PXAsnElement algorithm = signature.getChild(0, ASN_TAG_OBJECT_IDENTIFIER);
    if (!algorithm)
        return fail("signature2");
    m_signatureAlgorithm = translatedName(algorithm);
    add_node(texts::shown(text_keys::kSignatureAlgorithm), m_signatureAlgorithm);
    return true;
}

// Name ::= SEQUENCE OF SET OF AttributeTypeAndValue. Shown the other way round, so that the most
// specific attribute comes first.
bool c_pxcert::readName(const PXAsnElement &name, const char *field, QLatin1String rowKey,
                        QString &commonName, QString &organization)
{
    if (!name)
        return fail(field);
    QStringList lines;
    QStringList values;
    PXAsnElement relativeName;
    PXAsnElement attribute;
    for (PXAsnChildren names(name); names.next(relativeName);) {
        if (!relativeName.isOfType(ASN_TAG_SET))
            return fail("relativeDistinguishedName");
        for (PXAsnChildren attributes(relativeName); attributes.next(attribute);) {
            if (!attribute.isOfType(ASN_TAG_SEQUENCE))
                return fail("attributeTypeAndValue");
            QString line;
            QString value;
            if (!parseAttribute(attribute, line, value, commonName, organization))
                continue;
            line += QLatin1Char('\n');
            lines.prepend(line);
            values.prepend(value);
        }
    }
    m_rows.push_back({texts::shown(rowKey), joined(values, QLatin1String(",")),
                      joined(lines, QLatin1String("")), detail_node::BasicField});
    return true;
}

bool c_pxcert::parseTBSIssuer(PXAsnBlock *attribute, QString &line, QString &value)
{
    return parseAttribute(PXAsnElement(attribute), line, value, m_issuerCN, m_issuerO);
}

bool c_pxcert::parseTBSSubject(PXAsnBlock *attribute, QString &line, QString &value)
{
    return parseAttribute(PXAsnElement(attribute), line, value, m_subjectCN, m_subjectO);
}

// AttributeTypeAndValue ::= SEQUENCE { type OBJECT IDENTIFIER, value ANY }
bool c_pxcert::parseAttribute(const PXAsnElement &attribute, QString &line, QString &value,
                              QString &commonName, QString &organization)
{
    const texts::AtOnce atOnce;
    if (!attribute)
        return false;
    const PXAsnElement type = attribute.getChild(0, ASN_TAG_OBJECT_IDENTIFIER);
    if (!type)
        return fail("type");
    const QString name = translatedName(type);
    const PXAsnElement content = attribute.getChild(1, ASN_TAG_ANY);
    if (!content)
        return fail("value");
    value = texts::raw(content.toString());
    line = name + QLatin1String("= ") + value;
    if (name == QLatin1String("CN"))
        commonName = value;
    else if (name == QLatin1String("O"))
        organization = value;
    return true;
}

// Validity ::= SEQUENCE { notBefore Time, notAfter Time }. One time alone counts for nothing.
bool c_pxcert::readValidity(const PXAsnElement &validity)
{
    const texts::AtOnce atOnce;
    if (!validity)
        return fail("validity");
    const PXAsnElement notBefore = validity.getChild(0, ASN_TAG_ANY);
    if (!notBefore)
        return fail("notBefore");
    QDateTime start;
    if (!readTime(notBefore, start))
        return fail("notBeforeValue");
    const PXAsnElement notAfter = validity.getChild(1, ASN_TAG_ANY);
    if (!notAfter)
        return fail("notAfter");
    QDateTime end;
    if (!readTime(notAfter, end))
        return fail("notAfterValue");
    m_notBefore = start;
    m_notAfter = end;
    m_validFrom = display_date::shortText(m_notBefore);
    m_validTo = display_date::shortText(m_notAfter);
    add_node(texts::shown(text_keys::kValidFrom), m_validFrom);
    add_node(texts::shown(text_keys::kValidTo), m_validTo);
    return true;
}

QDateTime c_pxcert::fromUTCTime(const QString &text)
{
    constexpr int kLength = 13;
    constexpr int kPivot = 50;
    if (text.size() != kLength)
        return {};
    const int year = twoDigits(text, 0);
    return year < 0 ? QDateTime() : eightHoursLater(year + (year < kPivot ? 2000 : 1900), text, 2);
}

QDateTime c_pxcert::fromGeneralizedTime(const QString &text)
{
    constexpr int kLength = 15;
    if (text.size() != kLength)
        return {};
    const int century = twoDigits(text, 0);
    const int year = twoDigits(text, 2);
    return century < 0 || year < 0 ? QDateTime() : eightHoursLater(century * 100 + year, text, 4);
}

// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
bool c_pxcert::readPublicKey(const PXAsnElement &keyInfo)
{
    const texts::AtOnce atOnce;
    const PXAsnElement algorithm = keyInfo ? keyInfo.getChild(0, ASN_TAG_SEQUENCE) : PXAsnElement();
    if (!algorithm)
        return fail("subjectPublicKeyInfoAlgorithm");
    const PXAsnElement identifier = algorithm.getChild(0, ASN_TAG_OBJECT_IDENTIFIER);
    if (!identifier)
        return fail("subjectPublicKeyInfoAlgorithmOID1");
    m_publicKeyAlgorithm = translatedName(identifier);
    const PXAsnElement curve = algorithm.getChildCount() > 1
                                   ? algorithm.getChild(1, ASN_TAG_OBJECT_IDENTIFIER)
                                   : PXAsnElement();
    m_publicKeyParameter = curve ? translatedName(curve) : QString();
    const PXAsnElement key = keyInfo.getChild(1, ASN_TAG_BIT_STRING);
    if (!key)
        return fail("subjectPublicKey");
    m_publicKey = key.contentOctets();
    if (m_publicKey.startsWith('\0')) // no unused bits; the count is no part of the key
        m_publicKey.remove(0, 1);

    QString hex = leaf_text::hex(m_publicKey);
    if (!hex.isEmpty())
        hex += QLatin1Char(' ');
    m_rows.push_back(
        {texts::shown(text_keys::kPublicKey), m_publicKeyAlgorithm, hex, detail_node::BasicField});
    if (!m_publicKeyParameter.isEmpty())
        add_node(texts::shown(text_keys::kPublicKeyParameters), m_publicKeyParameter);
    return true;
}
