#pragma once

#include <any>
#include <QBitArray>
#include <QByteArray>
#include <QDateTime>
#include <QEasingCurve>
#include <QLine>
#include <QLocale>
#include <QObject>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>

/// A type that no list knows.
struct Unlisted
{
    int value = 0;
};

// NOLINTBEGIN(performance-unnecessary-value-param): by value is what they are here for.

/// An object with a method for every parameter type, to be called by name. Each keeps its value.
class TypedTarget : public QObject
{
    Q_OBJECT

public:
    std::any received;

    Q_INVOKABLE void takeChar(char value) { received = value; }
    Q_INVOKABLE void takeShort(short value) { received = value; }
    Q_INVOKABLE void takeInt(int value) { received = value; }
    Q_INVOKABLE void takeLong(long value) { received = value; }
    Q_INVOKABLE void takeUnsignedChar(unsigned char value) { received = value; }
    Q_INVOKABLE void takeUnsignedShort(unsigned short value) { received = value; }
    Q_INVOKABLE void takeUnsignedInt(unsigned int value) { received = value; }
    Q_INVOKABLE void takeUnsignedLong(unsigned long value) { received = value; }
    Q_INVOKABLE void takeUchar(uchar value) { received = value; }
    Q_INVOKABLE void takeUshort(ushort value) { received = value; }
    Q_INVOKABLE void takeUint(uint value) { received = value; }
    Q_INVOKABLE void takeUlong(ulong value) { received = value; }
    Q_INVOKABLE void takeFloat(float value) { received = value; }
    Q_INVOKABLE void takeDouble(double value) { received = value; }
    Q_INVOKABLE void takeBool(bool value) { received = value; }
    Q_INVOKABLE void takeQint8(qint8 value) { received = value; }
    Q_INVOKABLE void takeQint16(qint16 value) { received = value; }
    Q_INVOKABLE void takeQint32(qint32 value) { received = value; }
    Q_INVOKABLE void takeQint64(qint64 value) { received = value; }
    Q_INVOKABLE void takeQlonglong(qlonglong value) { received = value; }
    Q_INVOKABLE void takeQuint8(quint8 value) { received = value; }
    Q_INVOKABLE void takeQuint16(quint16 value) { received = value; }
    Q_INVOKABLE void takeQuint32(quint32 value) { received = value; }
    Q_INVOKABLE void takeQuint64(quint64 value) { received = value; }
    Q_INVOKABLE void takeQulonglong(qulonglong value) { received = value; }
    Q_INVOKABLE void takeHandle(Qt::HANDLE value) { received = value; }
    Q_INVOKABLE void takeQString(QString value) { received = value; }
    Q_INVOKABLE void takeQStringReference(const QString &value) { received = value; }
    Q_INVOKABLE void takeQStringList(QStringList value) { received = value; }
    Q_INVOKABLE void takeQByteArray(QByteArray value) { received = value; }
    Q_INVOKABLE void takeQBitArray(QBitArray value) { received = value; }
    Q_INVOKABLE void takeQLatin1String(QLatin1String value) { received = value; }
    Q_INVOKABLE void takeQChar(QChar value) { received = value; }
    Q_INVOKABLE void takeQDate(QDate value) { received = value; }
    Q_INVOKABLE void takeQTime(QTime value) { received = value; }
    Q_INVOKABLE void takeQDateTime(QDateTime value) { received = value; }
    Q_INVOKABLE void takeQSize(QSize value) { received = value; }
    Q_INVOKABLE void takeQSizeF(QSizeF value) { received = value; }
    Q_INVOKABLE void takeQPoint(QPoint value) { received = value; }
    Q_INVOKABLE void takeQPointF(QPointF value) { received = value; }
    Q_INVOKABLE void takeQLine(QLine value) { received = value; }
    Q_INVOKABLE void takeQLineF(QLineF value) { received = value; }
    Q_INVOKABLE void takeQRect(QRect value) { received = value; }
    Q_INVOKABLE void takeQRectF(QRectF value) { received = value; }
    Q_INVOKABLE void takeQUrl(QUrl value) { received = value; }
    Q_INVOKABLE void takeQLocale(QLocale value) { received = value; }
    Q_INVOKABLE void takeQEasingCurve(QEasingCurve value) { received = value; }
    Q_INVOKABLE void takeGlobalColor(Qt::GlobalColor value) { received = value; }
    Q_INVOKABLE void takeQVariant(QVariant value) { received = value; }

    Q_INVOKABLE void takePointer(QObject *value) { received = value; }
    Q_INVOKABLE void takeText(const char *value) { received = value; }
    Q_INVOKABLE void takeArray(int value[3]) { received = value[2]; }

    Q_INVOKABLE void takeUnlisted(Unlisted value) { received = value; }
    Q_INVOKABLE void takeQObjectList(QObjectList value) { received = value; }
    Q_INVOKABLE void takeLastUnlisted(int first, QString, Unlisted) { received = first; }
};

// NOLINTEND(performance-unnecessary-value-param)
