#pragma once

#include <QString>
#include <QStringView>

/// Look-ups in a language file, served from a parsed copy that follows the file.
namespace ini_table {

/// The text under `key` in `section` of the INI file (UTF-8) at `path`, as `QSettings` reads it; an
/// empty text when there is no such file, section or key, or the file can't be read or is larger
/// than `file_reader::kMaxFileSize`. An edit of the file is seen by the next look-up.
///
/// Costs one `stat`, and no memory for a text that was asked for before, while the file stays as it
/// is and as plain as the shipped one. A file that changed is parsed anew, and so is one beyond the
/// few that are kept, and one with a slash in the name of a section. GUI thread only.
QString lookup(const QString &path, QStringView section, QStringView key);

/// Look-ups while one lives come of one state of each file, for one `stat` a file: an edit
/// meanwhile is seen by the first look-up afterwards. For a few that belong together, with nothing
/// in between.
class AtOnce
{
public:
    AtOnce();
    ~AtOnce();
    AtOnce(const AtOnce &) = delete;
    AtOnce &operator=(const AtOnce &) = delete;
};

} // namespace ini_table
