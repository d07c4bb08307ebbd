#include "asn/pxasn.h"

#include <QDebug>

namespace {

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

// MMDDhhmmss behind the digits of the year. Impossible fields make the date or the time invalid.
// Deliberate: what is no number counts as 0, and a blank or a sign may stand before a digit.
template <typename Text>
CivilTime civilTime(const Text &text, int yearDigits, int year)
{
    const auto field = [&](int i) { return text.mid(yearDigits + 2 * i, 2).toInt(); };
    return {QDate(year, field(0), field(1)), QTime(field(2), field(3), field(4))};
}

// Invalid when a part is: the class itself would make an invalid time of day midnight.
QDateTime dateTime(const CivilTime &civil, Qt::TimeSpec spec, int offset)
{
    return civil.date.isValid() && civil.time.isValid()
               ? QDateTime(civil.date, civil.time, spec, offset)
               : QDateTime();
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
    QDateTime result;
    if (text.endsWith('Z') && text.size() == kUtcTimeLength) {
        const int year = text.left(kUtcYearDigits).toInt();
        result = dateTime(civilTime(text, kUtcYearDigits, year + (year < kPivot ? 2000 : 1900)),
                          Qt::OffsetFromUTC, kSecondsWestOfUtc);
    } else if (text.endsWith('Z') && text.size() == kGeneralizedTimeLength) {
        const int year = text.left(kGeneralizedYearDigits).toInt();
        result = dateTime(civilTime(text, kGeneralizedYearDigits, year), Qt::OffsetFromUTC,
                          kSecondsWestOfUtc);
    }
    return result.toUTC();
}

PXAsnBlock::operator QDateTime() const
{
    const QString text = toString();
    qDebug() << "[PXAsn::operator QDateTime]...";
    qDebug() << "text: " << text;
    if (!checkTag(ASN_TAG_UTC_TIME) && !checkTag(ASN_TAG_GENERALIZED_TIME))
        return {};
    const int yearDigits = checkTag(ASN_TAG_UTC_TIME) ? kUtcYearDigits : kGeneralizedYearDigits;
    // Deliberate: the two digits of a UTCTime are the year as they stand, without a century.
    const QString year = text.left(yearDigits);
    CivilTime civil = civilTime(text, yearDigits, year.toInt());
    if (checkTag(ASN_TAG_UTC_TIME) && text.size() == kUtcTimeLength &&
        text.endsWith(QLatin1Char('Z')) && civil.time.isValid())
        civil.time = movedToLocal(civil.time);
    return dateTime(civil, Qt::LocalTime, 0);
}

QDateTime PXAsnBlock::toDateTime() const
{
    return *this;
}
