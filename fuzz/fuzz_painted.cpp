#include "app/look/window_style.h"
#include "app/row_table.h"
#include "app/table_rows.h"
#include "app/text_box.h"
#include "cert/detail_node.h"
#include "fuzz_application.h"
#include "fuzz_target.h"
#include "tests/support/processor_time.h"

#include <algorithm>
#include <memory>
#include <QApplication>
#include <QHeaderView>
#include <QMimeData>
#include <QPixmap>
#include <QTextBlock>
#include <QTextLayout>

namespace {

/// A box whose copies can be asked for.
class Box : public TextBox
{
public:
    Box()
    {
        resize(window_style::placed(window_style::kIdentityBox, 1).size());
        setStyleSheet(window_style::textStyle(1));
        beginLinesLeft();
    }
    QString copied() const
    {
        const std::unique_ptr<QMimeData> copy(createMimeDataFromSelection());
        return copy->text();
    }
};

/// A table as the window has it.
class Table : public RowTable
{
public:
    Table()
    {
        const QRect place = window_style::placed(window_style::kTable, 1);
        resize(place.size());
        setColumnCount(kColumns);
        setColumnWidth(kNameColumn, place.width() / 5 * 2);
        setStyleSheet(window_style::tableStyle(1));
        setItemDelegate(new RowDelegate(this));
        horizontalHeader()->setStretchLastSection(true);
    }
};

/// The processor's time that something may take: many times what it takes without sanitizers.
class Patience
{
public:
    ~Patience() { require(m_timer.seconds() < kSeconds); }

private:
    static constexpr int kSeconds = 3;
    ProcessorTime m_timer;
};

// What makes a text look like another, whatever stands beside it.
bool misleads(uint character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return (character >= 0x202A && character <= 0x202E) ||
               (character >= 0x2060 && character <= 0x206F) || character == 0x200B ||
               character == 0x200E || character == 0x200F || character == 0x061C ||
               character == 0x00AD || character == 0xFEFF || QChar::isNonCharacter(character);
    }
}

void requireNothingMisleads(const QString &shown)
{
    const QVector<uint> characters = shown.toUcs4();
    require(std::none_of(characters.begin(), characters.end(), misleads));
}

// Every second line feed is the program's own, and they alone end lines.
void requireLinesAreTheProgramsOwn(Box &box, const QString &text)
{
    std::vector<bool> own(std::size_t(text.count(QLatin1Char('\n'))));
    for (std::size_t i = 0; i < own.size(); i += 2)
        own[i] = true;
    box.clearTexts();
    box.appendLines(text, own);
    require(box.blockCount() == 1 + std::count(own.begin(), own.end(), true));
}

void requireBoxIsHonest(Box &box, const QString &text)
{
    require(!box.grab().isNull());
    for (QTextBlock line = box.document()->begin(); line.isValid(); line = line.next()) {
        requireNothingMisleads(line.text());
        const QTextLayout *layout = line.layout();
        require(layout->lineCount() == 0 ||
                layout->textOption().textDirection() == Qt::LeftToRight);
    }
    box.selectAll();
    require(box.copied() == text);
}

void requireRowIsHonest(Table &table, const QString &text)
{
    table.setRowCount(0);
    appendRow(&table, {text, text, text, detail_node::Extension});
    const QModelIndex name = table.model()->index(0, kNameColumn);
    require(name.data(kFullValueRole).toString() == text);
    auto *delegate = qobject_cast<RowDelegate *>(table.itemDelegate());
    requireNothingMisleads(delegate->displayText(text, table.locale()));
    require(!table.grab().isNull());
}

} // namespace

// Of any text General's boxes and the table paint nothing that misleads, within a moment, and give
// back all of it to who copies it.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr int kLength = 600; // where what takes more than its share of time shows
    startApplication<QApplication>("fuzz_painted");
    static Box &box = *new Box; // as the application
    static Table &table = *new Table;
    const QString once = QString::fromUtf8(reinterpret_cast<const char *>(data), int(size));
    const QString often = once.repeated(once.isEmpty() ? 0 : kLength / once.size());
    for (const QString &text : {once, often}) {
        const Patience patience;
        requireLinesAreTheProgramsOwn(box, text);
        requireBoxIsHonest(box, text);
        requireRowIsHonest(table, text);
    }
    return 0;
}
