#pragma once

#include <QString>

/// What makes the program look the same on every desktop.
namespace program_look {

/// Chooses X11 on a Wayland desktop that offers it, since the window places and drags itself; a
/// platform the user chose stands. To be called before the application object is made.
void chooseDisplay();

/// Keeps the toolkit from loading, at every start, what the window has no use for: OpenGL and the
/// desktop's theme. One that the user named in the toolkit's own variables is loaded all the same.
/// Nor does it look for a session bus where there is none. To be called before the application
/// object is made.
void leaveOutTheUnused();

/// Widget style, colours and font of the program's own: its skin is a light one, whatever the
/// desktop's theme is.
void dress();

/// Names the fonts that stand in for the style sheets' font, which Linux desktops lack, best first
/// for the language of `section` (CN, TW or EN).
void substituteFonts(const QString &section);

} // namespace program_look
