#include "core/core_calls.h"

#include "core/core_loader.h"

#include <QStringBuilder>

namespace core_calls {
namespace {

template <typename Result, typename... Arguments>
Result callCore(const char *method, Result preset, const Arguments &...arguments)
{
    if (PXSignatureCoreAgent *core = getSignatureCore())
        core->invokeHelper(QLatin1String(method), &preset, &arguments...);
    return preset;
}

template <typename... Arguments>
void callCoreForEffect(const char *method, const Arguments &...arguments)
{
    if (PXSignatureCoreAgent *core = getSignatureCore())
        core->invokeHelper(QLatin1String(method), nullptr, &arguments...);
}

} // namespace

QString configPath()
{
    return callCore("configPath", QString());
}

QString installPath()
{
    return callCore("installPath", QString());
}

void logDebug(const QString &text)
{
    callCoreForEffect("logDebug", text);
}

void logError(const QString &text)
{
    callCoreForEffect("logError", text);
}

qint64 componentAddress(const QString &progId, const QString &classId)
{
    return callCore("createComponentObject", qint64(0), progId, classId);
}

void sendProgress(const char *operation, int line, const char *suffix)
{
    if (getSignatureCore())
        logDebug(taggedMessage(operation, line, QLatin1String(suffix)));
}

QString taggedMessage(const char *operation, int line, const QString &message)
{
    return QLatin1Char('[') % QLatin1String(operation) % QLatin1Char(':') % QString::number(line) %
           QLatin1Char(']') % message;
}

} // namespace core_calls
