#include "app/look/window_shape.h"

#include "app/look/x_display.h"

#include <algorithm>
#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QImage>
#include <QSocketNotifier>
#include <QVector>
#include <QWidget>

namespace {

bool isOpaque(QRgb pixel)
{
    constexpr int kHalf = 128;
    return qAlpha(pixel) >= kHalf;
}

// What is opaque of the line, which lies side by side; empty when nothing is.
QRect opaquePart(const QImage &image, int line)
{
    const auto *begin = reinterpret_cast<const QRgb *>(image.constScanLine(line));
    const auto *end = begin + image.width();
    const auto *first = std::find_if(begin, end, isOpaque);
    while (end != first && !isOpaque(end[-1]))
        --end;
    return {static_cast<int>(first - begin), line, static_cast<int>(end - first), 1};
}

// In the display's own pixels, which the toolkit's masks are not: at a fractional scale they leave
// gaps.
QRegion opaquePart(QWidget *window)
{
    const qreal ratio = window->devicePixelRatioF();
    QImage image((QSizeF(window->size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    window->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    QVector<QRect> parts; // a rectangle for lines that are alike
    for (int y = 0; y < image.height(); ++y) {
        const QRect part = opaquePart(image, y);
        if (!parts.isEmpty() && parts.last().bottomRight() + QPoint(0, 1) == part.bottomRight() &&
            parts.last().left() == part.left())
            parts.last().setBottom(y);
        else if (!part.isEmpty())
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
