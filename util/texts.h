#pragma once

#include "util/ini_table.h"

#include <QString>

/// The one door to the texts of the user's language. The program's own have a key by name in
/// util/text_keys.h; names of identifiers and, now and then, values of a certificate serve as keys
/// too. Everything is read through `c_language`, whose file and language are in force; no call
/// fails, and each costs one `stat` while the file stays as it is. GUI thread only.
namespace texts {

/// For a few texts of one row or block: they come of one state of the file, for one `stat`.
using ini_table::AtOnce;

/// The text under `key`, or the key itself when it has none. Raw: for comparing with, and for
/// building longer texts that are then shown as a whole.
QString raw(const QString &key);
QString raw(QLatin1String key);

/// The text under `key`, or the key itself, as it may be shown: through the locale.
QString shown(const QString &key);
QString shown(QLatin1String key);

/// `text` through the locale's 8-bit encoding and back: what the locale can't hold is lost. Every
/// text that is shown goes this way once, so that the screen never holds more than the suite's
/// 8-bit programs can.
QString throughLocal8Bit(const QString &text);

/// What the language file calls the identifier of this dotted form: a key, or a name that is the
/// same in every language; the dotted form when it knows none. Not yet translated: `raw` does that.
QString nameOfIdentifier(const QString &dotted);
QString nameOfIdentifier(QLatin1String dotted);

} // namespace texts
