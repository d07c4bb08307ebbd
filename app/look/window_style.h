#pragma once

#include <QPoint>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QString>

/// Sizes, places and style sheets of the window's parts. Lengths are pixels at scale 1; a scaled
/// length is cut to an integer.
namespace window_style {

constexpr int kWidth = 436;
constexpr int kHeight = 697;
constexpr int kCaptionPointSize = 13;
constexpr int kTextPixelSize = 14;
constexpr int kButtonPixelSize = 14;
constexpr int kButtonHeight = 30;
constexpr int kTabMarginLeft = -10;
constexpr int kTabMarginRight = 40;

/// Which of a place's lengths are taken otherwise than multiplied by the scale. Deliberate: the few
/// that stay unscaled are so by contract.
enum PlaceFlag : unsigned {
    FixedX = 1,      ///< x is not scaled
    FixedHeight = 2, ///< the height is not scaled
    FromRight = 4,   ///< x is subtracted from the window's width
    FromBottom = 8,  ///< y is subtracted from the window's height
    WidthLess = 16,  ///< the width is subtracted from the window's width
};

struct Place
{
    int x;
    int y;
    int width;
    int height;
    unsigned flags = 0;
};

// Of the window's own children, in the window.
constexpr Place kTitleStrip{11, 7, 414, 41, FixedX};
constexpr Place kTabs{12, 58, 407, 571, FixedX};
constexpr Place kTabLine{15, 91, 405, 1, FixedHeight};
constexpr Place kGeneralLine{39, 342, 360, 1, FixedHeight};
constexpr Place kCloseButton{65, 17, 45, 29, FromRight};
constexpr Place kBottomButton{132, 60, 92, 30, FromRight | FromBottom};
constexpr Place kCaption{65, 10, 140, 30, WidthLess};

// Of the widgets on a page, in the page.
constexpr Place kIcon{26, 27, 21, 21};
constexpr Place kIconLabel{50, 27, 101, 21};
constexpr Place kStatusBox{28, 60, 356, 211};
constexpr Place kIdentityBox{28, 290, 356, 231};
constexpr Place kNotice{28, 27, 54, 15, FixedX};
constexpr Place kSelector{80, 22, 181, 21};
constexpr Place kTable{28, 60, 356, 251};
constexpr Place kDetailBox{28, 315, 356, 201};

int scaled(int length, float scale);
QRect placed(const Place &place, float scale, const QSize &window = QSize());

/// Where a window of this size is put to stand in the middle of the screen. Deliberate: relative to
/// the virtual desktop's origin, also when the screen begins elsewhere.
QPoint centred(const QRect &window, const QRect &screen);

/// Where the window can be grabbed to drag it: all but the close button's corner of its top edge.
QRect dragArea(const QSize &window);

/// Where the background's sheet lies, within its shadow.
QRect sheetArea(const QSize &window);

/// The part of the background image between its borders.
QRect backgroundCentre();

/// One of the nine parts of the background: where it goes and where it is cut from.
struct Patch
{
    QRectF target;
    QRectF source;
};
constexpr int kPatchCount = 9;

/// The parts in the order they are drawn, for a window of this size. `centre` is the image's
/// middle; what lies left of and above it is the border.
void backgroundPatches(const QSize &window, const QRect &centre, Patch (&patches)[kPatchCount]);

// Style sheets, named after what they dress.
QString textStyle(float scale);
QString tabsStyle(float scale);
QString tableHeaderStyle();
QString tableStyle(float scale);
QString tableScrollBarStyle(float scale);
QString boxScrollBarStyle(float scale);
QString lineStyle();
QString closeButtonStyle();
QString bottomButtonStyle(float scale);
QString selectorStyle(float scale);

} // namespace window_style
