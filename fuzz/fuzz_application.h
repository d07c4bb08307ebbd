#pragma once

#include <clocale>
#include <QByteArray>
#include <QtGlobal>

/// The one application object of a fuzz target, made with the first input: off screen, in English,
/// whatever the desktop of who runs it says, and with nothing on the debug stream. It is never
/// ended, as a fuzzer ends the program when it likes, and then the toolkit's own statics go first.
template <typename Application>
void startApplication(const char *name)
{
    static const bool isSet = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("LC_ALL", "C.UTF-8");
        qputenv("TZ", "UTC");
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        return std::setlocale(LC_ALL, "C.UTF-8") != nullptr;
    }();
    static QByteArray program(name);
    static int argc = 1;
    static char *argv[] = {program.data(), nullptr};
    static const auto *const application = new Application(argc, argv);
    Q_UNUSED(isSet)
    Q_UNUSED(application)
}
