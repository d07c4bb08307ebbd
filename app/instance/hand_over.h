#pragma once

class QString;

/// When another instance of the program named `id` runs: says so on the debug stream, sends it
/// `message`, waiting 4 seconds at most for its answer, and returns true. To be called before the
/// application object is made, which asks the desktop for all that a window needs; when another
/// instance starts between the two, the application object finds it.
bool handOver(const QString &id, const QString &message);
