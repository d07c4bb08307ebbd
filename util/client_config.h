#pragma once

#include <QString>

/// The suite's client configuration, an XML file that its programs share and that this one only
/// reads.
namespace client_config {

/// The suite's language code from "settings/PXClientConfig.dll" below `directory`; empty when the
/// file is missing or names none. Tells on the debug stream which file it looks for, and whether
/// there is one.
QString readLanguageCode(const QString &directory);

/// The text of the first `PXClient` in the first `Language` below the root of the zero-terminated
/// XML text, whose octets are taken as Latin-1. False, with `code` untouched, when the text does
/// not parse or has none.
bool languageCodeOf(const char *xml, QString &code);

} // namespace client_config
