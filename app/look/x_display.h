#pragma once

#include <QByteArray>
#include <QRegion>
#include <QtGlobal>

struct xcb_connection_t;

/// A connection of our own to the X server, for what the toolkit keeps to itself or asks too late.
/// Without a server nothing has an effect, and there is nothing to tell.
class XDisplay
{
public:
    /// The server that DISPLAY names.
    XDisplay();
    ~XDisplay();
    XDisplay(const XDisplay &) = delete;
    XDisplay &operator=(const XDisplay &) = delete;

    bool isConnected() const;

    /// The number under `name` among the user's resources ("Xft.dpi"); 0 when there is none.
    int resource(const QByteArray &name) const;

    /// Whether windows may be translucent: somebody composes the desktop.
    bool isComposed() const;

    /// From now on an event comes whenever a compositor starts or ends; the descriptor is readable
    /// then.
    void watchCompositor() const;
    int descriptor() const;
    /// Whether there was an event, which is gone then.
    bool takeEvent() const;

    /// Gives a window of this program, which the server must know, a shape in the server's pixels,
    /// and takes it away.
    void shape(quintptr window, const QRegion &region) const;
    void unshape(quintptr window) const;

private:
    /// The selection that a compositor owns.
    quint32 compositor() const;

    int m_screen = 0;
    xcb_connection_t *m_connection;
};
