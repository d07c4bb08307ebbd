#pragma once

/// Identifier octets, with class and form in their upper three bits (X.690, 8.1.2), of the types
/// that the code asks for: universal ones (X.680), and two of a TBSCertificate (RFC 5280, 4.1).
enum AsnTag : unsigned char {
    ASN_TAG_INTEGER = 0x02,
    ASN_TAG_BIT_STRING = 0x03,
    ASN_TAG_OCTET_STRING = 0x04,
    ASN_TAG_OBJECT_IDENTIFIER = 0x06,
    ASN_TAG_UTF8_STRING = 0x0C,
    ASN_TAG_UTC_TIME = 0x17,
    ASN_TAG_GENERALIZED_TIME = 0x18,
    ASN_TAG_BMP_STRING = 0x1E,
    ASN_TAG_SEQUENCE = 0x30,
    ASN_TAG_SET = 0x31,
    ASN_TAG_VERSION = 0xA0,   ///< [0]
    ASN_TAG_EXTENSIONS = 0xA3 ///< [3]
};

/// What stands for "any" where a tag is asked for: no element has it.
constexpr int ASN_TAG_ANY = 0;

/// Whether an element's content is other elements, by its identifier octet.
constexpr bool ASNIsConstructed(int tag)
{
    return (tag & 0x20) != 0;
}
