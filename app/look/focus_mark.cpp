#include "app/look/focus_mark.h"

#include <QApplication>
#include <QPainter>
#include <QTabBar>

namespace {

constexpr int kDistance = 3; // between the control's edge and the mark's

} // namespace

FocusMark::FocusMark(QWidget *window)
    : QWidget(window)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget * /*old*/, QWidget *now) { follow(now); });
}

void FocusMark::follow(QWidget *control)
{
    QWidget *window = parentWidget();
    const bool shown = control && window->isAncestorOf(control) &&
                       window->testAttribute(Qt::WA_KeyboardFocusChange) &&
                       !qobject_cast<QTabBar *>(control); // it marks the tab itself
    setVisible(shown);
    if (!shown)
        return;
    const QRect area(control->mapTo(window, QPoint(0, 0)), control->size());
    setGeometry(area.adjusted(-kDistance, -kDistance, kDistance, kDistance));
    raise();
}

// Dark in light, to be seen on the sheet and on the title strip.
void FocusMark::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
    for (const QPen &pen : {QPen(Qt::white, 3), QPen(QColor(0xcd, 0x21, 0x0f), 1)}) {
        painter.setPen(pen);
        painter.drawRoundedRect(frame, 3, 3);
    }
}
