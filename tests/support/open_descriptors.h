#pragma once

#include <QDir>

/// How many file descriptors this process has open, and one more for the look.
inline int openDescriptors()
{
    return int(QDir(QStringLiteral("/proc/self/fd"))
                   .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                   .size());
}
