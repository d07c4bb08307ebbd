#pragma once

#include <QByteArray>

/// Octets that somebody else owns: valid as long as their owner leaves them alone. Cheap to copy.
struct OctetView
{
    const unsigned char *data = nullptr; ///< may be null when there are none
    unsigned int size = 0;
};

inline OctetView viewOf(const QByteArray &octets)
{
    return {reinterpret_cast<const unsigned char *>(octets.constData()),
            static_cast<unsigned int>(octets.size())};
}

/// The octets as an array that owns them. At most 2^31 - 1 of them.
inline QByteArray copyOf(OctetView octets)
{
    return {reinterpret_cast<const char *>(octets.data), static_cast<int>(octets.size)};
}
