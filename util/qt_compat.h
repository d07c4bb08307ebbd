#pragma once

#include <QCoreApplication>
#include <QPoint>

/// The few places where Qt 5 and Qt 6 truly differ.

/// Where a mouse event happened, on the virtual desktop. A template, so that this header asks for
/// no GUI.
template <typename MouseEvent>
QPoint globalPoint(const MouseEvent *event)
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return event->globalPos();
#else
    return event->globalPosition().toPoint();
#endif
}

/// Sizes and pictures follow the desktop's scale factor, which Qt 6 does unasked. To be called
/// before the application object is made.
inline void followDesktopScale()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
}

/// An INI file is read as UTF-8, which Qt 6 does anyway. A template, so that this header does not
/// ask for `QSettings`.
template <typename Settings>
void readAsUtf8([[maybe_unused]] Settings &settings)
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    settings.setIniCodec("utf-8");
#endif
}
