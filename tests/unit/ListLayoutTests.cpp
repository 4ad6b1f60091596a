#include <gtest/gtest.h>

#include "dialogs/ListLayout.h"

namespace quill::test {
namespace {

struct Case {
    const char* what;
    TwipSize outer;
    float infoHeight;
    TwipSize shown;
    TwipRect label, list, button;
};

const Case kCases[] = {
    {"as designed",
     {4335, 4920},
     840,
     {4335, 4920},
     {240, 140, 3700, 840},
     {200, 1180, 3750, 2220},
     {2640, 3740, 1200, 380}},
    {"closed up",
     {4335, 4065},
     0,
     {4335, 4065},
     {240, 140, 3700, 0},
     {200, 200, 3750, 2220},
     {2640, 2860, 1200, 380}},
    {"enlarged",
     {6000, 8000},
     840,
     {6000, 8000},
     {240, 140, 5365, 840},
     {200, 1180, 5415, 5300},
     {4305, 6820, 1200, 380}},
    {"enlarged without info",
     {6000, 8000},
     0,
     {6000, 8000},
     {240, 140, 5365, 0},
     {200, 200, 5415, 6155},
     {4305, 6795, 1200, 380}},
    {"too small",
     {100, 100},
     840,
     {4335, 4920},
     {240, 140, 3700, 840},
     {200, 1180, 3750, 2220},
     {2640, 3740, 1200, 380}},
    {"too narrow, long info",
     {100, 6000},
     1840,
     {4335, 6000},
     {240, 140, 3700, 1840},
     {200, 2180, 3750, 2300},
     {2640, 4820, 1200, 380}},
};

TEST(ListLayout, TheListTakesWhatTheWindowGains)
{
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.what);
        const ListLayout layout = LayOutList(c.outer, c.infoHeight);
        EXPECT_EQ(layout.outer, c.shown);
        EXPECT_EQ(layout.label, c.label);
        EXPECT_EQ(layout.list, c.list);
        EXPECT_EQ(layout.button, c.button);
    }
}

// A long caption widens the button to the left; its right edge stays.
TEST(ListLayout, TheButtonKeepsItsRightEdge)
{
    EXPECT_EQ(LayOutList({4335, 4920}, 840, 2000).button, (TwipRect{1840, 3740, 2000, 380}));
}

} // namespace
} // namespace quill::test
