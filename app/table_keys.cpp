#include "app/table_keys.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QTableWidget>

TableKeys::TableKeys(QTableWidget *table)
    : QObject(table)
    , m_table(table)
{
    table->setTabKeyNavigation(false); // Tab leaves the table
    table->installEventFilter(this);
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

// The table acts on the key first; what it does not want goes on to the window.
void TableKeys::move(QKeyEvent *key)
{
    const int last = m_table->rowCount() - 1;
    if (key->key() == Qt::Key_Home && last >= 0)
        m_table->setCurrentCell(0, 0);
    else if (key->key() == Qt::Key_End && last >= 0)
        m_table->setCurrentCell(last, 0);
    else
        static_cast<QObject *>(m_table)->event(key);
    if (key->isAccepted() && m_table->hasFocus() && m_table->currentRow() >= 0)
        emit rowChosen(m_table->currentIndex());
}

void TableKeys::copyRow() const
{
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    if (!rows.isEmpty())
        QGuiApplication::clipboard()->setText(rows.first().data(kFullValueRole).toString());
}

QString BeginningDelegate::displayText(const QVariant &value, const QLocale &locale) const
{
    constexpr int kMostShown = 1000;
    return QStyledItemDelegate::displayText(value.toString().left(kMostShown), locale);
}
