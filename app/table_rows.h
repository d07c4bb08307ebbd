#pragma once

#include <QStyledItemDelegate>

class QTableWidget;
struct detail_node;

// The table's columns.
constexpr int kNameColumn = 0;
constexpr int kValueColumn = 1;
constexpr int kColumns = 2;

/// The role under which the item in the name's column holds its row's full value.
constexpr int kFullValueRole = Qt::UserRole;

/// Appends a row with the node's name, its value and, under `kFullValueRole`, its full value. While
/// the table is visible it is as high as its name needs; else that is to be made up for.
void appendRow(QTableWidget *table, const detail_node &node);

/// Makes the rows from the one numbered `first` as high as their names need; those behind the first
/// 200 have one line. The table's style and the width of the names' column are settled.
void makeRoomForNames(QTableWidget *table, int first);

/// Paints the beginning of a text: laying out one of megabytes takes seconds, and the style would
/// do it for every paint. Names may break within an identifier; a value is one
/// line, as much of it as fits. No cell is set off from its row.
class RowDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant &value, const QLocale &locale) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};
