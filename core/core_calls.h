#pragma once

#include <QString>
#include <QtGlobal>

/// The core's by-name methods as functions: the one place that knows their names. Each does
/// nothing when no core is loaded and then returns an empty text, or 0.
namespace core_calls {

/// The directory whose "settings" folder holds the suite's client configuration.
QString configPath();

/// The directory that holds "bin", "languages" and "settings".
QString installPath();

void logDebug(const QString &text);
void logError(const QString &text);

/// The address of a new component, as the core returns it; 0 when it could not be made.
qint64 createComponentObject(const QString &progId, const QString &classId);

/// Sends the progress text "[operation:line]suffix" to `logDebug`, for instance "[open:40] start".
void sendProgress(const char *operation, int line, const char *suffix);

/// "[operation:line]message", the form of every text that is sent to the core's log.
QString taggedMessage(const char *operation, int line, const QString &message);

} // namespace core_calls
