#include "app/look/focus_mark.h"

#include "app/look/window_style.h"

#include <QApplication>
#include <QPainter>
#include <QTabBar>

namespace {

constexpr int kDistance = 3; // between the control's edge and the mark's

// What of the control has the focus. Of a tab, what it paints lies within its margins.
QRect focusedPart(QWidget *control)
{
    const auto *bar = qobject_cast<const QTabBar *>(control);
    return bar ? bar->rect() & bar->tabRect(bar->currentIndex())
                                   .adjusted(window_style::kTabMarginLeft, 0,
                                             -window_style::kTabMarginRight, 0)
               : control->rect();
}

} // namespace

FocusMark::FocusMark(QWidget *window)
    : QWidget(window)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    connect(qApp, &QApplication::focusChanged, this, &FocusMark::follow);
    const auto bars = window->findChildren<QTabBar *>();
    for (const QTabBar *bar : bars)
        connect(bar, &QTabBar::currentChanged, this, &FocusMark::follow);
    qApp->installEventFilter(this);
}

bool FocusMark::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride: // of every key, those included that a shortcut takes
    case QEvent::MouseButtonPress:
    case QEvent::Wheel:
        m_wanted = event->type() == QEvent::ShortcutOverride;
        follow();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void FocusMark::follow()
{
    QWidget *window = parentWidget();
    QWidget *control = QApplication::focusWidget();
    const bool shown = m_wanted && control && window->isAncestorOf(control);
    setVisible(shown);
    if (!shown)
        return;
    QRect area = focusedPart(control);
    area.moveTopLeft(control->mapTo(window, area.topLeft()));
    setGeometry(area.adjusted(-kDistance, -kDistance, kDistance, kDistance) &
                window_style::sheetArea(window->size()));
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
