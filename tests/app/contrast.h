#pragma once

#include <algorithm>
#include <cmath>
#include <QColor>

/// Relative luminance, 0 to 1, as the Web Content Accessibility Guidelines define it.
inline double luminance(const QColor &color)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

/// How much two colours stand out from each other, 1 to 21, by the same guidelines.
inline double contrast(const QColor &one, const QColor &other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}
