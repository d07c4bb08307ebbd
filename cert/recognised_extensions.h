#pragma once

#include "cert/extension_texts.h"

/// How an extension is said that is recognised: from its values or, where `fromItems` is given,
/// from those with their depths.
struct RecognisedExtension
{
    const char *key; ///< recognised when its name is the text under this key
    QString (*fromValues)(const extension_texts::Values &values);
    extension_texts::Said (*fromItems)(const extension_texts::Items &items);
};

/// All of them; of two whose keys have one text the first counts. `docs/rows.md` and
/// `docs/configuration.md` list them for people, and `languages/texts.tsv` gives each its
/// identifier.
constexpr RecognisedExtension kRecognisedExtensions[] = {
    {"PXCERTREAD_0025", extension_texts::anyOther, extension_texts::policies},
    {"PXCERTREAD_0024", extension_texts::anyOther, extension_texts::distributionPoints},
    {"PXCERTREAD_0026", extension_texts::accessInfo, nullptr},
    {"PXCERTREAD_0031", extension_texts::keyUsage, nullptr},
    {"PXCERTREAD_0032", extension_texts::netscapeType, nullptr},
    {"PXCERTREAD_0030", extension_texts::basicConstraints, nullptr},
    {"PXCERTREAD_0028", extension_texts::alternativeName, nullptr},
    {"PXCERTREAD_0027", extension_texts::authorityKey, nullptr},
};
