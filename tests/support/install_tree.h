#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

/// An install tree of a test's own, with copies of the programs and libraries that the test puts
/// there, so that they find what lies around them. Beside it lies an empty directory to start in.
class InstallTree
{
public:
    struct Outcome
    {
        bool ended = false; ///< by itself, in time
        int status = -1;
        QByteArray output;
        QByteArray errors;
    };

    /// `name` is the tree's directory.
    explicit InstallTree(const QString &name = QStringLiteral("install"))
        : m_path(QFileInfo(m_root.path()).canonicalFilePath() + QLatin1Char('/') + name)
    {
        QDir().mkpath(m_path + QLatin1String("/bin"));
        QDir().mkpath(elsewhere());
        // Nothing of the user's decides what a program in the tree sees.
        environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TMPDIR"), temporary());
        environment.insert(QStringLiteral("HOME"), elsewhere());
        environment.remove(QStringLiteral("XDG_CONFIG_HOME"));
        environment.remove(QStringLiteral("PX_CONFIG_PATH"));
        QDir().mkpath(temporary());
    }

    /// Absolute and canonical; `relative` is below the tree.
    QString path(const char *relative = "") const
    {
        return QDir::cleanPath(m_path + QLatin1Char('/') + QLatin1String(relative));
    }
    QString elsewhere() const { return m_root.filePath(QStringLiteral("elsewhere")); }
    QString temporary() const { return m_root.filePath(QStringLiteral("temporary")); }

    /// Puts a copy of the file into the tree.
    bool add(const QString &file, const char *relative) const
    {
        QDir().mkpath(QFileInfo(path(relative)).path());
        return QFile::copy(file, path(relative));
    }
    bool addProgram(const char *name) const
    {
        const QString program = QLatin1String("bin/") + QLatin1String(name);
        return add(QLatin1String(PX_BINARY_DIR "/tests/") + program,
                   program.toLatin1().constData());
    }
    bool write(const char *relative, const QByteArray &content) const
    {
        QDir().mkpath(QFileInfo(path(relative)).path());
        QFile file(path(relative));
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }

    /// Runs a program of the tree's bin/ from the empty directory.
    Outcome run(const char *program, const QStringList &arguments) const
    {
        constexpr int kPatienceMs = 60000;
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(elsewhere());
        process.start(path("bin/") + QLatin1Char('/') + QLatin1String(program), arguments);
        process.closeWriteChannel();
        Outcome outcome;
        outcome.ended =
            process.waitForFinished(kPatienceMs) && process.exitStatus() == QProcess::NormalExit;
        outcome.status = process.exitCode();
        outcome.output = process.readAllStandardOutput();
        outcome.errors = process.readAllStandardError();
        return outcome;
    }

    QProcessEnvironment environment;

private:
    QTemporaryDir m_root;
    QString m_path;
};
