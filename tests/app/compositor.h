#pragma once

#include <cstdlib>
#include <QRegion>
#include <xcb/shape.h>
#include <xcb/xcb.h>

/// The X server as another program sees it, which may claim to be the desktop's compositor. It
/// composes nothing; that a window counts on it is all that matters here.
class OtherClient
{
public:
    OtherClient()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(m_connection))
            qFatal("no X server");
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
        m_window = xcb_generate_id(m_connection);
        xcb_create_window(m_connection, 0, m_window, screen->root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, screen->root_visual, 0, nullptr);
    }
    ~OtherClient() { xcb_disconnect(m_connection); }
    OtherClient(const OtherClient &) = delete;
    OtherClient &operator=(const OtherClient &) = delete;

    /// A window of its own.
    xcb_window_t window() const { return m_window; }

    void claimToCompose() const { own(m_window); }
    void stopClaiming() const { own(XCB_NONE); }

    /// Whether the window has a shape of its own.
    bool isShaped(xcb_window_t window) const
    {
        auto *reply = xcb_shape_query_extents_reply(
            m_connection, xcb_shape_query_extents(m_connection, window), nullptr);
        const bool shaped = reply && reply->bounding_shaped;
        std::free(reply);
        return shaped;
    }

    /// What of the window is there, in the display's pixels.
    QRegion shape(xcb_window_t window) const
    {
        auto *reply = xcb_shape_get_rectangles_reply(
            m_connection, xcb_shape_get_rectangles(m_connection, window, XCB_SHAPE_SK_BOUNDING),
            nullptr);
        QRegion region;
        const xcb_rectangle_t *part = xcb_shape_get_rectangles_rectangles(reply);
        for (int i = 0; i < xcb_shape_get_rectangles_rectangles_length(reply); ++i)
            region += QRect(part[i].x, part[i].y, part[i].width, part[i].height);
        std::free(reply);
        return region;
    }

private:
    void own(xcb_window_t owner) const
    {
        const char name[] = "_NET_WM_CM_S0";
        auto *atom = xcb_intern_atom_reply(
            m_connection, xcb_intern_atom(m_connection, 0, sizeof name - 1, name), nullptr);
        xcb_set_selection_owner(m_connection, owner, atom->atom, XCB_CURRENT_TIME);
        std::free(atom);
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection),
                                            nullptr)); // by now the server has heard of it
    }

    xcb_connection_t *m_connection;
    xcb_window_t m_window;
};
