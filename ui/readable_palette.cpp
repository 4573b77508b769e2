#include "ui/readable_palette.h"

#include <QColor>

#include <algorithm>
#include <cmath>

namespace {

// The minimum contrast of texts (level AA) of the Web Content Accessibility Guidelines, which also define the formulas.
constexpr double kMinimumContrast = 4.5;

double linear(double component)
{
    return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace

QPalette withReadableLinks(const QPalette& palette)
{
    QPalette readable = palette;
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        const QColor window = palette.color(group, QPalette::Window);
        for (const auto role : {QPalette::Link, QPalette::LinkVisited}) {
            if (contrast(palette.color(group, role), window) < kMinimumContrast) {
                readable.setColor(group, role, palette.color(group, QPalette::WindowText));
            }
        }
    }
    return readable;
}
