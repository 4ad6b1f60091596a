#include <gtest/gtest.h>

#include <sstream>

#include "dialogs/ListLayout.h"

namespace quill::test {
namespace {

std::string Text(const TwipRect& place)
{
    std::ostringstream text;
    text << place.left << ',' << place.top << ' ' << place.width << 'x' << place.height;
    return text.str();
}

TEST(ListLayout, TheListTakesWhatTheWindowGains)
{
    const struct {
        TwipSize outer;
        float infoHeight;
        TwipSize shown;
        const char *label, *list, *button;
    } cases[] = {
        {{4335, 4920},
         840,
         {4335, 4920},
         "240,140 3700x840",
         "200,1180 3750x2220",
         "2640,3740 1200x380"},
        {{6000, 8000},
         0,
         {6000, 8000},
         "240,140 5365x0",
         "200,200 5415x6155",
         "4305,6795 1200x380"},
        {{100, 100}, 0, {4335, 4065}, "240,140 3700x0", "200,200 3750x2220", "2640,2860 1200x380"},
        {{100, 6000},
         1840,
         {4335, 6000},
         "240,140 3700x1840",
         "200,2180 3750x2300",
         "2640,4820 1200x380"},
    };
    for (const auto& [outer, infoHeight, shown, label, list, button] : cases) {
        const ListLayout layout = LayOutList(outer, infoHeight);
        EXPECT_EQ(layout.outer, shown);
        EXPECT_EQ(Text(layout.label), label);
        EXPECT_EQ(Text(layout.list), list);
        EXPECT_EQ(Text(layout.button), button);
    }
}

// A long caption widens the button to the left; its right edge stays.
TEST(ListLayout, TheButtonKeepsItsRightEdge)
{
    EXPECT_EQ(LayOutList({4335, 4920}, 840, 2000).button, (TwipRect{1840, 3740, 2000, 380}));
}

} // namespace
} // namespace quill::test
