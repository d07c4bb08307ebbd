#pragma once

#include <QStyledItemDelegate>

class QTableWidget;
struct detail_node;

/// The role under which the item in column 0 holds its row's full value.
constexpr int kFullValueRole = Qt::UserRole;

/// Appends a row with the node's name in column 0, its value in column 1 and its full value under
/// `kFullValueRole`, as high as its name needs. The table's style and first column are settled.
void appendRow(QTableWidget *table, const detail_node &node);

/// Paints the beginning of a text: laying out one of megabytes takes seconds, and the style would
/// do it for every paint. The names in column 0 may break within an identifier; a value is one
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
