#pragma once

#include <QObject>

class QKeyEvent;
class QModelIndex;
class QTableWidget;

/// Makes a table of rows usable by keyboard: every key that moves through the rows shows the row it
/// arrives at, Home and End go to the first and the last one, and copying takes the row's full
/// value. Dragging the mouse, which moves the selection as keys do, shows the row as well.
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
