#pragma once

#include <QObject>

/// Keeps Escape, when it closes a selector's list, from closing the window as well: installed on
/// the list, it claims the key before the window's shortcut does.
class PopupEscape : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override;
};
