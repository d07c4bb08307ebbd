#pragma once

#include <memory>
#include <QObject>

class QWidget;
class XDisplay;

/// What the X server is to know of the program's window, told without the toolkit.
///
/// The icon, straight from its file: the toolkit would have all sizes of it decoded, converted and
/// put together, twice. And, while nobody composes the desktop, the shape of what is opaque of the
/// translucent window, where everything else would be black; it is taken away when a compositor
/// starts. Has an effect on X11 only, from the moment the window is shown.
class ServerWindow : public QObject
{
    Q_OBJECT

public:
    /// `window`, which owns the new object, keeps its size.
    explicit ServerWindow(QWidget *window);
    ~ServerWindow() override;

    /// Whether the icon is given here, and not by the toolkit.
    static bool hasIcon();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void begin();
    void follow();

    std::unique_ptr<XDisplay> m_display; ///< none before the window is shown, and none but X11's
    QWidget *m_window;
    bool m_shaped = false;
};
