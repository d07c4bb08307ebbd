#include "app/look/screen_scale.h"

#include "app/look/x_display.h"
#include "util/qt_compat.h"

#include <algorithm>
#include <cmath>
#include <QGuiApplication>
#include <QScreen>

namespace {

constexpr const char *kUserScale = "QT_SCALE_FACTOR";

// 0 when it is none.
double userScale()
{
    const double scale = qgetenv(kUserScale).toDouble();
    return scale > 0 && std::isfinite(scale) ? scale : 0;
}

// Of a screen in the pixels of the application, which at large scales are few.
double largestFactor(const QSize &window, const QSize &screen)
{
    const QSize room = screen.expandedTo(QSize(1, 1));
    return std::min(double(room.width()) / window.width(), double(room.height()) / window.height());
}

} // namespace

ScreenScale::ScreenScale(const QSize &window)
    : m_window(window)
{
    // A server whose user set no scale tells one of its own making: 100 dots per inch are no 104 %.
    constexpr int kUsualDpi = 96;
    const bool isSet = XDisplay().resource("Xft.dpi") > kUsualDpi;
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        isSet ? Qt::HighDpiScaleFactorRoundingPolicy::PassThrough
              : Qt::HighDpiScaleFactorRoundingPolicy::Round);
    followDesktopScale();
    if (userScale() <= 0)
        qputenv(kUserScale, "1"); // the toolkit may take nonsense at its word
}

bool ScreenScale::isWrong()
{
    constexpr int kMostTries = 4; // each knows the screen's size better than the one before
    const QScreen *screen = QGuiApplication::primaryScreen();
    if (!screen || m_tries++ == kMostTries)
        return false;
    const double current = screen->devicePixelRatio();
    if (m_asked <= 0)
        m_asked = current;
    const double fitting = current * largestFactor(m_window, screen->availableGeometry().size());
    const double right = std::min(m_asked, std::max(fitting, 1.0));
    if (std::abs(right / current - 1) < 0.0005)
        return false;
    qputenv(kUserScale, QByteArray::number(userScale() * right / current, 'g', 8));
    return true;
}
