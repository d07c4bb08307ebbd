#pragma once

#include "cert/extension_texts.h"
#include "util/text_keys.h"

/// How an extension is said that is recognised: from its values or, where `fromItems` is given,
/// from those with their depths.
struct RecognisedExtension
{
    QLatin1String key; ///< recognised when its name is the text under this key
    QString (*fromValues)(extension_texts::Values &values);
    extension_texts::Said (*fromItems)(extension_texts::Items &items);
};

/// All of them; of two whose keys have one text the first counts. `docs/rows.md` and
/// `docs/configuration.md` list them for people, and `languages/texts.tsv` gives each its
/// identifier.
constexpr RecognisedExtension kRecognisedExtensions[] = {
    {text_keys::kCertificatePolicies, extension_texts::anyOther, extension_texts::policies},
    {text_keys::kCrlDistributionPoints, extension_texts::anyOther,
     extension_texts::distributionPoints},
    {text_keys::kAuthorityInformationAccess, extension_texts::accessInfo, nullptr},
    {text_keys::kKeyUsage, extension_texts::keyUsage, nullptr},
    {text_keys::kNetscapeCertificateType, extension_texts::netscapeType, nullptr},
    {text_keys::kBasicConstraints, extension_texts::basicConstraints, nullptr},
    {text_keys::kSubjectAlternativeName, extension_texts::alternativeName, nullptr},
    {text_keys::kAuthorityKeyIdentifier, extension_texts::authorityKey, nullptr},
};
