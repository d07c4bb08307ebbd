#include "app/popup_escape.h"

#include <QKeyEvent>

bool PopupEscape::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape)
        event->accept();
    return QObject::eventFilter(watched, event);
}
