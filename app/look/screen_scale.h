#pragma once

#include <QSize>

/// The scale at which the window is shown: the desktop's, times the one that the user asks for by
/// QT_SCALE_FACTOR, but no larger than the screen has room for.
class ScreenScale
{
public:
    /// `window` is its size at scale 1. To be made before the application object: a scale that the
    /// user set for the desktop, which might be rounded, is taken as it is.
    explicit ScreenScale(const QSize &window);

    /// Whether the application object was made at another scale than it should be. Then the next
    /// one will be made at the right one: the largest that fits what the screen leaves free, at
    /// least 1 unless less is asked for. To be called after each is made; a few times later it says
    /// no whatever there is.
    bool isWrong();

private:
    QSize m_window;
    double m_asked = 0; ///< what desktop and user ask for; 0 before it is known
    int m_tries = 0;
};
