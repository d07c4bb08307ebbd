#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

namespace display_date {

/// Date and time in the short format of the desktop's locale; empty for an invalid date-time.
inline QString shortText(const QDateTime &time)
{
    return time.isValid() ? QLocale::system().toString(time, QLocale::ShortFormat) : QString();
}

} // namespace display_date
