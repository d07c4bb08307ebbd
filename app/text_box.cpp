#include "app/text_box.h"

#include <algorithm>
#include <QMimeData>
#include <QTextBlock>

using visible_text::LineFeeds;
using visible_text::Piece;

namespace {

// The properties of a mark's format that hold what the mark stands for, and how long it is.
constexpr int kOriginal = QTextFormat::UserProperty;
constexpr int kMarkLength = kOriginal + 1;

bool endsWord(QChar c)
{
    return c.isSpace() && c.decompositionTag() != QChar::NoBreak;
}

// Whether a stretch that can't break is longer than any field that means something.
bool haveEndlessWord(const std::vector<Piece> &pieces)
{
    constexpr int kLongestWord = 4096;
    int length = 0;
    for (const Piece &piece : pieces) {
        for (const QChar c : piece.shown) {
            length = endsWord(c) ? 0 : length + 1;
            if (length > kLongestWord)
                return true;
        }
    }
    return false;
}

int costOf(QChar c)
{
    if (c == QLatin1Char('\n'))
        return TextBox::kCostOfLine;
    return c.unicode() >= ' ' && c.unicode() <= '~' ? 1 : TextBox::kCostOfOthers;
}

bool fitTogether(const std::vector<QString> &texts)
{
    int room = TextBox::kMostShown;
    for (const QString &text : texts) {
        int cost = 0;
        for (int i = 0; i < text.size() && cost <= room; ++i)
            cost += costOf(text.at(i));
        room -= std::max(TextBox::kCostOfLine, cost);
        if (room < 0)
            return false;
    }
    return true;
}

// What of the text there is room for, which is used up by it.
QString beginning(const QString &text, int &room)
{
    int length = 0;
    while (length < text.size() && room >= costOf(text.at(length)))
        room -= costOf(text.at(length++));
    if (length == text.size())
        return text;
    if (length > 0 && text.at(length).isLowSurrogate())
        --length;
    return text.left(length) + QChar(0x2026);
}

// Plain pieces become one: each is inserted by itself.
void append(std::vector<Piece> &pieces, const std::vector<Piece> &more)
{
    for (const Piece &piece : more) {
        const bool joins =
            !pieces.empty() && pieces.back().original.isEmpty() && piece.original.isEmpty();
        if (joins)
            pieces.back().shown += piece.shown;
        else
            pieces.push_back(piece);
    }
}

void appendOwn(std::vector<Piece> &pieces, const QString &text)
{
    append(pieces, {{text, QString()}});
}

QTextCharFormat formatOf(const Piece &piece)
{
    QTextCharFormat format;
    if (!piece.original.isEmpty()) {
        format.setProperty(kOriginal, piece.original);
        format.setProperty(kMarkLength, static_cast<int>(piece.shown.size()));
    }
    return format;
}

// What of the fragment lies between the two positions; of a mark, all that it stands for. Equal
// marks side by side are one fragment.
QString originalWithin(const QTextFragment &fragment, int start, int end)
{
    const int first = std::max(start - fragment.position(), 0);
    const int last = std::min(end - fragment.position(), fragment.length());
    if (first >= last)
        return {};
    const QTextCharFormat format = fragment.charFormat();
    if (!format.hasProperty(kOriginal))
        return fragment.text().mid(first, last - first);
    const int length = format.intProperty(kMarkLength);
    const int marks = (last + length - 1) / length - first / length;
    return format.stringProperty(kOriginal).repeated(marks);
}

QString originalWithin(const QTextBlock &block, int start, int end)
{
    QString text;
    for (auto part = block.begin(); !part.atEnd(); ++part)
        text += originalWithin(part.fragment(), start, end);
    return text;
}

} // namespace

// A box that was never shown takes every line for one to scroll to: the bar would come, take its
// room, and go again, and all be laid out for each.
TextBox::TextBox(QWidget *parent)
    : QPlainTextEdit(parent)
{
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

void TextBox::showEvent(QShowEvent *event)
{
    if (!m_wasShown)
        moveCursor(QTextCursor::Start);
    m_wasShown = true;
    QPlainTextEdit::showEvent(event);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
}

void TextBox::clearTexts()
{
    clear();
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
}

void TextBox::beginLinesLeft()
{
    QTextOption option = document()->defaultTextOption();
    option.setTextDirection(Qt::LeftToRight);
    document()->setDefaultTextOption(option);
}

void TextBox::appendTexts(const std::vector<QString> &texts)
{
    constexpr int kLeastShown = 64;
    const bool fit = fitTogether(texts);
    int room = kMostShown;
    auto remaining = static_cast<int>(texts.size());
    std::vector<Piece> all;
    for (const QString &text : texts) {
        if (!all.empty()) // as appending one by one, which begins with the first that is not empty
            appendOwn(all, QStringLiteral("\n"));
        if (!fit && room < kLeastShown) {
            appendOwn(all, QString(QChar(0x2026)));
            break;
        }
        const int share = fit ? room : std::max(kLeastShown, room / remaining);
        --remaining;
        int left = share;
        ::append(all, visible_text::pieces(beginning(text, left), LineFeeds::Stay));
        room -= std::max(kCostOfLine, share - left);
    }
    append(all);
}

void TextBox::appendLines(const QString &text, const std::vector<bool> &endsLine)
{
    int room = kMostShown;
    const QString shown = beginning(text, room);
    std::vector<Piece> all;
    std::size_t lineFeed = 0;
    int start = 0;
    const auto nextEnd = [&shown](int from) {
        return static_cast<int>(shown.indexOf(QLatin1Char('\n'), from));
    };
    for (int end = nextEnd(0); end >= 0; end = nextEnd(end + 1)) {
        const bool ends = lineFeed >= endsLine.size() || endsLine[lineFeed];
        ++lineFeed;
        if (!ends)
            continue;
        ::append(all, visible_text::pieces(shown.mid(start, end - start), LineFeeds::AsMarks));
        appendOwn(all, QStringLiteral("\n"));
        start = end + 1;
    }
    ::append(all, visible_text::pieces(shown.mid(start), LineFeeds::AsMarks));
    append(all);
}

void TextBox::append(const std::vector<Piece> &pieces)
{
    // Looking for the end of a word line by line takes the square of its length: a minute at 1 MB.
    if (haveEndlessWord(pieces))
        setWordWrapMode(QTextOption::WrapAnywhere);
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    cursor.beginEditBlock();
    if (!document()->isEmpty())
        cursor.insertBlock();
    for (const Piece &piece : pieces)
        cursor.insertText(piece.shown, formatOf(piece));
    cursor.endEditBlock();
    if (m_wasShown) // else it is laid out when it is shown
        moveCursor(QTextCursor::Start);
}

QMimeData *TextBox::createMimeDataFromSelection() const
{
    const QTextCursor selection = textCursor();
    const int end = selection.selectionEnd();
    QTextBlock block = document()->findBlock(selection.selectionStart());
    QString text = originalWithin(block, selection.selectionStart(), end);
    for (block = block.next(); block.isValid() && block.position() <= end; block = block.next())
        text += QLatin1Char('\n') + originalWithin(block, selection.selectionStart(), end);
    auto *copied = new QMimeData;
    copied->setText(text);
    return copied;
}
