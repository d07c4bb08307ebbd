#pragma once

#include <QString>
#include <QtGlobal>

/// The core's by-name methods as functions: the one place that knows their names. Each does
/// nothing when no core is loaded, or it knows no such method, and then returns an empty text, or
/// 0. While the suite's log directory exists, a call costs a handful of lines there, for each of
/// which the log is opened anew. GUI thread only.
namespace core_calls {

/// The directory whose "settings" folder holds the suite's client configuration.
QString configPath();

/// The directory that holds "bin", "languages" and "settings".
QString installPath();

void logDebug(const QString &text);
void logError(const QString &text);

/// The core's "createComponentObject": the address of a new component, a `QObject` that the core
/// owns, as the number that the core gives for it; 0 when it could not be made. Callers want
/// `createComponentObject` of px_core_manager.h.
qint64 componentAddress(const QString &progId, const QString &classId);

/// Sends the progress text "[operation:line]suffix" to `logDebug`, for instance "[open:40] start";
/// the text isn't made when no core is loaded.
void sendProgress(const char *operation, int line, const char *suffix);

/// "[operation:line]message", the form of every text that is sent to the core's log.
QString taggedMessage(const char *operation, int line, const QString &message);

} // namespace core_calls
