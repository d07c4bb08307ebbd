#pragma once

#include <QObject>

class QKeyEvent;
class QModelIndex;
class QTableWidget;

/// Makes a table of rows usable by keyboard, and the row that is marked the one that is shown:
/// every key that moves through the rows shows the row it arrives at, a press of the mouse the row
/// it marks, and dragging each row it comes over. Home and End go to the first and the last row,
/// Left and Right from a cell to its neighbour, and copying takes the row's full value.
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
    void choose(const QModelIndex &index);
    void copyRow() const;
    int markedRow() const;
    void move(QKeyEvent *key);
    void press(QKeyEvent *key);

    QTableWidget *m_table;
};
