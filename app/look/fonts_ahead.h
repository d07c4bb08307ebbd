#pragma once

/// What fonts there are, found beside the rest of the start: a seventh of it. The program sets no
/// variable of the environment meanwhile; the toolkit takes one away that a launcher set, and that
/// fonts have nothing to do with.
namespace fonts_ahead {

/// Settles what must not change while another processor runs the program as well: the locale, which
/// decides how numbers are read, is the user's, as the application object will have it; and what
/// speaks to an X server is loaded, unless the environment asks for another display, for linking
/// writes to hundreds of pages, and each of them would wait for the other processor.
void prepare();

/// Reads the fonts' configuration, for two application objects. To be done before the toolkit needs
/// a font, or it reads the configuration once more.
void readConfiguration();

/// Has the toolkit list the fonts, as it would for its first text; who needs one waits. While there
/// is an application object.
void list();

} // namespace fonts_ahead
