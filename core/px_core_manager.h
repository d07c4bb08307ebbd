#pragma once

#include "core/core_loader.h"

#include <QString>

/// The process's tie to the suite it belongs to: it makes the install directory the working
/// directory and loads the suite's signature core, when there is one.
///
/// GUI thread only; the singletons are created on first use without locks.
class PXCoreManager
{
public:
    /// Takes the canonical parent of the executable's directory as install path, changes the
    /// working directory to it, prints it and calls `qtcall_init()`. Needs an application object.
    PXCoreManager();
    /// Calls `qtcall_destroy()`: the core agent and the signature-manager agent go with the
    /// manager.
    ~PXCoreManager();

    PXCoreManager(const PXCoreManager &) = delete;
    PXCoreManager &operator=(const PXCoreManager &) = delete;

    /// The install path, absolute, without a separator at its end.
    QString GetPath() const;

    /// The agent around the signature-manager component, created by the first call and owned here.
    /// Never null; without a component it has no target and its calls do nothing.
    PXSignatureManagerAgent *GetSignatureManager();

    /// Hands "[Debug:51]" or "[Error:56]" and the message to the core's log; nothing without a
    /// core.
    void Debug(const QString &message);
    void Error(const QString &message);

private:
    QString m_installPath;
    PXSignatureManagerAgent *m_signatureManager = nullptr; // owned
};

/// The single manager, constructed by the first call and kept until the process ends. Never null.
PXCoreManager *GetCoreManager();

/// A component made by the core and owned by it; null without a core or when it knows none. How
/// long it lives is the core's affair.
QObject *createComponentObject(const QString &progId, const QString &classId);
