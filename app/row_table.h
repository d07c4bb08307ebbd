#pragma once

#include <QTableWidget>

/// A table of rows of which one is marked, and that one is shown: every key that moves through the
/// rows shows the row it arrives at, a press of the left button the row it marks, and dragging each
/// row it comes over. Home and End go to the first and the last row, Left and Right from a cell to
/// its neighbour, copying takes the row's full value, and Tab leaves the table.
class RowTable : public QTableWidget
{
    Q_OBJECT

public:
    explicit RowTable(QWidget *parent = nullptr);

signals:
    /// The row of `index` is to be shown as if it had been clicked.
    void rowChosen(const QModelIndex &index);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    QItemSelectionModel::SelectionFlags
    selectionCommand(const QModelIndex &index, const QEvent *event = nullptr) const override;
    void showEvent(QShowEvent *event) override;
    void updateGeometries() override;

private:
    void copyRow() const;
    int markedRow() const;
    void moveBy(QKeyEvent *event);
};
