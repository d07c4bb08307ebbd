#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

namespace display_date {

/// Date and time in the short format of the desktop's locale; empty for an invalid date-time.
inline QString shortText(const QDateTime &time, const QLocale &locale = QLocale::system())
{
    if (!time.isValid())
        return {};
    // Qt 6 takes Taiwan's "Bh:mm" over as it stands and prints the B, which it does not know.
    QString format = locale.dateTimeFormat(QLocale::ShortFormat);
    if (!format.contains(QLatin1String("Bh")))
        return locale.toString(time, QLocale::ShortFormat);
    return locale.toString(time, format.replace(QLatin1String("Bh"), QLatin1String("APh")));
}

/// The date of such a text: what stands before its first blank, or all of it when it has none.
inline QString datePart(const QString &text)
{
    return text.section(QLatin1Char(' '), 0, 0);
}

} // namespace display_date
