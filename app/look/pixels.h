#pragma once

#include <QByteArray>
#include <QPixmap>
#include <QString>

/// Pictures that lie in the program as they do in memory, and need no decoding at the start: of
/// each the width, the height and the pixels from the top, numbers of 32 bits that begin with the
/// lowest octet. Where the machine has numbers the other way round there are none, and the files of
/// the same name must do.
namespace pixels {

/// The picture ":/img/NAME.pixels", null when there is none.
QPixmap picture(const QString &name);

/// The program's icon as an X server takes it, all its sizes one after another; empty when there is
/// none. Not premultiplied, as the pictures are. No memory is taken for it.
QByteArray icon();

} // namespace pixels
