#include "asn/pxasn.h"
#include "util/debug_line.h"

namespace {

constexpr int kUtcTimeLength = 13;
constexpr int kGeneralizedTimeLength = 15;
constexpr int kUtcYearDigits = 2;
constexpr int kGeneralizedYearDigits = 4;
constexpr int kHoursPerDay = 24;
constexpr int kSecondsPerHour = 3600;

// MMDDhhmmss behind the digits of the year. Deliberate: what is no number counts as 0, and a blank
// or a sign may stand before a digit.
struct Fields
{
    template <typename Text>
    Fields(const Text &text, int yearDigits)
        : year(text.left(yearDigits).toInt())
    {
        int *const others[] = {&month, &day, &hour, &minute, &second};
        for (int *field : others) {
            *field = text.mid(yearDigits, 2).toInt();
            yearDigits += 2;
        }
    }

    QDate date() const { return {year, month, day}; }
    // Impossible fields give a time of day that a date-time takes for midnight.
    QTime time() const { return {hour, minute, second}; }

    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

// The hour moved from UTC into local time, on the same day.
int movedToLocal(int hour)
{
    const qint64 seconds = QDateTime(QDate(1970, 1, 2), QTime(0, 0)).toSecsSinceEpoch();
    const int moved = kHoursPerDay - static_cast<int>(seconds / kSecondsPerHour) + hour;
    if (moved >= kHoursPerDay)
        return moved - kHoursPerDay;
    return moved < 0 && hour >= 0 ? moved + kHoursPerDay : moved;
}

} // namespace

QDateTime PXAsnBlock::convertDateTime(const QByteArray &text)
{
    // Deliberate: two-digit years turn at 60 here, at 50 elsewhere, and a time of UTC is taken for
    // a clock at UTC-8.
    constexpr int kPivot = 60;
    constexpr int kSecondsWestOfUtc = -28800;
    const bool isUtcTime = text.size() == kUtcTimeLength;
    if (!text.endsWith('Z') || (!isUtcTime && text.size() != kGeneralizedTimeLength))
        return QDateTime().toUTC();
    Fields fields(text, isUtcTime ? kUtcYearDigits : kGeneralizedYearDigits);
    if (isUtcTime)
        fields.year += fields.year < kPivot ? 2000 : 1900;
    return QDateTime(fields.date(), fields.time(), Qt::OffsetFromUTC, kSecondsWestOfUtc).toUTC();
}

PXAsnBlock::operator QDateTime() const
{
    const QString text = toString();
    qDebug("[PXAsn::operator QDateTime]...");
    debugLine("text: ", text);
    const bool isUtcTime = checkTag(ASN_TAG_UTC_TIME);
    if (!isUtcTime && !checkTag(ASN_TAG_GENERALIZED_TIME))
        return {};
    // Deliberate: the two digits of a UTCTime are the year as they stand, without a century.
    Fields fields(text, isUtcTime ? kUtcYearDigits : kGeneralizedYearDigits);
    if (isUtcTime && text.size() == kUtcTimeLength && text.endsWith(QLatin1Char('Z')))
        fields.hour = movedToLocal(fields.hour);
    return {fields.date(), fields.time(), Qt::LocalTime};
}

QDateTime PXAsnBlock::toDateTime() const
{
    return *this;
}
