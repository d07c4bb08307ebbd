#pragma once

#include <QDebug>
#include <QString>

/// Writes the parts to the debug stream as `qDebug() << part << ...` does. That one writes in a
/// destructor, where memory that runs out ends the program; here it throws `std::bad_alloc`.
template <typename... Parts>
void debugLine(const Parts &...parts)
{
    QString line;
    (QDebug(&line) << ... << parts);
    line.chop(1); // the blank behind the last part, which the stream leaves out as well
    qDebug("%s", line.toUtf8().constData());
}
