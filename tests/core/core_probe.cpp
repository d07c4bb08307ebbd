// core_probe WORD...: does what each word says, in turn, and tells about it on standard output.

#include "core/core_calls.h"
#include "core/px_core_manager.h"
#include "core/start_directory.h"

#include <cstdio>
#include <functional>
#include <memory>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QPointer>

namespace {

void say(const QString &text)
{
    std::printf("%s\n", text.toUtf8().constData());
}

QString yesOrNo(bool yes)
{
    return yes ? QStringLiteral("yes") : QStringLiteral("no");
}

QString describe(const QObject *object)
{
    return object ? QLatin1Char('"') + object->objectName() + QLatin1Char('"')
                  : QStringLiteral("null");
}

bool isMapped(const char *library)
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains(library);
}

void describeSignatureManager()
{
    PXSignatureManagerAgent *agent = GetCoreManager()->GetSignatureManager();
    say(QStringLiteral("manager %1 of %2").arg(describe(agent), describe(agent->target())));
    say(QLatin1String("the same ") + yesOrNo(agent == GetCoreManager()->GetSignatureManager()));
}

const QHash<QString, std::function<void()>> &words()
{
    static const QHash<QString, std::function<void()>> all = {
        {QStringLiteral("manager"), [] { GetCoreManager(); }},
        {QStringLiteral("init"), [] { say(QLatin1String("init ") + yesOrNo(qtcall_init())); }},
        {QStringLiteral("agent"),
         [] { say(QLatin1String("agent ") + describe(getSignatureCore())); }},
        {QStringLiteral("target"),
         [] { say(QLatin1String("target ") + yesOrNo(getSignatureCore()->target() != nullptr)); }},
        {QStringLiteral("cwd"), [] { say(QLatin1String("cwd ") + QDir::currentPath()); }},
        {QStringLiteral("path"), [] { say(QLatin1String("path ") + GetCoreManager()->GetPath()); }},
        {QStringLiteral("start"),
         [] { say(QLatin1String("start ") + QFile::decodeName(startDirectory())); }},
        {QStringLiteral("mapped"),
         [] { say(QLatin1String("mapped ") + yesOrNo(isMapped("PXSignatureCoreV10"))); }},
        {QStringLiteral("config"),
         [] { say(QLatin1String("config ") + core_calls::configPath()); }},
        {QStringLiteral("install"),
         [] { say(QLatin1String("install ") + core_calls::installPath()); }},
        {QStringLiteral("debug"), [] { GetCoreManager()->Debug(QString::fromUtf8("訊息 %1")); }},
        {QStringLiteral("error"), [] { GetCoreManager()->Error(QStringLiteral("message %2")); }},
        {QStringLiteral("progress"), [] { core_calls::sendProgress("open", 40, " start"); }},
        {QStringLiteral("component"),
         [] {
             say(QLatin1String("component ") +
                 describe(createComponentObject(QStringLiteral("prog"), QStringLiteral("class"))));
         }},
        {QStringLiteral("unknown"),
         [] {
             say(QLatin1String("component ") +
                 describe(createComponentObject(QStringLiteral("unknown"), QString())));
         }},
        {QStringLiteral("signatureManager"), describeSignatureManager},
        {QStringLiteral("callManager"),
         [] {
             GetCoreManager()->GetSignatureManager()->invokeHelper(QStringLiteral("any"), nullptr);
         }},
        {QStringLiteral("another"),
         [] {
             const PXCoreManager *first = GetCoreManager();
             std::make_unique<PXCoreManager>();
             say(QLatin1String("the same ") + yesOrNo(GetCoreManager() == first));
         }},
        {QStringLiteral("destroy"), [] { qtcall_destroy(); }},
        {QStringLiteral("destroyAgent"),
         [] {
             const QPointer<QObject> agent = getSignatureCore();
             qtcall_destroy();
             say(QLatin1String("agent gone ") + yesOrNo(!agent));
         }},
        {QStringLiteral("delete"),
         [] {
             const QPointer<QObject> agent = GetCoreManager()->GetSignatureManager();
             delete GetCoreManager();
             say(QLatin1String("manager gone ") + yesOrNo(!agent));
         }},
    };
    return all;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    for (const QString &word : arguments)
        words().value(word)();
    return 0;
}
