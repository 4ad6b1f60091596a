#include <gtest/gtest.h>

#include "dialogs/ListLayout.h"

namespace quill::test {
namespace {

// A long caption widens the button to the left; its right edge stays.
TEST(ListLayout, TheListTakesWhatTheWindowGains)
{
    EXPECT_EQ(LayOutList({100, 100}, 0).outer, (TwipSize{4335, 4065}));
    EXPECT_EQ(LayOutList({6000, 8000}, 0).list, (TwipRect{200, 200, 5415, 6155}));
    EXPECT_EQ(LayOutList({6000, 8000}, 0).button, (TwipRect{4305, 6795, 1200, 380}));
    EXPECT_EQ(LayOutList({100, 6000}, 1840).list, (TwipRect{200, 2180, 3750, 2300}));
    EXPECT_EQ(LayOutList({4335, 4920}, 840).label, (TwipRect{240, 140, 3700, 840}));
    EXPECT_EQ(LayOutList({4335, 4920}, 840, 2000).button, (TwipRect{1840, 3740, 2000, 380}));
}

} // namespace
} // namespace quill::test
