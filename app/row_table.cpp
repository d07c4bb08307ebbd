#include "app/row_table.h"

#include "app/table_rows.h"

#include <algorithm>
#include <iterator>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>

namespace {

bool movesThroughRows(int key)
{
    static constexpr int kKeys[] = {Qt::Key_Up,     Qt::Key_Down,     Qt::Key_Left, Qt::Key_Right,
                                    Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End};
    return std::find(std::begin(kKeys), std::end(kKeys), key) != std::end(kKeys);
}

} // namespace

RowTable::RowTable(QWidget *parent)
    : QTableWidget(parent)
{
    setTabKeyNavigation(false);
    // No click comes of a press that is released elsewhere.
    connect(this, &QTableWidget::pressed, this, &RowTable::rowChosen);
    connect(this, &QTableWidget::entered, this, [this](const QModelIndex &index) {
        if (QGuiApplication::mouseButtons() & Qt::LeftButton)
            emit rowChosen(index);
    });
}

void RowTable::keyPressEvent(QKeyEvent *event)
{
    const bool isMove = movesThroughRows(event->key());
    const int marked = markedRow();
    if (event->matches(QKeySequence::Copy))
        copyRow();
    else if (isMove)
        moveBy(event);
    else
        QTableWidget::keyPressEvent(event); // a letter, which looks for a name
    if (currentIndex().isValid() && (isMove || markedRow() != marked))
        emit rowChosen(currentIndex());
}

// The other buttons do nothing.
void RowTable::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        QTableWidget::mousePressEvent(event);
}

void RowTable::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        QTableWidget::mouseDoubleClickEvent(event);
}

// Whatever is done to a row marks it; Ctrl, which may take the mark away, means nothing here.
QItemSelectionModel::SelectionFlags RowTable::selectionCommand(const QModelIndex &index,
                                                               const QEvent *event) const
{
    const bool isRelease = event && event->type() == QEvent::MouseButtonRelease;
    if (isRelease || !index.isValid())
        return QItemSelectionModel::NoUpdate;
    return QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
}

void RowTable::showEvent(QShowEvent *event)
{
    makeRoomForNames(this, 0);
    QTableWidget::showEvent(event);
}

void RowTable::updateGeometries()
{
    if (isVisible())
        QTableWidget::updateGeometries();
}

void RowTable::moveBy(QKeyEvent *event)
{
    const int row = qMax(currentRow(), 0);
    const int column = qMax(currentColumn(), 0);
    if (event->key() == Qt::Key_Home) {
        setCurrentCell(0, column);
    } else if (event->key() == Qt::Key_End) {
        setCurrentCell(rowCount() - 1, column);
    } else if (markedRow() < 0) {
        // The first key takes the cell it finds, which tells nobody unless it changes.
        selectionModel()->clearCurrentIndex();
        setCurrentCell(row, column);
    } else {
        QTableWidget::keyPressEvent(event);
    }
}

int RowTable::markedRow() const
{
    const QModelIndexList rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void RowTable::copyRow() const
{
    const QModelIndexList rows = selectionModel()->selectedRows(kNameColumn);
    if (!rows.isEmpty())
        QGuiApplication::clipboard()->setText(rows.first().data(kFullValueRole).toString());
}
