#pragma once

#include <QString>

/// One text of a certificate policy or a CRL distribution point, with its nesting depth below the
/// block that it was collected from.
struct certpolicy
{
    QString text;
    int level = 0;
};
