#include "app/focus_mark.h"

#include <QApplication>
#include <QPainter>

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
    constexpr int kDistance = 2;
    QWidget *window = parentWidget();
    const bool shown = control && window->isAncestorOf(control) &&
                       window->testAttribute(Qt::WA_KeyboardFocusChange);
    setVisible(shown);
    if (!shown)
        return;
    const QRect area(control->mapTo(window, QPoint(0, 0)), control->size());
    setGeometry(area.adjusted(-kDistance, -kDistance, kDistance, kDistance));
    raise();
}

void FocusMark::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0xcd, 0x21, 0x0f), 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
}
