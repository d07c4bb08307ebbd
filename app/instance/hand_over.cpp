#include "app/instance/hand_over.h"

#include "app/instance/instance_channel.h"
#include "app/instance/instance_lock.h"

#include <QDeadlineTimer>
#include <QDebug>

bool handOver(const QString &id, const QString &message)
{
    constexpr int kPatienceMs = 4000;
    InstanceLock lock(id);
    if (lock.acquire() != InstanceLock::Result::HeldByAnother)
        return false; // and what was locked is free again
    qDebug("this is already running");
    sendToInstance(lock.socketPath(), message, QDeadlineTimer(kPatienceMs));
    return true;
}
