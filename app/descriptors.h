#pragma once

/// What the program makes sure of about its file descriptors before the toolkit takes any.
namespace descriptors {

/// Opens /dev/null in the place of each standard stream that is closed: the connection to the X
/// server would get its number, and texts meant for the stream would be written into it. To be
/// called before anything else is opened.
void fillStandardStreams();

/// As many as the toolkit opens until its window stands, with a session bus besides, and a few
/// more: with fewer left it ends the process by a trap.
constexpr int kNeeded = 16;

/// Whether `kNeeded` more can be opened.
bool suffice();

} // namespace descriptors
