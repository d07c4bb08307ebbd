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
    // No click comes of it when the mouse is pressed on one row and released on another.
    connect(table, &QTableWidget::entered, this, [this](const QModelIndex &index) {
        if (QGuiApplication::mouseButtons() & Qt::LeftButton)
            emit rowChosen(index);
    });
}

bool TableKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    auto *key = static_cast<QKeyEvent *>(event);
    if (key->matches(QKeySequence::Copy))
        copyRow();
    else
        move(key);
    return true;
}

void TableKeys::move(QKeyEvent *key)
{
    const int before = m_table->currentRow();
    const int last = m_table->rowCount() - 1;
    const bool isMove = movesThroughRows(key->key());
    if (isMove && last < 0)
        return;
    if (key->key() == Qt::Key_Home)
        m_table->setCurrentCell(0, 0);
    else if (key->key() == Qt::Key_End)
        m_table->setCurrentCell(last, 0);
    else if (isMove && !m_table->selectionModel()->hasSelection())
        m_table->setCurrentCell(qMax(before, 0), 0); // the first key takes the row it finds
    else
        static_cast<QObject *>(m_table)->event(key);
    if (isMove)
        m_table->selectRow(m_table->currentRow()); // which Ctrl leaves as it was, or takes back
    if (isMove || m_table->currentRow() != before)
        emit rowChosen(m_table->currentIndex());
}

void TableKeys::copyRow() const
{
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    if (!rows.isEmpty())
        QGuiApplication::clipboard()->setText(rows.first().data(kFullValueRole).toString());
}
