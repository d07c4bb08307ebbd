#pragma once

#include <QObject>
#include <QString>

/// The core that a machine without the suite gets: it knows where it is installed, which client
/// configuration holds, and where messages go. Its methods are called by name.
class SignatureCore : public QObject
{
    Q_OBJECT

public:
    /// The directory whose "settings" folder holds the client configuration: "$PX_CONFIG_PATH";
    /// else the user's own "orvane" configuration directory, when it holds one; else the shipped
    /// one for the desktop's language.
    Q_INVOKABLE QString configPath() const;

    /// The parent of the directory this library lies in.
    Q_INVOKABLE QString installPath() const;

    /// To the logging category "orvane.core", which is off unless the user turns it on.
    Q_INVOKABLE void logDebug(const QString &text) const;
    Q_INVOKABLE void logError(const QString &text) const;

    /// 0: this core has no components.
    Q_INVOKABLE qint64 createComponentObject(const QString &progId, const QString &classId) const;
};
