#pragma once

#include "util/qt_compat.h"

#include <QIcon>
#include <QIconEngine>
#include <QString>

/// An icon whose file is read when a picture is first asked for, while the toolkit's own icons
/// decode theirs, in all sizes, as they are made. A file that can't be read is asked again each
/// time.
class IconFile : public QIconEngine
{
public:
    explicit IconFile(QString path);

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QSize actualSize(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) PX_CONST_BEFORE_QT_6 override;
    QIconEngine *clone() const override;

private:
    const QIcon &icon() const;

    QString m_path;
    mutable QIcon m_icon; ///< none as long as nothing was read
};
