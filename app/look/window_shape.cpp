#include "app/look/window_shape.h"

#include "app/look/window_style.h"
#include "app/look/x_display.h"

#include <algorithm>
#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSocketNotifier>
#include <QtMath>
#include <QVector>
#include <QWidget>

namespace {

bool isOpaque(QRgb pixel)
{
    constexpr int kHalf = 128;
    return qAlpha(pixel) >= kHalf;
}

// Some columns of the window's picture, in the display's own pixels.
QImage columns(QWidget *window, int first, int count)
{
    const qreal ratio = window->devicePixelRatioF();
    const QSize size(count, qRound(window->height() * ratio));
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.translate(-first, 0);
    painter.scale(ratio, ratio);
    window->render(&painter, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

const QRgb *line(const QImage &image, int y)
{
    return reinterpret_cast<const QRgb *>(image.constScanLine(y));
}

// What is opaque of the line, of which `ends` holds the columns from `right` on; empty when nothing
// is.
QRect opaquePart(const QImage &begins, const QImage &ends, int right, int y)
{
    const QRgb *first = line(begins, y);
    const QRgb *behind = first + begins.width();
    const auto left = static_cast<int>(std::find_if(first, behind, isOpaque) - first);
    int width = ends.width();
    while (width > 0 && !isOpaque(line(ends, y)[width - 1]))
        --width;
    const bool isEmpty = left == begins.width() || width == 0;
    return isEmpty ? QRect() : QRect(left, y, right + width - left, 1);
}

// In the display's own pixels, which the toolkit's masks are not: at a fractional scale they leave
// gaps. What is opaque of a line begins in the background's left border and ends in its right one,
// so these are all that is looked at: the whole picture takes three times as long.
QRegion opaquePart(QWidget *window)
{
    const qreal ratio = window->devicePixelRatioF();
    const int border = qCeil(window_style::backgroundCentre().left() * ratio);
    const int right = qRound(window->width() * ratio) - border;
    const QImage begins = columns(window, 0, border);
    const QImage ends = columns(window, right, border);
    QVector<QRect> parts; // a rectangle for lines that are alike
    for (int y = 0; y < begins.height(); ++y) {
        const QRect part = opaquePart(begins, ends, right, y);
        if (part.isEmpty())
            continue;
        const bool isAlike = !parts.isEmpty() && parts.last().left() == part.left() &&
                             parts.last().right() == part.right();
        if (isAlike)
            parts.last().setBottom(y);
        else
            parts.append(part);
    }
    QRegion region;
    region.setRects(parts.constData(), static_cast<int>(parts.size()));
    return region;
}

} // namespace

WindowShape::WindowShape(QWidget *window)
    : QObject(window)
    , m_window(window)
{
    window->installEventFilter(this);
}

WindowShape::~WindowShape() = default;

bool WindowShape::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show && !m_display &&
        QGuiApplication::platformName() == QLatin1String("xcb"))
        begin();
    return QObject::eventFilter(watched, event);
}

void WindowShape::begin()
{
    m_display = std::make_unique<XDisplay>();
    if (!m_display->isConnected())
        return;
    m_display->watchCompositor();
    auto *news = new QSocketNotifier(m_display->descriptor(), QSocketNotifier::Read, this);
    connect(news, &QSocketNotifier::activated, this, [this, news] {
        while (m_display->takeEvent())
            follow();
        news->setEnabled(m_display->isConnected());
    });
    follow();
}

void WindowShape::follow()
{
    const WId id = m_window->winId();
    if (m_display->isComposed()) {
        if (m_shaped)
            m_display->unshape(id);
        m_shaped = false;
        return;
    }
    QCursor::pos(); // whose answer comes after the window was made, which waits to be sent till
                    // then
    m_display->shape(id, opaquePart(m_window));
    m_shaped = true;
}
