#pragma once

#include <QByteArray>

/// Remembers the working directory as the one that the process was started from; only the first
/// call counts. To be called before whatever changes it.
void rememberStartDirectory();

/// The directory that was remembered, in the encoding of the file system; empty when it was gone
/// already. Remembers it when nobody has yet.
QByteArray startDirectory();
