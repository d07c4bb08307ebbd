#include "app/instance/instance_lock.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace {

constexpr mode_t kOwnerOnly = 0700;

// Opens the folder when it is a directory, not a link to one, that belongs to the user and is
// closed to everybody else. `errno` tells why not.
FileDescriptor openPrivate(const QString &path)
{
    FileDescriptor directory(::open(QFile::encodeName(path).constData(),
                                    O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    if (directory < 0 || ::fstat(directory, &status) != 0)
        return {};
    if (status.st_uid == ::geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0)
        return directory;
    errno = EPERM;
    return {};
}

bool fitsSocketAddress(const QString &path)
{
    return QFile::encodeName(path).size() < static_cast<int>(sizeof(sockaddr_un::sun_path));
}

// For users without a folder of the session's: one of their own beside those of all others.
QString ownTemporaryFolder()
{
    QString folder = QDir::tempPath(); // empty when the one that TMPDIR names is missing
    if (folder.isEmpty())
        folder = QStringLiteral("/tmp");
    QString path =
        QDir(folder).absolutePath() + QStringLiteral("/orvane-instance-%1").arg(::geteuid());
    ::mkdir(QFile::encodeName(path).constData(), kOwnerOnly);
    return path;
}

bool lockNow(int file)
{
    int result = 0;
    do
        result = ::flock(file, LOCK_EX | LOCK_NB);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

QString reason(const QString &path)
{
    const int error = errno;
    return path + QLatin1String(": ") + QString::fromLocal8Bit(std::strerror(error));
}

// The same for every process that gives the same identifier, and fit for a file name.
QString fileNameOf(const QString &id)
{
    constexpr int kDigits = 16;
    const QByteArray hash = QCryptographicHash::hash(id.toUtf8(), QCryptographicHash::Sha256);
    return QLatin1String("instance-") + QString::fromLatin1(hash.toHex().left(kDigits));
}

} // namespace

InstanceLock::InstanceLock(const QString &id)
    : m_name(fileNameOf(id))
{
    const QString runtime = QFile::decodeName(qgetenv("XDG_RUNTIME_DIR"));
    if (QDir::isAbsolutePath(runtime)) {
        m_folder = QDir::cleanPath(runtime); // a slash at the end would follow a link
        if (fitsSocketAddress(socketPath()))
            m_directory = openPrivate(m_folder);
    }
    if (m_directory >= 0)
        return;
    m_folder = ownTemporaryFolder();
    m_directory = openPrivate(m_folder);
    if (m_directory < 0)
        m_errorText = reason(m_folder);
}

InstanceLock::Result InstanceLock::acquire()
{
    if (m_directory < 0)
        return Result::Unavailable;

    const QString fileName = m_name + QLatin1String(".lock");
    // Children must not inherit it: they would hold the lock after this process.
    FileDescriptor file(::openat(m_directory, fileName.toLatin1().constData(),
                                 O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                                 S_IRUSR | S_IWUSR));
    if (file >= 0 && lockNow(file)) {
        m_file = std::move(file);
        return Result::Held;
    }
    if (file >= 0 && errno == EWOULDBLOCK)
        return Result::HeldByAnother;
    m_errorText = reason(m_folder + QLatin1Char('/') + fileName);
    return Result::Unavailable;
}

QString InstanceLock::socketPath() const
{
    return m_folder + QLatin1Char('/') + m_name + QLatin1String(".socket");
}

QString InstanceLock::errorText() const
{
    return m_errorText;
}
