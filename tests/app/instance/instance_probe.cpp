// instance_probe run TIMEOUT [child] | late MS | send TIMEOUT
//
// A program that does nothing but be guarded. It prints "ready", waits for a line on its standard
// input, and then:
// run: prints "first" and each message it gets as "message HEX"; or, where another instance runs,
//      sends the rest of its input to it and prints "second sent" or "second failed". With "child"
//      the first one also starts a process that outlives it, and prints "child PID".
// late: as run, but the first instance's event loop starts only after MS milliseconds.
// send: sends without having asked whether another instance runs.

#include "app/instance/qtsingleapplication.h"

#include <cstdio>
#include <QFile>
#include <QProcess>
#include <QThread>

namespace {

void say(const QByteArray &line)
{
    std::printf("%s\n", line.constData());
    std::fflush(stdout);
}

QByteArray outcome(QtSingleApplication &application, QFile &input, int timeout)
{
    const QByteArray text = input.readAll();
    const QString message = QString::fromUtf8(text.constData(), text.size());
    return application.sendMessage(message, timeout) ? "sent" : "failed";
}

} // namespace

int main(int argc, char **argv)
{
    QtSingleApplication application(QStringLiteral("probe of the guard"), argc, argv);
    const QStringList arguments = application.arguments();
    const QString &mode = arguments.at(1);
    const int milliseconds = arguments.at(2).toInt();

    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly | QIODevice::Unbuffered))
        return 1;
    say("ready");
    input.readLine();

    if (mode == QLatin1String("send")) {
        say(outcome(application, input, milliseconds));
        return 0;
    }
    if (application.isRunning()) {
        say("second " + outcome(application, input, milliseconds));
        return 0;
    }
    QObject::connect(&application, &QtSingleApplication::messageReceived, &application,
                     [](const QString &message) { say("message " + message.toUtf8().toHex()); });
    const bool isConfused =
        application.isRunning() || application.sendMessage(QStringLiteral("to itself"), 0);
    say(isConfused ? "asked again, another than itself" : "first");
    if (arguments.contains(QLatin1String("child"))) {
        qint64 child = 0;
        QProcess::startDetached(QStringLiteral("sleep"), {QStringLiteral("60")}, {}, &child);
        say("child " + QByteArray::number(child));
    }
    if (mode == QLatin1String("late"))
        QThread::msleep(static_cast<unsigned long>(milliseconds));
    return QtSingleApplication::exec();
}
