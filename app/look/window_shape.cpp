#include "app/look/window_shape.h"

#include <cstdlib>
#include <QBitmap>
#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QImage>
#include <QSocketNotifier>
#include <QWidget>
#include <vector>
#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

namespace {

template <typename Reply>
struct Free
{
    void operator()(Reply *reply) const { std::free(reply); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free<Reply>>;

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

/// A connection of our own to the X server, for the toolkit offers none on which these can be
/// asked.
class WindowShape::Display
{
public:
    Display()
        : m_connection(xcb_connect(nullptr, &m_screen))
    {
        const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(m_screen);
        const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
            m_connection,
            xcb_intern_atom(m_connection, 0, static_cast<uint16_t>(name.size()), name.constData()),
            nullptr));
        if (atom)
            m_compositor = atom->atom;
    }
    ~Display() { xcb_disconnect(m_connection); }
    Display(const Display &) = delete;
    Display &operator=(const Display &) = delete;

    bool isComposed() const
    {
        const Owned<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
            m_connection, xcb_get_selection_owner(m_connection, m_compositor), nullptr));
        return !reply || reply->owner != XCB_NONE;
    }

    bool isConnected() const { return xcb_connection_has_error(m_connection) == 0; }
    int descriptor() const { return xcb_get_file_descriptor(m_connection); }

    // True for each event there was.
    bool takeEvent() const
    {
        return Owned<xcb_generic_event_t>(xcb_poll_for_event(m_connection)) != nullptr;
    }

    // Brings an event whenever a compositor comes or goes.
    void watch() const
    {
        if (!hasExtension(&xcb_xfixes_id))
            return;
        constexpr uint32_t kChanges = XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE;
        xcb_discard_reply(m_connection, xcb_xfixes_query_version(m_connection, 1, 0).sequence);
        xcb_xfixes_select_selection_input(
            m_connection, xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root,
            m_compositor, kChanges);
        xcb_flush(m_connection);
    }

    void shape(xcb_window_t window, const QRegion &region) const
    {
        if (!hasExtension(&xcb_shape_id))
            return;
        std::vector<xcb_rectangle_t> parts;
        for (const QRect &part : region)
            parts.push_back({static_cast<int16_t>(part.x()), static_cast<int16_t>(part.y()),
                             static_cast<uint16_t>(part.width()),
                             static_cast<uint16_t>(part.height())});
        xcb_shape_rectangles(m_connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                             XCB_CLIP_ORDERING_UNSORTED, window, 0, 0,
                             static_cast<uint32_t>(parts.size()), parts.data());
        xcb_flush(m_connection);
    }

    void unshape(xcb_window_t window) const
    {
        if (!hasExtension(&xcb_shape_id))
            return;
        xcb_shape_mask(m_connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, window, 0, 0,
                       XCB_NONE);
        xcb_flush(m_connection);
    }

private:
    bool hasExtension(xcb_extension_t *extension) const
    {
        const xcb_query_extension_reply_t *reply = xcb_get_extension_data(m_connection, extension);
        return reply && reply->present;
    }

    int m_screen = 0;
    xcb_connection_t *m_connection;
    xcb_atom_t m_compositor = XCB_NONE;
};

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
    m_display = std::make_unique<Display>();
    if (!m_display->isConnected())
        return;
    m_display->watch();
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
    const auto id = static_cast<xcb_window_t>(m_window->winId());
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
