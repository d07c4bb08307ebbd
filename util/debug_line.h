#pragma once

#include <algorithm>
#include <QDebug>
#include <QString>
#include <QStringBuilder>

namespace debug_line_parts {

// What stands between quotes as it is.
inline bool isPlain(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) {
        return c >= QLatin1Char(' ') && c <= QLatin1Char('~') && c != QLatin1Char('"') &&
               c != QLatin1Char('\\');
    });
}

// Each with a blank behind it.
inline void add(QString &line, const char *text)
{
    line += QLatin1String(text) % QLatin1Char(' ');
}

inline void add(QString &line, int number)
{
    line += QString::number(number) % QLatin1Char(' ');
}

inline void add(QString &line, const QString &text)
{
    if (isPlain(text))
        line += QLatin1Char('"') % text % QLatin1String("\" ");
    else
        QDebug(&line) << text;
}

} // namespace debug_line_parts

/// Writes the parts to the debug stream as `qDebug() << part << ...` does, ASCII literals among
/// them, in a fraction of the time. That one writes in a destructor, where memory that runs out
/// ends the program; here it throws `std::bad_alloc`.
template <typename... Parts>
void debugLine(const Parts &...parts)
{
    QString line;
    (debug_line_parts::add(line, parts), ...);
    line.chop(1); // the blank behind the last part, which the stream leaves out as well
    qDebug("%s", line.toUtf8().constData());
}
