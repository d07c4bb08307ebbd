#include "app/table_rows.h"

#include "app/look/visible_text.h"
#include "cert/detail_node.h"

#include <QHeaderView>
#include <QTableWidget>

namespace {

// The name with places to break after the points of an identifier, which has none of its own.
QString breakable(const QString &name)
{
    return QString(name).replace(QLatin1Char('.'), QStringLiteral(".\u200B"));
}

// A value as a line: its beginning, for laying out one of megabytes takes seconds, without line
// feeds.
QString asLine(const QString &value)
{
    constexpr int kMostShown = 1000;
    QString text = value.left(kMostShown);
    while (text.endsWith(QLatin1Char('\n')))
        text.chop(1);
    return visible_text::shown(text, visible_text::LineFeeds::AsBlanks);
}

// A screen reader reads what is shown.
class Cell : public QTableWidgetItem
{
public:
    using QTableWidgetItem::QTableWidgetItem;

    QVariant data(int role) const override
    {
        return role == Qt::AccessibleTextRole ? asLine(text()) : QTableWidgetItem::data(role);
    }
};

void makeRoomForName(QTableWidget *table, int row)
{
    QStyleOptionViewItem option;
    option.initFrom(table);
    option.font = table->font();
    option.widget = table;
    option.features = QStyleOptionViewItem::WrapText;
    option.rect.setWidth(table->columnWidth(kNameColumn));
    const int needed =
        table->itemDelegate()->sizeHint(option, table->model()->index(row, kNameColumn)).height();
    const int oneLine = table->verticalHeader()->defaultSectionSize();
    const int margins = oneLine - option.fontMetrics.height();
    table->setRowHeight(row, qBound(oneLine, needed + margins, 4 * oneLine));
}

} // namespace

void appendRow(QTableWidget *table, const detail_node &node)
{
    const int row = table->rowCount();
    table->setRowCount(row + 1);
    auto *name = new Cell(node.name);
    name->setData(kFullValueRole, node.full_value);
    table->setItem(row, kNameColumn, name);
    table->setItem(row, kValueColumn, new Cell(node.value));
    if (table->isVisible())
        makeRoomForNames(table, row);
}

void makeRoomForNames(QTableWidget *table, int first)
{
    // Only where people look: measuring each of a million rows would take far longer than showing
    // them.
    constexpr int kMostMeasured = 200;
    const int end = qMin(table->rowCount(), kMostMeasured);
    for (int row = first; row < end; ++row)
        makeRoomForName(table, row);
}

QString RowDelegate::displayText(const QVariant &value, const QLocale &locale) const
{
    return QStyledItemDelegate::displayText(asLine(value.toString()), locale);
}

void RowDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->state &= ~QStyle::State_HasFocus;
    if (index.column() == kNameColumn)
        option->text = breakable(option->text);
    else
        option->features &= ~QStyleOptionViewItem::WrapText; // nothing is cut off before its end
}
