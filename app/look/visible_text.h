#pragma once

#include <QString>
#include <vector>

/// How a text from a certificate is painted, so that it can't pass for another: whoever wrote the
/// certificate may be a stranger.
namespace visible_text {

/// Characters that stand together: as they are painted, and as the text has them.
struct Piece
{
    QString shown;
    QString original; ///< empty when it is what is shown
};

/// What becomes of the line feeds of a text.
enum class LineFeeds {
    Stay,    ///< where a text has several lines
    AsMarks, ///< "‹U+000A›", where each line must be the program's own
    AsBlanks ///< where there is one line
};

/// The text in pieces, in its order; linear in its length. Characters that change the direction of
/// others, that nobody can see (the Default_Ignorable_Code_Point property of Unicode), that control
/// a device or break a line, and those that are none become marks like "‹U+202E›"; tabs become
/// blanks. A joiner stays between two letters of a script that needs it, and a variation selector
/// behind the character that it selects a form of.
std::vector<Piece> pieces(const QString &text, LineFeeds lineFeeds);

/// The same as one text.
QString shown(const QString &text, LineFeeds lineFeeds);

} // namespace visible_text
