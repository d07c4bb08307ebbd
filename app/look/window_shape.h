#pragma once

#include <memory>
#include <QObject>

class QWidget;
class XDisplay;

/// Gives a translucent window the shape of what is opaque of it while nobody composes the desktop,
/// where everything else would be black; takes the shape away when a compositor starts. Has an
/// effect on X11 only, from the moment the window is shown.
class WindowShape : public QObject
{
    Q_OBJECT

public:
    /// `window`, which owns the new object, keeps its size.
    explicit WindowShape(QWidget *window);
    ~WindowShape() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void begin();
    void follow();

    std::unique_ptr<XDisplay> m_display; ///< none before the window is shown, and none but X11's
    QWidget *m_window;
    bool m_shaped = false;
};
