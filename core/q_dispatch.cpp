#include "core/q_dispatch.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <iterator>
#include <QMetaMethod>
#include <QTime>
#include <QVarLengthArray>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char *kAcceptedTypes[] = {
    "char",          "short",         "int",     "long",        "unsigned char", "unsigned short",
    "unsigned int",  "unsigned long", "uchar",   "ushort",      "uint",          "ulong",
    "float",         "double",        "bool",    "qint8",       "qint16",        "qint32",
    "qint64",        "qlonglong",     "quint8",  "quint16",     "quint32",       "quint64",
    "qulonglong",    "Qt::HANDLE",    "QString", "QStringList", "QByteArray",    "QBitArray",
    "QLatin1String", "QChar",         "QDate",   "QTime",       "QDateTime",     "QSize",
    "QSizeF",        "QPoint",        "QPointF", "QLine",       "QLineF",        "QRect",
    "QRectF",        "QUrl",          "QLocale", "QRegExp",     "QEasingCurve",  "Qt::GlobalColor",
    "QVariant",
    "signed char", // what the meta-object of today reports for a qint8
};

int findMethodIndex(const QMetaObject &metaObject, const QString &methodName)
{
    const QByteArray name = methodName.trimmed().toUtf8();
    if (name.isEmpty())
        return -1;
    const QByteArray prefix = name + '(';
    for (int i = 0; i < metaObject.methodCount(); ++i) {
        const QMetaMethod method = metaObject.method(i);
        // A signature is put together each time it is asked for, a name is not.
        if (name.startsWith(method.name()) && method.methodSignature().startsWith(prefix))
            return i;
    }
    return -1;
}

bool isOwn(const struct stat &status)
{
    return status.st_uid == ::geteuid();
}

bool isOwnName(const QByteArray &path)
{
    struct stat status = {};
    return ::lstat(path.constData(), &status) == 0 && isOwn(status);
}

// The directory is looked for where every user may write: it must be the user's own, and so must a
// link that leads to it. -1 otherwise.
int openOwnDirectory(const QByteArray &path)
{
    if (!isOwnName(path))
        return -1;
    struct stat status = {};
    const int directory = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory < 0 || (::fstat(directory, &status) == 0 && isOwn(status)))
        return directory;
    ::close(directory);
    return -1;
}

// A planted link of either kind, FIFO or device must neither redirect the line nor make the viewer
// wait.
FILE *openRegularFileForAppend(int directory, const char *name)
{
    constexpr mode_t kReadWriteByAll = 0666;
    const int fd =
        ::openat(directory, name, O_RDWR | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                 kReadWriteByAll);
    if (fd < 0)
        return nullptr;
    struct stat status = {};
    FILE *file = nullptr;
    if (::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1)
        file = ::fdopen(fd, "a+");
    if (!file)
        ::close(fd);
    return file;
}

} // namespace

Q_Dispatch::Q_Dispatch(QObject *target, QObject *parent)
    : QObject(parent)
    , m_logDirectory(QFile::encodeName(QDir::tempPath() + QLatin1String("/orvane")))
    , m_target(target)
{
}

Q_Dispatch::~Q_Dispatch() = default;

void Q_Dispatch::setLogDirectory(const QDir &directory)
{
    m_logDirectory = QFile::encodeName(directory.path());
}

void Q_Dispatch::setTarget(QObject *target)
{
    m_target = target;
}

QObject *Q_Dispatch::target() const
{
    return m_target;
}

bool Q_Dispatch::acceptsParameterType(const QByteArray &typeName)
{
    return std::any_of(std::begin(kAcceptedTypes), std::end(kAcceptedTypes),
                       [&](const char *accepted) { return typeName == accepted; }) ||
           typeName.endsWith('*') || typeName.endsWith(']');
}

void Q_Dispatch::invokeHelper(const QString &methodName, void *result, ...)
{
    va_list args;
    va_start(args, result);
    invokeHelperV(methodName, result, args);
    va_end(args);
}

void Q_Dispatch::invokeHelperV(const QString &methodName, void *result, va_list args)
{
    // Mostly there is nowhere to write to, and then no line needs to be made.
    const auto trace = [this, isTraced = isOwnName(m_logDirectory)](const auto &...parts) {
        if (isTraced)
            Corelog((QString() + ... + parts));
    };
    trace(QLatin1String("methodName="), methodName);
    if (!m_target)
        return;

    const int methodIndex = findMethodIndex(*m_target->metaObject(), methodName);
    if (methodIndex < 0) {
        trace(QLatin1String("QTCORE____ERROR: findMethodIndex fail!!!cnt"));
        return;
    }

    const QList<QByteArray> parameterTypes =
        m_target->metaObject()->method(methodIndex).parameterTypes();
    trace(QLatin1String("methodName="), methodName, QLatin1String("::paramCount="),
          QString::number(parameterTypes.size()));

    QVarLengthArray<void *, 8> callArguments;
    callArguments.append(result);
    for (const QByteArray &type : parameterTypes) {
        trace(QLatin1String("paramTypeName="), QString::fromUtf8(type));
        if (!acceptsParameterType(type)) {
            trace(QString::fromUtf8("参数错误"));
            return;
        }
        // The caller started the list. NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
        callArguments.append(va_arg(args, void *));
    }

    trace(QLatin1String("QMetaObject::metacall call in"));
    QMetaObject::metacall(m_target, QMetaObject::InvokeMetaMethod, methodIndex,
                          callArguments.data());
    // Asks anew: the method may have made the directory.
    Corelog(QLatin1String("QMetaObject::metacall call end"));
}

void Q_Dispatch::Corelog(const QString &message)
{
    const int directory = openOwnDirectory(m_logDirectory);
    if (directory < 0)
        return;
    FILE *file = openRegularFileForAppend(directory, "tessera_core.log");
    ::close(directory);
    if (!file)
        return;
    const QByteArray time = QTime::currentTime().toString(Qt::TextDate).toUtf8();
    const QByteArray line = (message + QLatin1Char('\n')).toUtf8();
    std::fprintf(file, "%s: %s", time.constData(), line.constData());
    std::fclose(file);
}
