#pragma once

#include <initializer_list>
#include <QByteArray>
#include <QString>

/// DER (X.690) written out by hand, so that tests can say what no certificate tool would make.
namespace der {

inline QByteArray tlv(int tag, const QByteArray &content)
{
    QByteArray length;
    for (auto rest = content.size(); rest > 0; rest >>= 8)
        length.prepend(static_cast<char>(rest & 0xFF));
    if (content.size() < 128)
        length = QByteArray(1, static_cast<char>(content.size()));
    else
        length.prepend(static_cast<char>(0x80 | length.size()));
    return static_cast<char>(tag) + length + content;
}

inline QByteArray joined(std::initializer_list<QByteArray> parts)
{
    QByteArray all;
    for (const QByteArray &part : parts)
        all += part;
    return all;
}

inline QByteArray sequence(std::initializer_list<QByteArray> parts)
{
    return tlv(0x30, joined(parts));
}

inline QByteArray set(std::initializer_list<QByteArray> parts)
{
    return tlv(0x31, joined(parts));
}

inline QByteArray integer(const char *hex)
{
    return tlv(0x02, QByteArray::fromHex(hex));
}

inline QByteArray oid(const char *hex)
{
    return tlv(0x06, QByteArray::fromHex(hex));
}

inline QByteArray utf8(const char *text)
{
    return tlv(0x0C, text);
}

inline QByteArray utcTime(const char *text)
{
    return tlv(0x17, text);
}

inline QByteArray generalizedTime(const char *text)
{
    return tlv(0x18, text);
}

inline QByteArray attribute(const char *oidHex, const QByteArray &value)
{
    return sequence({oid(oidHex), value});
}

// Attribute types of distinguished names, and algorithms, as object identifier contents.
constexpr const char *kCommonName = "550403";
constexpr const char *kCountry = "550406";
constexpr const char *kOrganization = "55040A";
constexpr const char *kRsaEncryption = "2A864886F70D010101";
constexpr const char *kEcPublicKey = "2A8648CE3D0201";
constexpr const char *kPrime256 = "2A8648CE3D030107";
constexpr const char *kSha256WithRsa = "2A864886F70D01010B";
constexpr const char *kUnknown = "2B06010401868D1F0102"; // nobody names it
constexpr const char *kUnknownDotted = "1.3.6.1.4.1.99999.1.2";

/// The fields of a TBSCertificate (RFC 5280, 4.1). Each is replaced, or emptied to leave it out.
struct Certificate
{
    QByteArray version = tlv(0xA0, integer("02"));
    QByteArray serialNumber = integer("1234");
    QByteArray signature = sequence({oid(kSha256WithRsa), tlv(0x05, {})});
    QByteArray issuer = sequence({set({attribute(kCommonName, utf8("Issuer"))})});
    QByteArray validity = sequence({utcTime("200101000000Z"), generalizedTime("20991231235959Z")});
    QByteArray subject = sequence({set({attribute(kCommonName, utf8("Subject"))})});
    QByteArray keyInfo = sequence({sequence({oid(kRsaEncryption), tlv(0x05, {})}),
                                   tlv(0x03, QByteArray::fromHex("00308201"))});
    QByteArray extensions; // what stands inside the SEQUENCE OF Extension; none when empty

    QByteArray tbs() const
    {
        return joined({version, serialNumber, signature, issuer, validity, subject, keyInfo,
                       extensions.isEmpty() ? QByteArray() : tlv(0xA3, tlv(0x30, extensions))});
    }

    QByteArray encoded() const
    {
        return sequence({tlv(0x30, tbs()), sequence({oid(kSha256WithRsa), tlv(0x05, {})}),
                         tlv(0x03, QByteArray::fromHex("0000"))});
    }
};

/// Extension ::= SEQUENCE { extnID, extnValue }
inline QByteArray extension(const char *oidHex, const QByteArray &value)
{
    return sequence({oid(oidHex), tlv(0x04, value)});
}

inline QByteArray criticalExtension(const char *oidHex, const QByteArray &value)
{
    return sequence({oid(oidHex), tlv(0x01, "\xFF"), tlv(0x04, value)});
}

} // namespace der
