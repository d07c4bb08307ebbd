#pragma once

#include "asn/certpolicy.h"

#include <QString>
#include <vector>

/// The wording of extensions: from the flattened leaves of one to its text. What is a key of the
/// language file is said in the language in force; nothing else outside the arguments counts.
/// Linear in the values' characters.
namespace extension_texts {

/// The leaves of an extension in the order they stand (`PXAsnBlock::get_extendata`), the critical
/// flag first when it is written out.
using Values = std::vector<QString>;
/// The same with their nesting depths (`PXAsnBlock::get_extendata_certpolicy`).
using Items = std::vector<certpolicy>;

/// What an extension says, and the purposes that it gives the certificate.
struct Said
{
    QString text;
    std::vector<QString> purposes;
};

// From the values and items, which may be used up: one can be as long as a file may be, and there
// can be a million.

// RFC 5280, 4.2.1.3: KeyUsage ::= BIT STRING; and its Netscape forerunner.
QString keyUsage(Values &values);
QString netscapeType(Values &values);

/// The names of the bits that are set, joined with ",". The low octet of `bits` is the BIT STRING's
/// first octet (bit 0 is 0x80), the next its second.
QString keyUsageNames(int bits);
QString netscapeTypeNames(int bits);

/// BasicConstraints ::= SEQUENCE { cA BOOLEAN DEFAULT FALSE, pathLenConstraint INTEGER OPTIONAL }
/// (RFC 5280, 4.2.1.9). Deliberate: the position in the list decides, so a path length without a
/// critical flag before it is taken for the CA flag.
QString basicConstraints(Values &values);

/// SubjectAltName ::= SEQUENCE OF GeneralName (RFC 5280, 4.2.1.6). Deliberate: every value counts
/// as a DNS name, the critical flag too.
QString alternativeName(Values &values);

/// AuthorityInfoAccessSyntax ::= SEQUENCE OF AccessDescription (RFC 5280, 4.2.2.1): method and
/// location in pairs, numbered from 1.
QString accessInfo(Values &values);

/// AuthorityKeyIdentifier ::= SEQUENCE { keyIdentifier [0], authorityCertIssuer [1],
/// authorityCertSerialNumber [2] } (RFC 5280, 4.2.1.1): the key identifier, the issuer as pairs of
/// attribute name and value, and last the serial number.
QString authorityKey(Values &values);

/// Each value on a line of its own.
QString anyOther(Values &values);

/// CertificatePolicies ::= SEQUENCE OF PolicyInformation (RFC 5280, 4.2.1.4): a block for each item
/// at the lowest level, which is a purpose, with the items that follow it below.
Said policies(Items &items);

/// CRLDistributionPoints ::= SEQUENCE OF DistributionPoint (RFC 5280, 4.2.1.13), grouped the same
/// way. They give no purposes.
Said distributionPoints(Items &items);

/// The block of one policy: identifier, then qualifier id and qualifier in pairs.
QString policyBlock(int number, const Values &values);

/// The block of one distribution point: URL, then attribute name and value of the CRL issuer in
/// pairs.
QString distributionPointBlock(int number, const Values &values);

} // namespace extension_texts
