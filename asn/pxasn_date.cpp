#include "asn/pxasn.h"

#include <QDebug>

namespace {

constexpr int kUtcTimeTag = 0x17;
constexpr int kGeneralizedTimeTag = 0x18;
constexpr int kUtcTimeLength = 13;
constexpr int kGeneralizedTimeLength = 15;
constexpr int kSecondsPerHour = 3600;

// Month to second, two digits each from `position` on.
struct Clock
{
    int month;
    int day;
    int hour;
    int minute;
    int second;
};

template <typename Text>
Clock clockAt(const Text &text, int position)
{
    const auto number = [&](int i) { return text.mid(position + 2 * i, 2).toInt(); };
    return {number(0), number(1), number(2), number(3), number(4)};
}

// Invalid, never midnight, when a field is impossible.
QDateTime dateTime(int year, const Clock &clock, Qt::TimeSpec spec, int offset)
{
    const QDate date(year, clock.month, clock.day);
    const QTime time(clock.hour, clock.minute, clock.second);
    return date.isValid() && time.isValid() ? QDateTime(date, time, spec, offset) : QDateTime();
}

// The hour moved into local time, the day left as it is.
int localHour(int hour)
{
    const qint64 seconds = QDateTime(QDate(1970, 1, 2), QTime(0, 0)).toSecsSinceEpoch();
    const int moved = 24 - static_cast<int>(seconds / kSecondsPerHour) + hour;
    return moved >= 24 ? moved - 24 : moved;
}

} // namespace

QDateTime PXAsnBlock::convertDateTime(const QByteArray &text)
{
    // Deliberate: two-digit years turn at 60 here, at 50 elsewhere, and a time of UTC is taken for
    // a clock at UTC-8.
    constexpr int kPivot = 60;
    constexpr int kSecondsWestOfUtc = -28800;
    QDateTime time;
    if (text.endsWith('Z') && text.size() == kUtcTimeLength) {
        const int year = text.mid(0, 2).toInt();
        time = dateTime(year + (year < kPivot ? 2000 : 1900), clockAt(text, 2), Qt::OffsetFromUTC,
                        kSecondsWestOfUtc);
    } else if (text.endsWith('Z') && text.size() == kGeneralizedTimeLength) {
        time = dateTime(text.mid(0, 4).toInt(), clockAt(text, 4), Qt::OffsetFromUTC,
                        kSecondsWestOfUtc);
    }
    return time.toUTC();
}

PXAsnBlock::operator QDateTime() const
{
    const QString text = toString();
    qDebug() << "[PXAsn::operator QDateTime]...";
    qDebug() << "text: " << text;
    if (checkTag(kUtcTimeTag)) {
        Clock clock = clockAt(text, 2);
        if (text.size() == kUtcTimeLength && text.endsWith(QLatin1Char('Z')))
            clock.hour = localHour(clock.hour);
        return dateTime(text.mid(0, 2).toInt(), clock, Qt::LocalTime, 0);
    }
    if (checkTag(kGeneralizedTimeTag))
        return dateTime(text.mid(0, 4).toInt(), clockAt(text, 4), Qt::LocalTime, 0);
    return {};
}

QDateTime PXAsnBlock::toDateTime() const
{
    return *this;
}
