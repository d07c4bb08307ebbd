#pragma once

#include "core/px_core_manager.h"

#include <QObject>
#include <QStringList>

/// Stands in for the loaded core while it lives, and collects what is sent to its log.
class RecordingCore : public QObject
{
    Q_OBJECT

public:
    RecordingCore()
        : m_replaced(getSignatureCore()->target())
    {
        getSignatureCore()->setTarget(this);
    }
    ~RecordingCore() override { getSignatureCore()->setTarget(m_replaced); }

    Q_INVOKABLE void logDebug(const QString &text) { messages << text; }

    QStringList messages;

private:
    QObject *m_replaced;
};
