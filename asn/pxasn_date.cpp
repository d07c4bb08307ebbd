#include "asn/pxasn.h"

#include <algorithm>
#include <QDebug>

namespace {

constexpr int kUtcTimeTag = 0x17;
constexpr int kGeneralizedTimeTag = 0x18;
constexpr int kUtcTimeLength = 13;
constexpr int kGeneralizedTimeLength = 15;
constexpr int kUtcYearDigits = 2;
constexpr int kGeneralizedYearDigits = 4;
constexpr int kHoursPerDay = 24;
constexpr int kSecondsPerHour = 3600;

struct CivilTime
{
    QDate date;
    QTime time;
};

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

// -1 where anything but digits stands.
int numberAt(const QString &text, int position, int digits)
{
    const QString slice = text.mid(position, digits);
    const bool isNumber =
        slice.size() == digits && std::all_of(slice.cbegin(), slice.cend(), isDigit);
    return isNumber ? slice.toInt() : -1;
}

// MMDDhhmmss behind the digits of the year. Impossible fields make the date or the time invalid.
CivilTime civilTime(const QString &text, int yearDigits, int year)
{
    const auto field = [&](int i) { return numberAt(text, yearDigits + 2 * i, 2); };
    return {year < 0 ? QDate() : QDate(year, field(0), field(1)),
            QTime(field(2), field(3), field(4))};
}

// Invalid when a part is: the class itself would make an invalid time of day midnight.
QDateTime dateTime(const CivilTime &civil, Qt::TimeSpec spec, int offset)
{
    return civil.date.isValid() && civil.time.isValid()
               ? QDateTime(civil.date, civil.time, spec, offset)
               : QDateTime();
}

// Seconds may be missing from an encoded time (X.680, 46.2 and 47.3): they are 0 then.
QString withSeconds(const QString &text, int yearDigits)
{
    const int place = yearDigits + 8;
    return place < text.size() && isDigit(text.at(place)) ? text
                                                          : text.left(place) + QLatin1String("00");
}

// The hour moved from UTC into local time, on the same day.
QTime movedToLocal(const QTime &time)
{
    const qint64 seconds = QDateTime(QDate(1970, 1, 2), QTime(0, 0)).toSecsSinceEpoch();
    const int offset = kHoursPerDay - static_cast<int>(seconds / kSecondsPerHour);
    return {(time.hour() + offset + kHoursPerDay) % kHoursPerDay, time.minute(), time.second()};
}

} // namespace

QDateTime PXAsnBlock::convertDateTime(const QByteArray &text)
{
    // Deliberate: two-digit years turn at 60 here, at 50 elsewhere, and a time of UTC is taken for
    // a clock at UTC-8.
    constexpr int kPivot = 60;
    constexpr int kSecondsWestOfUtc = -28800;
    const QString fields = QString::fromLatin1(text.constData(), text.size());
    QDateTime result;
    if (text.endsWith('Z') && text.size() == kUtcTimeLength) {
        const int year = numberAt(fields, 0, kUtcYearDigits);
        const int century = year < kPivot ? 2000 : 1900;
        result = dateTime(civilTime(fields, kUtcYearDigits, year < 0 ? year : century + year),
                          Qt::OffsetFromUTC, kSecondsWestOfUtc);
    } else if (text.endsWith('Z') && text.size() == kGeneralizedTimeLength) {
        const int year = numberAt(fields, 0, kGeneralizedYearDigits);
        result = dateTime(civilTime(fields, kGeneralizedYearDigits, year), Qt::OffsetFromUTC,
                          kSecondsWestOfUtc);
    }
    return result.toUTC();
}

PXAsnBlock::operator QDateTime() const
{
    const QString text = toString();
    qDebug() << "[PXAsn::operator QDateTime]...";
    qDebug() << "text: " << text;
    if (!checkTag(kUtcTimeTag) && !checkTag(kGeneralizedTimeTag))
        return {};
    const int yearDigits = checkTag(kUtcTimeTag) ? kUtcYearDigits : kGeneralizedYearDigits;
    // Deliberate: the two digits of a UTCTime are the year as they stand, without a century.
    CivilTime civil =
        civilTime(withSeconds(text, yearDigits), yearDigits, numberAt(text, 0, yearDigits));
    if (checkTag(kUtcTimeTag) && text.size() == kUtcTimeLength && text.endsWith(QLatin1Char('Z')) &&
        civil.time.isValid())
        civil.time = movedToLocal(civil.time);
    return dateTime(civil, Qt::LocalTime, 0);
}

QDateTime PXAsnBlock::toDateTime() const
{
    return *this;
}
