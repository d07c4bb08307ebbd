#include "app/look/visible_text.h"

#include <algorithm>
#include <iterator>
#include <QChar>

namespace visible_text {

namespace {

struct Range
{
    uint first;
    uint last;
};

// Default_Ignorable_Code_Point of the Unicode Character Database, in order, with the annotation and
// object marks behind the last of its plane, which take no place either.
constexpr Range kIgnorable[] = {
    {0x00AD, 0x00AD},   {0x034F, 0x034F},   {0x061C, 0x061C}, {0x115F, 0x1160}, {0x17B4, 0x17B5},
    {0x180B, 0x180F},   {0x200B, 0x200F},   {0x202A, 0x202E}, {0x2060, 0x206F}, {0x3164, 0x3164},
    {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFFC}, {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF},
};

// The variation selectors among them, and those of Mongolian.
constexpr Range kVariationSelectors[] = {
    {0x180B, 0x180D}, {0x180F, 0x180F}, {0xFE00, 0xFE0F}, {0xE0100, 0xE01EF}};

// Scripts whose letters take another form beside a joiner, or join where they would not.
constexpr QChar::Script kJoiningScripts[] = {
    QChar::Script_Arabic,     QChar::Script_Syriac,   QChar::Script_Nko,
    QChar::Script_Mongolian,  QChar::Script_Mandaic,  QChar::Script_PhagsPa,
    QChar::Script_Devanagari, QChar::Script_Bengali,  QChar::Script_Gurmukhi,
    QChar::Script_Gujarati,   QChar::Script_Oriya,    QChar::Script_Tamil,
    QChar::Script_Telugu,     QChar::Script_Kannada,  QChar::Script_Malayalam,
    QChar::Script_Sinhala,    QChar::Script_Khmer,    QChar::Script_Myanmar,
    QChar::Script_Tibetan,    QChar::Script_Balinese, QChar::Script_Javanese,
};

constexpr uint kLineFeed = 0x0A;
constexpr uint kTab = 0x09;
constexpr uint kNonJoiner = 0x200C;
constexpr uint kJoiner = 0x200D;

template <std::size_t Count>
bool isIn(const Range (&ranges)[Count], uint character)
{
    const auto *range = std::find_if(std::begin(ranges), std::end(ranges),
                                     [&](const Range &r) { return character <= r.last; });
    return range != std::end(ranges) && character >= range->first;
}

// Never seen by itself: what is no character at all ends a paragraph in the toolkit's text boxes,
// as the separators do.
bool isUnseen(uint character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return QChar::isNonCharacter(character) || isIn(kIgnorable, character);
    }
}

// A character of the text with its neighbours. 0 stands for none.
struct Place
{
    uint before;
    uint character;
    uint after;
};

bool joinsLetters(const Place &place)
{
    const QChar::Script script = QChar::script(place.after);
    const QChar::Script before = QChar::script(place.before);
    const bool isLetter =
        before == script || (before == QChar::Script_Inherited && !isUnseen(place.before));
    return isLetter && std::find(std::begin(kJoiningScripts), std::end(kJoiningScripts), script) !=
                           std::end(kJoiningScripts);
}

bool selectsForm(const Place &place)
{
    return place.before != 0 && !isUnseen(place.before) && !QChar::isSpace(place.before);
}

bool isNeeded(const Place &place)
{
    if (place.character == kNonJoiner || place.character == kJoiner)
        return joinsLetters(place);
    return isIn(kVariationSelectors, place.character) && selectsForm(place);
}

QString mark(uint character)
{
    const QString digits = QStringLiteral("%1").arg(character, 4, 16, QLatin1Char('0')).toUpper();
    return QChar(0x2039) + QLatin1String("U+") + digits + QChar(0x203A);
}

// Whether the character is painted as it is.
bool isPlain(const Place &place, LineFeeds lineFeeds)
{
    if (place.character == kLineFeed)
        return lineFeeds == LineFeeds::Stay;
    return !isUnseen(place.character) || isNeeded(place);
}

QString substitute(uint character, LineFeeds lineFeeds)
{
    const bool isBlank =
        character == kTab || (character == kLineFeed && lineFeeds == LineFeeds::AsBlanks);
    return isBlank ? QStringLiteral(" ") : mark(character);
}

// The character at `index`, which moves behind it.
uint takeCharacter(const QString &text, int &index)
{
    const QChar first = text.at(index++);
    if (!first.isHighSurrogate() || index == text.size() || !text.at(index).isLowSurrogate())
        return first.unicode();
    return QChar::surrogateToUcs4(first, text.at(index++));
}

// Puts what is painted as it is into one piece with what stands before it.
void appendPlain(std::vector<Piece> &pieces, const QChar *characters, int count)
{
    if (pieces.empty() || !pieces.back().original.isEmpty())
        pieces.emplace_back();
    pieces.back().shown.append(characters, count);
}

} // namespace

std::vector<Piece> pieces(const QString &text, LineFeeds lineFeeds)
{
    std::vector<Piece> result;
    Place place = {};
    int index = 0;
    place.after = text.isEmpty() ? 0 : takeCharacter(text, index);
    for (int start = 0, end = index; start < text.size(); start = end, end = index) {
        place.before = place.character;
        place.character = place.after;
        place.after = index < text.size() ? takeCharacter(text, index) : 0;
        if (isPlain(place, lineFeeds))
            appendPlain(result, text.constData() + start, end - start);
        else
            result.push_back(
                {substitute(place.character, lineFeeds), text.mid(start, end - start)});
    }
    return result;
}

QString shown(const QString &text, LineFeeds lineFeeds)
{
    QString all;
    for (const Piece &piece : pieces(text, lineFeeds))
        all += piece.shown;
    return all;
}

} // namespace visible_text
