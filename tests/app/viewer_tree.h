#pragma once

#include "tests/support/install_tree.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QTest>

inline constexpr const char *kViewer = "PXViewCertTool";
inline constexpr const char *kReady = "main:: end"; // what it says once its window is shown

/// An install tree with the viewer, the default core and the texts in it, and a folder below which
/// its instances are guarded apart from all others. It speaks English.
class ViewerTree : public InstallTree
{
public:
    ViewerTree()
    {
        install("bin/PXViewCertTool", "bin/PXViewCertTool");
        install("tests/bin/window_probe", "bin/window_probe");
        install("bin/PXSignatureCoreV10.so", "bin/PXSignatureCoreV10.so");
        install("languages/PXViewCertTool_Lang.ini", "languages/PXViewCertTool_Lang.ini");
        const QString runtime = path("runtime");
        check(QDir().mkdir(runtime));
        check(
            QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
        speak("EN");
    }

    /// Copies a file of the build tree to a place below the tree, over what is there.
    void install(const QByteArray &built, const char *to) const
    {
        QFile::remove(path(to));
        check(add(QStringLiteral(PX_BINARY_DIR "/") + QLatin1String(built), to));
    }

    void speak(const QByteArray &section)
    {
        environment.insert(QStringLiteral("PX_CONFIG_PATH"),
                           QStringLiteral(PX_BINARY_DIR "/settings/") + QLatin1String(section));
    }

    /// Puts a shipped certificate into the folder that programs start from.
    void startBeside(const char *example, const QString &name) const
    {
        check(QFile::copy(QStringLiteral(PX_SOURCE_DIR "/examples/") + QLatin1String(example),
                          QDir(elsewhere()).filePath(name)));
    }

private:
    static void check(bool done)
    {
        if (!done)
            qFatal("the install tree can't be made");
    }
};

/// A running program of the tree, ended with the object.
class Program
{
public:
    static constexpr int kPatienceMs = 30000;

    Program(const InstallTree &tree, const char *name, const QStringList &arguments)
    {
        m_process.setProcessEnvironment(tree.environment);
        m_process.setWorkingDirectory(tree.elsewhere());
        m_process.start(tree.path("bin") + QLatin1Char('/') + QLatin1String(name), arguments);
        if (!m_process.waitForStarted(kPatienceMs))
            qFatal("%s", qPrintable(m_process.errorString()));
    }
    ~Program()
    {
        constexpr int kGraceMs = 2000; // for what it may have to write yet
        m_process.terminate();
        if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kGraceMs))
            m_process.kill();
        m_process.waitForFinished();
    }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    /// Waits for the end; the exit status, or -1 after a crash or when it takes too long.
    int end()
    {
        if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kPatienceMs))
            return -1;
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }

    bool isRunning() { return !m_process.waitForFinished(0) && m_process.state() != 0; }
    qint64 id() const { return m_process.processId(); }

    /// Waits for the window and returns the X server's number of it; empty when none comes.
    QString window()
    {
        QElapsedTimer timer;
        timer.start();
        QString found;
        while (found.isEmpty() && timer.elapsed() < kPatienceMs && isRunning()) {
            found = xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                             QStringLiteral("--pid"), QString::number(id())});
            QTest::qWait(50);
        }
        return found;
    }

    /// Waits until the debug stream holds this line; false when it takes too long.
    bool says(const char *line)
    {
        QElapsedTimer timer;
        timer.start();
        while (!debugLines().contains(QString::fromUtf8(line))) {
            if (timer.elapsed() > kPatienceMs)
                return false;
            m_process.waitForReadyRead(50);
        }
        return true;
    }

    QStringList debugLines()
    {
        m_errors += m_process.readAllStandardError();
        return QString::fromUtf8(m_errors).split(QLatin1Char('\n'));
    }

    QStringList outputLines()
    {
        m_output += m_process.readAllStandardOutput();
        return QString::fromUtf8(m_output).split(QLatin1Char('\n'));
    }

    static QString xdotool(const QStringList &commands)
    {
        QProcess process;
        process.start(QStringLiteral("xdotool"), commands);
        if (!process.waitForFinished(kPatienceMs))
            qFatal("xdotool: %s", qPrintable(process.errorString()));
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }

    /// Where the window is on the screen.
    static QRect place(const QString &window)
    {
        QHash<QString, int> found;
        const QString answer =
            xdotool({QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), window});
        for (const QString &line : answer.split(QLatin1Char('\n')))
            found.insert(line.section(QLatin1Char('='), 0, 0),
                         line.section(QLatin1Char('='), 1).toInt());
        return {found.value(QStringLiteral("X")), found.value(QStringLiteral("Y")),
                found.value(QStringLiteral("WIDTH")), found.value(QStringLiteral("HEIGHT"))};
    }

    /// What the X server has of the window's icon: each size's width, height and pixels; a single
    /// empty text when there is none.
    static QStringList icon(const QString &window)
    {
        QProcess xprop;
        xprop.start(QStringLiteral("xprop"),
                    QStringLiteral("-id %1 -len 1000000 -notype -f _NET_WM_ICON 32c _NET_WM_ICON")
                        .arg(window)
                        .split(QLatin1Char(' ')));
        if (!xprop.waitForFinished(kPatienceMs))
            qFatal("xprop: %s", qPrintable(xprop.errorString()));
        return QString::fromLatin1(xprop.readAllStandardOutput())
            .section(QStringLiteral(" = "), 1)
            .split(QStringLiteral(", "));
    }

private:
    QProcess m_process;
    QByteArray m_errors;
    QByteArray m_output;
};
