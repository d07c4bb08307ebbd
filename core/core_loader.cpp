#include "core/core_loader.h"

#include <QLibrary>

namespace {

using InitFunction = void (*)();
using UninitFunction = void (*)();
using GetSignatureCoreFunction = int (*)(QObject **core);

QLibrary *_coreLib = nullptr;
UninitFunction _PX_Uninit = nullptr;
PXSignatureCoreAgent *s_coreagent = nullptr;

// The agent around the library's core object; null where it has none to give.
PXSignatureCoreAgent *newAgent(GetSignatureCoreFunction getCore)
{
    QObject *core = nullptr;
    if (getCore(&core) != 0 || !core)
        return nullptr;
    auto *agent = new PXSignatureCoreAgent(core);
    agent->setObjectName(QStringLiteral("Agent"));
    return agent;
}

} // namespace

bool qtcall_init()
{
    if (_coreLib)
        return true;

    _coreLib = new QLibrary(QDir::currentPath() + QLatin1String("/bin/PXSignatureCoreV10"));
    if (!_coreLib->load()) {
        delete _coreLib;
        _coreLib = nullptr;
        return false;
    }

    const auto init = reinterpret_cast<InitFunction>(_coreLib->resolve("PX_Init"));
    _PX_Uninit = reinterpret_cast<UninitFunction>(_coreLib->resolve("PX_Uninit"));
    const auto getCore =
        reinterpret_cast<GetSignatureCoreFunction>(_coreLib->resolve("PX_GetSignatureCore"));
    if (init && _PX_Uninit && getCore) {
        init();
        s_coreagent = newAgent(getCore);
        if (s_coreagent)
            return true;
    } else {
        // Nothing of it has run yet. Once "PX_Init" was called it may have left threads or exit
        // handlers behind, so from then on its code stays mapped.
        _coreLib->unload();
    }

    delete _coreLib;
    _coreLib = nullptr;
    _PX_Uninit = nullptr;
    return false;
}

void qtcall_destroy()
{
    delete s_coreagent;
    s_coreagent = nullptr;
    // "PX_Uninit" is deliberately not called: the core is never told to shut down.
    _PX_Uninit = nullptr;
    delete _coreLib;
    _coreLib = nullptr;
}

PXSignatureCoreAgent *getSignatureCore()
{
    return s_coreagent;
}
