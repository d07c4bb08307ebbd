#pragma once

#include "app/mainwindow.h"
#include "util/c_language.h"
#include "util/text_keys.h"
#include "util/texts.h"

#include <QAccessible>
#include <QPushButton>
#include <QString>
#include <QToolButton>

/// A widget of the window by its object's name.
template <typename Widget>
Widget *child(const QWidget &window, const char *name)
{
    auto *widget = window.findChild<Widget *>(QLatin1String(name));
    if (!widget)
        qFatal("the window has no %s", name);
    return widget;
}

inline QToolButton *closeButton(const QWidget &window)
{
    return window.findChild<QToolButton *>(QString(), Qt::FindDirectChildrenOnly);
}

inline QPushButton *bottomButton(const QWidget &window)
{
    return window.findChild<QPushButton *>(QString(), Qt::FindDirectChildrenOnly);
}

/// What a screen reader sees of it.
inline QAccessibleInterface *interfaceOf(QWidget *widget)
{
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
    if (!interface)
        qFatal("a screen reader can't see %s", qPrintable(widget->objectName()));
    return interface;
}

inline detail_node row(const char *name, const char *value, const char *full, int kind)
{
    return {QString::fromUtf8(name), QString::fromUtf8(value), QString::fromUtf8(full), kind};
}
