#include "app/look/pixels.h"

#include <QImage>
#include <QResource>
#include <QtEndian>

namespace pixels {

namespace {

QByteArray content(const QString &name)
{
    if (Q_BYTE_ORDER != Q_LITTLE_ENDIAN)
        return {};
    return QResource(QStringLiteral(":/img/%1.pixels").arg(name)).uncompressedData();
}

} // namespace

QPixmap picture(const QString &name)
{
    constexpr int kHeader = 2 * sizeof(qint32);
    const QByteArray all = content(name);
    if (all.size() < kHeader)
        return {};
    const auto width = qFromLittleEndian<qint32>(all.constData());
    const auto height = qFromLittleEndian<qint32>(all.constData() + sizeof(qint32));
    const auto *bits = reinterpret_cast<const uchar *>(all.constData()) + kHeader;
    Q_ASSERT(all.size() == kHeader + 4 * width * height);
    const QImage image(bits, width, height, 4 * width, QImage::Format_ARGB32_Premultiplied);
    // The program's own octets, where they lie as numbers must.
    const bool isAligned = reinterpret_cast<quintptr>(bits) % alignof(QRgb) == 0;
    return QPixmap::fromImage(isAligned ? image : image.copy());
}

QByteArray icon()
{
    return content(QStringLiteral("res/stamp"));
}

} // namespace pixels
