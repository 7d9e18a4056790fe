#include "contrast_p.h"

#include <algorithm>
#include <cmath>

static double luminance(const QColor& color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor& a, const QColor& b)
{
    const auto [low, high] = std::minmax({luminance(a), luminance(b)});
    return (high + 0.05) / (low + 0.05);
}

QColor mixed(const QColor& a, const QColor& b, double part)
{
    const auto mix = [part](double x, double y) { return float(x + (y - x) * part); };
    return QColor::fromRgbF(mix(a.redF(), b.redF()), mix(a.greenF(), b.greenF()),
                            mix(a.blueF(), b.blueF()));
}

QColor readable(const QColor& color, const QColor& ground, double least)
{
    const bool isDark = contrast(Qt::white, ground) > contrast(Qt::black, ground);
    QColor result = color;
    for (int i = 1; i <= 20 && contrast(result, ground) < least; ++i)
        result = mixed(color, isDark ? Qt::white : Qt::black, i / 20.);
    return result;
}
