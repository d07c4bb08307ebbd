#include "app/look/window_shape.h"

#include "app/look/x_display.h"

#include <QBitmap>
#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QImage>
#include <QSocketNotifier>
#include <QWidget>

namespace {

// In the display's own pixels, which the toolkit's masks are not: at a fractional scale they leave
// gaps.
QRegion opaquePart(QWidget *window)
{
    const qreal ratio = window->devicePixelRatioF();
    QImage image((QSizeF(window->size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    window->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    QImage mask = image.createAlphaMask();
    mask.setDevicePixelRatio(1);
    return QRegion(QBitmap::fromImage(mask));
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
