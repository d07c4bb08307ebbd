#include "app/look/icon_file.h"

#include <utility>

IconFile::IconFile(QString path)
    : m_path(std::move(path))
{
}

void IconFile::paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state)
{
    icon().paint(painter, rect, Qt::AlignCenter, mode, state);
}

QPixmap IconFile::pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state)
{
    return icon().pixmap(size, mode, state);
}

QSize IconFile::actualSize(const QSize &size, QIcon::Mode mode, QIcon::State state)
{
    return icon().actualSize(size, mode, state);
}

QList<QSize> IconFile::availableSizes(QIcon::Mode mode, QIcon::State state) PX_CONST_BEFORE_QT_6
{
    return icon().availableSizes(mode, state);
}

QIconEngine *IconFile::clone() const
{
    return new IconFile(*this);
}

const QIcon &IconFile::icon() const
{
    if (m_icon.availableSizes().isEmpty())
        m_icon = QIcon(m_path);
    return m_icon;
}
