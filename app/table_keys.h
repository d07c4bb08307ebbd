#pragma once

#include <QObject>
#include <QStyledItemDelegate>

class QKeyEvent;
class QModelIndex;
class QTableWidget;

/// The role under which the item in column 0 holds its row's full value.
constexpr int kFullValueRole = Qt::UserRole;

/// Of a text, the most characters that a cell paints: more than a column can show.
constexpr int kMostShown = 1000;

/// Makes a table of rows usable by keyboard: every key that moves through the rows shows the row it
/// arrives at, Home and End go to the first and the last one, and copying takes the row's full
/// value.
class TableKeys : public QObject
{
    Q_OBJECT

public:
    /// `table` is borrowed and owns the new object.
    explicit TableKeys(QTableWidget *table);

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    /// The row of `index` is to be shown as if it had been clicked.
    void rowChosen(const QModelIndex &index);

private:
    void copyRow() const;
    void move(QKeyEvent *key);

    QTableWidget *m_table;
};

/// Paints the beginning of a text: laying out one of megabytes takes seconds, and the style would
/// do it for every paint. No cell is set off from its row.
class RowDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant &value, const QLocale &locale) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};
