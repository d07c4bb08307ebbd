#pragma once

#include <QStringList>
#include <QtGlobal>

/// Collects what goes to the debug stream while it lives; one at a time.
class MessageRecorder
{
public:
    MessageRecorder()
    {
        messages().clear();
        m_previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &, const QString &text) { messages() << text; });
    }
    ~MessageRecorder() { qInstallMessageHandler(m_previous); }
    MessageRecorder(const MessageRecorder &) = delete;
    MessageRecorder &operator=(const MessageRecorder &) = delete;

    static QStringList &messages()
    {
        static QStringList all;
        return all;
    }

private:
    QtMessageHandler m_previous = nullptr;
};
