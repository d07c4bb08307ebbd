#pragma once

#include <cstdarg>
#include <QDir>
#include <QObject>
#include <QString>

/// An agent around an object of a library that is not linked: it calls the object's invokable
/// methods by name through the meta-object system and traces every step of a call into the suite's
/// log, when the suite's temporary directory exists.
///
/// GUI thread only.
class Q_Dispatch : public QObject
{
    Q_OBJECT

public:
    /// `target` is borrowed and may be null; it must outlive the agent or be replaced before.
    explicit Q_Dispatch(QObject *target = nullptr, QObject *parent = nullptr);
    ~Q_Dispatch() override;

    /// The directory that holds the trace log: the suite's own, "orvane" below the temporary
    /// directory, unless set. It is never created here.
    void setLogDirectory(const QDir &directory);
    /// Borrowed, as in the constructor; null takes calls away.
    void setTarget(QObject *target);
    /// What was given, and not known to live still.
    QObject *target() const;

    /// Calls the first method named `methodName` (blanks around it are ignored; overloads are not
    /// told apart) on the target. `result` is the address of a variable of the method's return
    /// type, or null when the return value is not wanted; each further argument is the address of
    /// one argument value, in the method's parameter order. Count and pointed-to types are trusted.
    ///
    /// Nothing is reported: without a target, with an unknown method, or with a parameter type
    /// that is not accepted, `*result` stays as the caller preset it. A call compares the names of
    /// all the target's methods and writes a handful of log lines: for what is rare.
    void invokeHelper(const QString &methodName, void *result, ...);
    /// The same with a list that the caller started and will end; how far it was read is not told.
    void invokeHelperV(const QString &methodName, void *result, va_list args);

    /// Appends one line "hh:mm:ss: message" to "tessera_core.log" in the log directory. It does
    /// nothing where there is no such directory, where it, or a link that leads to it, belongs to
    /// another user, and where the file is no regular file or has a second name.
    void Corelog(const QString &message);

    /// Whether a method with a parameter of this type can be called: a name of the fixed list, or
    /// one that ends in "*" or "]". `typeName` is as the meta-object reports it.
    static bool acceptsParameterType(const QByteArray &typeName);

private:
    QByteArray m_logDirectory; ///< as the file system has it
    QObject *m_target;
};

/// Base of the agents around components that the core creates.
class Q_ComponentLib : public Q_Dispatch
{
    Q_OBJECT

public:
    using Q_Dispatch::Q_Dispatch;
};

/// The agent around the core object itself.
class PXSignatureCoreAgent : public Q_Dispatch
{
    Q_OBJECT

public:
    using Q_Dispatch::Q_Dispatch;
};

/// The agent around the signature-manager component.
class PXSignatureManagerAgent : public Q_ComponentLib
{
    Q_OBJECT

public:
    using Q_ComponentLib::Q_ComponentLib;
};
