#include <dlfcn.h>
#include <QDebug>
#include <QObject>

/// A plug-in of the kind that the build says, by its metadata: it is taken for one, loaded and
/// asked, and tells on the debug stream where it lies. There is nothing behind the kind's
/// interface.
class Decoy : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PX_DECOY_KIND FILE "decoy.json")
};

[[gnu::constructor]] static void tell()
{
    Dl_info library = {};
    if (::dladdr(reinterpret_cast<void *>(&tell), &library) != 0)
        qDebug("decoy %s", library.dli_fname);
}

#include "decoy.moc"
