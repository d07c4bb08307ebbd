#include "app/look/x_display.h"

#include <cstdlib>
#include <memory>
#include <QList>
#include <vector>
#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

namespace {

struct Free
{
    void operator()(void *reply) const { std::free(reply); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

template <typename Reply>
Owned<Reply> owned(Reply *reply)
{
    return Owned<Reply>(reply);
}

// To be asked first: a request of an extension that the server lacks ends the connection.
bool hasExtension(xcb_connection_t *connection, xcb_extension_t *extension)
{
    const xcb_query_extension_reply_t *reply = xcb_get_extension_data(connection, extension);
    return reply && reply->present;
}

xcb_window_t root(xcb_connection_t *connection)
{
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

} // namespace

XDisplay::XDisplay()
    : m_connection(xcb_connect(nullptr, &m_screen))
{
}

XDisplay::~XDisplay()
{
    xcb_disconnect(m_connection);
}

bool XDisplay::isConnected() const
{
    return xcb_connection_has_error(m_connection) == 0;
}

int XDisplay::resource(const QByteArray &name) const
{
    constexpr uint32_t kMostWords = 64 * 1024;
    if (!isConnected())
        return 0;
    const auto reply = owned(xcb_get_property_reply(
        m_connection,
        xcb_get_property(m_connection, 0, root(m_connection), XCB_ATOM_RESOURCE_MANAGER,
                         XCB_ATOM_STRING, 0, kMostWords),
        nullptr));
    if (!reply)
        return 0;
    const QByteArray text(static_cast<const char *>(xcb_get_property_value(reply.get())),
                          xcb_get_property_value_length(reply.get()));
    const QList<QByteArray> lines = text.split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).trimmed().toInt();
    }
    return 0;
}

bool XDisplay::isComposed() const
{
    const auto reply = owned(xcb_get_selection_owner_reply(
        m_connection, xcb_get_selection_owner(m_connection, compositor()), nullptr));
    return !reply || reply->owner != XCB_NONE;
}

void XDisplay::watchCompositor() const
{
    constexpr uint32_t kChanges = XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                  XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                  XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE;
    // Asked together, for what will be asked one by one, the second where nobody composes.
    xcb_prefetch_extension_data(m_connection, &xcb_xfixes_id);
    xcb_prefetch_extension_data(m_connection, &xcb_shape_id);
    if (!isConnected() || !hasExtension(m_connection, &xcb_xfixes_id))
        return;
    xcb_discard_reply(m_connection, xcb_xfixes_query_version(m_connection, 1, 0).sequence);
    xcb_xfixes_select_selection_input(m_connection, root(m_connection), compositor(), kChanges);
    xcb_flush(m_connection);
}

int XDisplay::descriptor() const
{
    return xcb_get_file_descriptor(m_connection);
}

bool XDisplay::takeEvent() const
{
    return owned(xcb_poll_for_event(m_connection)) != nullptr;
}

void XDisplay::shape(quintptr window, const QRegion &region) const
{
    if (!hasExtension(m_connection, &xcb_shape_id))
        return;
    std::vector<xcb_rectangle_t> parts;
    for (const QRect &part : region)
        parts.push_back({static_cast<int16_t>(part.x()), static_cast<int16_t>(part.y()),
                         static_cast<uint16_t>(part.width()),
                         static_cast<uint16_t>(part.height())});
    xcb_shape_rectangles(m_connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                         XCB_CLIP_ORDERING_UNSORTED, static_cast<xcb_window_t>(window), 0, 0,
                         static_cast<uint32_t>(parts.size()), parts.data());
    xcb_flush(m_connection);
}

void XDisplay::unshape(quintptr window) const
{
    if (!hasExtension(m_connection, &xcb_shape_id))
        return;
    xcb_shape_mask(m_connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                   static_cast<xcb_window_t>(window), 0, 0, XCB_NONE);
    xcb_flush(m_connection);
}

quint32 XDisplay::compositor() const
{
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(m_screen);
    const auto reply = owned(xcb_intern_atom_reply(
        m_connection,
        xcb_intern_atom(m_connection, 0, static_cast<uint16_t>(name.size()), name.constData()),
        nullptr));
    return reply ? reply->atom : XCB_NONE;
}
