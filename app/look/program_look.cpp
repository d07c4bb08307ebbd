#include "app/look/program_look.h"

#include "app/look/window_style.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QFile>
#include <QFont>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStandardPaths>
#include <QStringList>
#include <QStyleOption>
#include <QToolTip>

namespace program_look {

namespace {

struct RoleColor
{
    QPalette::ColorRole role;
    QRgb color;
};

// Selected text is dark, for the style sheets select in light blue.
constexpr RoleColor kColors[] = {
    {QPalette::Window, 0xffffffff},
    {QPalette::WindowText, 0xff333333},
    {QPalette::Base, 0xffffffff},
    {QPalette::AlternateBase, 0xfff7f7f7},
    {QPalette::Text, 0xff333333},
    {QPalette::BrightText, 0xffffffff},
    {QPalette::Button, 0xfff5f5f5},
    {QPalette::ButtonText, 0xff1c1c1c},
    {QPalette::Light, 0xffffffff},
    {QPalette::Midlight, 0xfff0f0f0},
    {QPalette::Mid, 0xffd7d7d7},
    {QPalette::Dark, 0xffa0a0a0},
    {QPalette::Shadow, 0xff707070},
    {QPalette::Highlight, 0xffadd8e6},
    {QPalette::HighlightedText, 0xff1c1c1c},
    {QPalette::Link, 0xff0b57a4},
    {QPalette::LinkVisited, 0xff6a3d9a},
    {QPalette::ToolTipBase, 0xffffffff},
    {QPalette::ToolTipText, 0xff333333},
    {QPalette::PlaceholderText, 0xff767676},
};

QPalette lightPalette()
{
    QPalette palette;
    for (const RoleColor &entry : kColors)
        palette.setColor(QPalette::All, entry.role, QColor::fromRgb(entry.color));
    return palette;
}

// A rectangle's edges, a pixel wide, as areas: an area that is a pixel wide is there at every
// scale, while the toolkit's lines, at fractional ones, fall on their neighbours' side.
void fillEdges(QPainter *painter, const QRect &rect, const QColor &color)
{
    const QRect edges[] = {
        {rect.left(), rect.top(), rect.width(), 1},
        {rect.left(), rect.bottom(), rect.width(), 1},
        {rect.left(), rect.top(), 1, rect.height()},
        {rect.right(), rect.top(), 1, rect.height()},
    };
    for (const QRect &edge : edges)
        painter->fillRect(edge, color);
}

// The window marks the focus itself, in one way for all its controls.
class SkinStyle : public QProxyStyle
{
public:
    SkinStyle()
        : QProxyStyle(QStringLiteral("Fusion"))
    {
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override
    {
        if (element == PE_Frame && qobject_cast<const QAbstractScrollArea *>(widget))
            fillEdges(painter, option->rect, QColor(0xc5, 0xc5, 0xc5));
        else if (element != PE_FrameFocusRect)
            QProxyStyle::drawPrimitive(element, option, painter, widget);
    }

    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override
    {
        const auto *frame = qstyleoption_cast<const QStyleOptionFrame *>(option);
        if (element == CE_ShapedFrame && frame && frame->frameShape == QFrame::HLine)
            painter->fillRect(option->rect, option->palette.windowText());
        else
            QProxyStyle::drawControl(element, option, painter, widget);
    }
};

// The font that the style sheets name.
const QString &skinFont()
{
    static const QString name = QStringLiteral("Microsoft YaHei");
    return name;
}

// By its address, in the user's own folder, or by asking a program that knows of one or starts it.
bool mayFindSessionBus()
{
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
           QFile::exists(QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")) + QLatin1String("/bus")) ||
           !QStandardPaths::findExecutable(QStringLiteral("dbus-launch")).isEmpty();
}

} // namespace

void chooseDisplay()
{
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY") && !qEnvironmentVariableIsEmpty("DISPLAY") &&
        !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
}

void leaveOutTheUnused()
{
    // Looking for OpenGL loads its drivers: 30 ms and 50 MB, and nothing here is drawn with it.
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    // Nor does anything here look like the desktop's theme, which brings all of another toolkit.
    QGuiApplication::setDesktopSettingsAware(false);
    // A process of its own would look for that program, and the start wait for it: 2 ms.
    if (!mayFindSessionBus())
        qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
}

void dress()
{
    const QPalette palette = lightPalette();
    QApplication::setStyle(new SkinStyle);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
    // Of the style sheets' size, so that none is opened for what they have not reached yet. Tool
    // tips keep the desktop's.
    const QFont tips = QApplication::font();
    QFont font(skinFont());
    font.setPixelSize(window_style::kTextPixelSize);
    QApplication::setFont(font);
    QToolTip::setFont(tips);
}

void substituteFonts(const QString &section)
{
    const bool traditional = section == QLatin1String("TW");
    const QString region = traditional ? QStringLiteral("TC") : QStringLiteral("SC");
    QFont::insertSubstitutions(
        skinFont(),
        {QStringLiteral("Noto Sans CJK ") + region, QStringLiteral("Source Han Sans ") + region,
         QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("WenQuanYi Zen Hei"),
         QStringLiteral("Droid Sans Fallback"), QStringLiteral("Sans Serif")});
}

} // namespace program_look
