#pragma once

#include <QMetaType>
#include <vector>

/// Code points.
using Units = std::vector<unsigned int>;
Q_DECLARE_METATYPE(Units)
