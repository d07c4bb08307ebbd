#pragma once

#include <QString>

/// Look-ups in a language file, served from one parsed copy that follows the file.
namespace ini_table {

/// The text under `key` in `section` of the INI file (UTF-8) at `path`, as `QSettings` reads it; an
/// empty text when there is no such file, section or key, or the file can't be read or is larger
/// than `file_reader::kMaxFileSize`. An edit of the file is seen by the next look-up.
///
/// Costs one `stat` while the file stays as it is; a file that changed, or another than the last
/// one's, is parsed anew, and so is one with a slash in the name of a section. GUI thread only.
QString lookup(const QString &path, const QString &section, const QString &key);

} // namespace ini_table
