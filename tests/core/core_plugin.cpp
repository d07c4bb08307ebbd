// A core for tests. It tells what is called on standard output, so that the order shows, and lacks
// or spoils what the build asks for: WITHOUT_INIT, WITHOUT_UNINIT, WITHOUT_GET_SIGNATURE_CORE,
// FAILING_STATUS, NULL_OBJECT.

#include <cstdio>
#include <QCoreApplication>
#include <QObject>
#include <QString>

namespace {

void say(const char *what, const QString &first = QString(), const QString &second = QString())
{
    std::printf("core: %s %s %s\n", what, first.toUtf8().constData(), second.toUtf8().constData());
}

} // namespace

class FabricatedCore : public QObject
{
    Q_OBJECT

public:
    ~FabricatedCore() override { say("deleted"); }

    Q_INVOKABLE QString configPath() const { return QStringLiteral("/the/configuration"); }
    Q_INVOKABLE QString installPath() const { return QStringLiteral("/the/installation"); }
    Q_INVOKABLE void logDebug(const QString &text) const { say("logDebug", text); }
    Q_INVOKABLE void logError(const QString &text) const { say("logError", text); }
    Q_INVOKABLE qint64 createComponentObject(const QString &progId, const QString &classId)
    {
        say("createComponentObject", progId, classId);
        if (qEnvironmentVariableIsSet("NEXT_TMPDIR"))
            qputenv("TMPDIR", qgetenv("NEXT_TMPDIR"));
        if (progId == QLatin1String("unknown") || qEnvironmentVariableIsSet("NO_COMPONENT"))
            return 0;
        m_component.setObjectName(QStringLiteral("component ") + classId);
        return reinterpret_cast<qint64>(&m_component);
    }

private:
    QObject m_component;
};

extern "C" {

#ifndef WITHOUT_INIT
Q_DECL_EXPORT void PX_Init()
{
    say("PX_Init");
}
#endif

#ifndef WITHOUT_UNINIT
Q_DECL_EXPORT void PX_Uninit()
{
    say("PX_Uninit");
}
#endif

#ifndef WITHOUT_GET_SIGNATURE_CORE
Q_DECL_EXPORT int PX_GetSignatureCore(QObject **core)
{
    say("PX_GetSignatureCore", *core ? QStringLiteral("preset") : QStringLiteral("null"));
#ifndef NULL_OBJECT
    static auto *const only = new FabricatedCore; // never deleted, so that "deleted" tells
    *core = only;
#endif
#ifdef FAILING_STATUS
    return 1;
#else
    return 0;
#endif
}
#endif

} // extern "C"

#include "core_plugin.moc"
