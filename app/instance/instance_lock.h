#pragma once

#include "util/file_descriptor.h"

#include <QString>

/// The lock that decides which process is the running instance: a file in a folder that is open to
/// its user alone, locked for the life of the process and never removed. The system releases the
/// lock when the process ends, so a killed instance leaves nothing that blocks the next.
class InstanceLock
{
public:
    enum class Result {
        Held,          ///< by this process
        HeldByAnother, ///< by another process
        Unavailable,   ///< nobody can tell: there is no private folder, or it can't be locked there
    };

    /// `id` is the name that instances share. Finds the folder, but takes no lock yet.
    explicit InstanceLock(const QString &id);

    /// Tries to take the lock, at once.
    Result acquire();

    /// Where the lock's holder listens: an absolute path beside the lock file.
    QString socketPath() const;

    /// Why the last `acquire` gave `Unavailable`.
    QString errorText() const;

private:
    QString m_name;
    QString m_folder;
    FileDescriptor m_directory;
    FileDescriptor m_file;
    QString m_errorText;
};
