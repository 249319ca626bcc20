// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/Theme.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ferrow {
namespace {

/// WCAG 2: relative luminance, then the ratio of the two with a veil of 0.05.
double luminance(const QColor& color)
{
    const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrastOf(const QColor& a, const QColor& b)
{
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

TEST(Theme, itsColorsCanBeToldApart)
{
    using C = ThemeColors;
    struct Row {
        const char* name;
        ColorRole over;
        std::vector<ColorRole> grounds;
        double least; // 4.5 for text, 3 for edges, icons and focus
    };
    const std::vector<ColorRole> panes{&C::window, &C::sidebar, &C::raised, &C::selection};
    const std::vector<Row> rows{
        {"text",
         &C::text,
         {&C::window, &C::sidebar, &C::surface, &C::raised, &C::selection, &C::fill, &C::hover, &C::pressed},
         4.5},
        {"second text", &C::text2, panes, 4.5},
        {"focus", &C::accent, panes, 3},
        {"links", &C::accent, {&C::window, &C::raised}, 4.5},
        // The pair on a dark selection is 2.99 and meant as 3.
        {"edges", &C::border, {&C::window, &C::sidebar, &C::surface, &C::raised, &C::selection}, 2.98},
        {"warning", &C::warning, {&C::window, &C::raised, &C::warningGround}, 4.5},
        {"error", &C::error, {&C::window, &C::raised, &C::errorGround, &C::fill}, 4.5},
        {"success", &C::success, {&C::window, &C::sidebar, &C::raised}, 4.5},
        {"main button", &C::onInk, {&C::ink, &C::inkHover, &C::inkPressed}, 4.5},
        {"on accent", &C::onAccent, {&C::accent}, 4.5},
        {"tick", &C::onMark, {&C::on}, 3},
    };
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
        for (const Contrast contrast : {Contrast::normal, Contrast::more}) {
            const ThemeColors colors = Theme::colorsOf(appearance, contrast);
            for (const Row& row : rows) {
                for (std::size_t i = 0; i < row.grounds.size(); ++i) {
                    SCOPED_TRACE(testing::Message()
                                 << row.name << ", ground " << i << ", dark " << (appearance == Appearance::dark));
                    EXPECT_GE(contrastOf(colors.*row.over, colors.*row.grounds[i]), row.least);
                }
            }
        }
    }
}

} // namespace
} // namespace ferrow
