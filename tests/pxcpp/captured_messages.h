#pragma once

#include <QStringList>
#include <QtGlobal>

/// What goes to the debug stream while it lives.
class CapturedMessages
{
public:
    CapturedMessages()
    {
        messages().clear();
        m_previous = qInstallMessageHandler(&CapturedMessages::collect);
    }
    ~CapturedMessages() { qInstallMessageHandler(m_previous); }

    CapturedMessages(const CapturedMessages &) = delete;
    CapturedMessages &operator=(const CapturedMessages &) = delete;

    static QStringList &messages()
    {
        static QStringList list;
        return list;
    }

private:
    static void collect(QtMsgType type, const QMessageLogContext &, const QString &text)
    {
        if (type == QtDebugMsg) {
            messages() << text;
        }
    }

    QtMessageHandler m_previous;
};
