#include "app/table_keys.h"

#include "app/table_rows.h"

#include <algorithm>
#include <iterator>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QTableWidget>

namespace {

bool movesThroughRows(int key)
{
    static constexpr int kKeys[] = {Qt::Key_Up,     Qt::Key_Down,     Qt::Key_Left, Qt::Key_Right,
                                    Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End};
    return std::find(std::begin(kKeys), std::end(kKeys), key) != std::end(kKeys);
}

} // namespace

TableKeys::TableKeys(QTableWidget *table)
    : QObject(table)
    , m_table(table)
{
    table->setTabKeyNavigation(false); // Tab leaves the table
    table->installEventFilter(this);
    table->viewport()->installEventFilter(this);
    // No click comes of a press that is released elsewhere.
    connect(table, &QTableWidget::pressed, this, &TableKeys::choose);
    connect(table, &QTableWidget::entered, this, [this](const QModelIndex &index) {
        if (QGuiApplication::mouseButtons() & Qt::LeftButton)
            choose(index);
    });
}

bool TableKeys::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        press(static_cast<QKeyEvent *>(event));
        return true;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: // the other buttons would mark a row
        return static_cast<QMouseEvent *>(event)->button() != Qt::LeftButton;
    default:
        return QObject::eventFilter(watched, event);
    }
}

void TableKeys::press(QKeyEvent *key)
{
    const bool isMove = movesThroughRows(key->key());
    const int marked = markedRow();
    if (key->matches(QKeySequence::Copy))
        copyRow();
    else if (isMove)
        move(key);
    else
        static_cast<QObject *>(m_table)->event(key); // a letter, which looks for a name
    if (isMove || markedRow() != marked)
        choose(m_table->currentIndex());
}

void TableKeys::move(QKeyEvent *key)
{
    const int row = qMax(m_table->currentRow(), 0);
    const int column = qMax(m_table->currentColumn(), 0);
    if (key->key() == Qt::Key_Home) {
        m_table->setCurrentCell(0, column);
    } else if (key->key() == Qt::Key_End) {
        m_table->setCurrentCell(m_table->rowCount() - 1, column);
    } else if (markedRow() < 0) {
        // The first key takes the cell it finds, which tells nobody unless it changes.
        m_table->selectionModel()->clearCurrentIndex();
        m_table->setCurrentCell(row, column);
    } else {
        static_cast<QObject *>(m_table)->event(key);
    }
}

void TableKeys::choose(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    // Ctrl leaves the mark where it was, or takes it back.
    m_table->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect |
                                                 QItemSelectionModel::Rows);
    emit rowChosen(index);
}

int TableKeys::markedRow() const
{
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void TableKeys::copyRow() const
{
    const QModelIndexList rows = m_table->selectionModel()->selectedRows(kNameColumn);
    if (!rows.isEmpty())
        QGuiApplication::clipboard()->setText(rows.first().data(kFullValueRole).toString());
}
