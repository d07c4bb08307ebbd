#include "app/look/window_style.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

namespace window_style {

namespace {

// The template's places %1, %2, ... filled with the sizes, scaled.
QString filled(const char *style, std::initializer_list<int> sizes, float scale)
{
    QString text = QString::fromLatin1(style);
    for (const int size : sizes)
        text = text.arg(static_cast<double>(scaled(size, scale)));
    return text;
}

} // namespace

int scaled(int length, float scale)
{
    return static_cast<int>(static_cast<float>(length) * scale);
}

QRect placed(const Place &place, float scale, const QSize &window)
{
    const auto of = [&](int length, unsigned unscaledFlag) {
        return (place.flags & unscaledFlag) ? length : scaled(length, scale);
    };
    const int x = of(place.x, FixedX);
    const int y = of(place.y, 0);
    const int width = of(place.width, 0);
    return {(place.flags & FromRight) ? window.width() - x : x,
            (place.flags & FromBottom) ? window.height() - y : y,
            (place.flags & WidthLess) ? window.width() - width : width,
            of(place.height, FixedHeight)};
}

QPoint centred(const QRect &window, const QRect &screen)
{
    return {((screen.right() - screen.left()) - (window.right() - window.left())) / 2,
            ((screen.bottom() - screen.top()) - (window.bottom() - window.top())) / 2};
}

QRect dragArea(const QSize &window)
{
    return {1, 1, window.width() - 58, 36};
}

QRect sheetArea(const QSize &window)
{
    return QRect(QPoint(0, 0), window).adjusted(11, 7, -11, -15);
}

QRect backgroundCentre()
{
    return {QPoint(20, 20), QPoint(160, 160)};
}

void backgroundPatches(const QSize &window, const QRect &centre, Patch (&patches)[kPatchCount])
{
    const qreal w = window.width();
    const qreal h = window.height();
    const qreal l = centre.left();
    const qreal t = centre.top();
    const qreal r = centre.right();
    const qreal b = centre.bottom();
    // Deliberate: the edges take r and b as the middle band's size, the centre its own 141 x 141.
    const Patch table[kPatchCount] = {
        {{l, t, w - 2 * l, h - 2 * t}, QRectF(centre)},
        {{0, 0, l, t}, {0, 0, l, t}},
        {{l, 0, w - 2 * l, t}, {l, 0, r, t}},
        {{w - l, 0, l, t}, {l + r, 0, l, t}},
        {{0, h - t, l, t}, {0, t + b, l, t}},
        {{l, h - t, w - 2 * l, t}, {l, t + b, r, t}},
        {{w - l, h - t, l, t}, {l + r, t + b, l, t}},
        {{0, t, l, h - 2 * t}, {0, t, l, b}},
        {{w - l, t, l, h - 2 * t}, {l + r, t, l, b}},
    };
    std::copy(std::begin(table), std::end(table), std::begin(patches));
}

QString textStyle(float scale)
{
    return filled("font-size:%1px;font-Family:Microsoft YaHei;color:#333333;", {kTextPixelSize},
                  scale);
}

// The negative paddings and margin pull the tab labels together.
QString tabsStyle(float scale)
{
    return filled("QTabWidget::pane{border: %1px;background:transparent;}"
                  "QTabWidget::tab-bar{background:transparent;subcontrol-position:left;}"
                  "QTabBar::tab{font-family:Microsoft YaHei;font-size:%2px;color:#1c1c1c;"
                  "padding-left:%3px;padding-right:%4px;min-width:%5px;min-height:%6px;"
                  "background:transparent;margin-left:%7px;margin-right:%8px;}"
                  "QTabBar::tab:selected{color: #cd210f;border-bottom:%9px solid #cd210f;;"
                  "background:transparent;}"
                  "QTabBar::tab:!selected{color: rgb(0,0,0);background:transparent;}"
                  "QTabBar::tab:hover{color: #cd210f;background:transparent;}",
                  {2, 15, -9, -9, 100, 30, kTabMarginLeft, kTabMarginRight, 3}, scale);
}

QString tableHeaderStyle()
{
    return QStringLiteral("QHeaderView::section{border:1px solid #d7d7d7;font-size:13px;"
                          "font-Family:Microsoft YaHei;color:#1c1c1c;}");
}

QString tableStyle(float scale)
{
    return filled("selection-background-color:lightblue;font-size:%1px;"
                  "font-Family:Microsoft YaHei;color:#333333;",
                  {13}, scale);
}

QString tableScrollBarStyle(float scale)
{
    return filled("QScrollBar{background:transparent;width: %1px;}"
                  "QScrollBar::handle{background:lightgray; border:%2px solid transparent; "
                  "border-radius:%3px;}"
                  "QScrollBar::handle:hover{background:gray;}"
                  "QScrollBar::sub-line{background:transparent;}"
                  "QScrollBar::add-line{background:transparent;}",
                  {10, 2, 5}, scale);
}

// Deliberate: a blank before "width" is all that tells it from the table's.
QString boxScrollBarStyle(float scale)
{
    return filled("QScrollBar{background:transparent; width: %1px;}"
                  "QScrollBar::handle{background:lightgray; border:%2px solid transparent; "
                  "border-radius:%3px;}"
                  "QScrollBar::handle:hover{background:gray;}"
                  "QScrollBar::sub-line{background:transparent;}"
                  "QScrollBar::add-line{background:transparent;}",
                  {10, 2, 5}, scale);
}

QString lineStyle()
{
    return QStringLiteral("#lineEnd2{color:rgba(236,236,236);}");
}

// Deliberate: no button bears the name "closeBtn", so the face never changes.
QString closeButtonStyle()
{
    return QStringLiteral(
        "QToolButton{border-image: url(:/img/res/closeBtn/close_normal.png);}"
        "QToolButton#closeBtn:hover{border-image: url(:/img/res/closeBtn/close_horver.png);}"
        "QToolButton#closeBtn:pressed{border-image: url(:/img/res/closeBtn/close_down.png);}");
}

// Deliberate: no button bears the name "OkButton" either.
QString bottomButtonStyle(float scale)
{
    return filled("QPushButton{height:%1px; border-radius:%2px;background:#db180c; width:%3px;  "
                  "color:#FFF;}"
                  "QPushButton#OkButton:hover{border:none;}"
                  "QPushButton#OkButton:pressed{border:none;}",
                  {30, 5, 80}, scale);
}

QString selectorStyle(float scale)
{
    return filled("QComboBox{min-height: %1px;border-radius: %2px ;"
                  "background-color: rgb(255, 255, 255);                                     "
                  "color: rgb(0, 0, 0);border:%3px solid #d7d7d7; border-radius: %4px; "
                  "padding: %5px %6px %7px %8px;font-size:%9px;font-Family:Microsoft YaHei;"
                  "color:#333333;}"
                  "QComboBox::drop-down{width: %10px;border-left-width: %11px;"
                  "border-left-color: darkgray;"
                  "border-left-style: solid;                                     "
                  "border-top-right-radius: %12px; border-bottom-right-radius: %13px;}"
                  "QComboBox::down-arrow{image: url(:/img/res/combo1);height:%14px;width:%15px;}"
                  "QComboBox QAbstractItemView {border:%16px solid #d7d7d7;min-height: %17px; "
                  "font-size:%18px;font-Family:Microsoft YaHei;color:#333333;}",
                  {22, 3, 1, 3, 1, 18, 1, 3, 13, 20, 1, 3, 3, 18, 18, 1, 30, 14}, scale);
}

} // namespace window_style
