// The layout that the list dialogs share: an info text, a list below it, the OK button at the right
// bottom. Twips.
#pragma once

#include "dialogs/Dialog.h"

namespace quill {

// What two buttons have between the list's left edge and their right one, as designed.
constexpr float kListButtonRoom = 4335 - 495 - 200;

struct ListLayout {
    TwipSize outer; // never below the minimum
    TwipRect label, list, button;
};

// The smallest outer size, which is also the designed one. Without an info text (height 0) the list
// and the button close up; with one that needs more room than designed, they move down. `surplus`
// is how much wider than designed it is for two buttons.
constexpr TwipSize MinimumListSize(float infoHeight, float surplus = 0)
{
    return {4335 + surplus, infoHeight == 0 ? 4065 : 4920 + infoHeight - kInfoHeight};
}

// Places for a form of this outer size: the list takes what the window gains.
constexpr ListLayout LayOutList(TwipSize outer, float infoHeight, float buttonWidth = kButtonWidth,
                                float surplus = 0)
{
    const TwipSize minimum = MinimumListSize(infoHeight, surplus);
    const float width = outer.width < minimum.width ? minimum.width : outer.width;
    const float height = outer.height < minimum.height ? minimum.height : outer.height;
    const float listTop = infoHeight == 0 ? 200 : 1180 + infoHeight - kInfoHeight;
    const float belowList = infoHeight == 0 ? 1645 : 1520; // from its lower edge to the outer one
    const float buttonTop = height - (infoHeight == 0 ? 1205.0F : 1180.0F);
    return {{width, height},
            {240, 140, width - 635, infoHeight},
            {200, listTop, width - 585, height - listTop - belowList},
            {width - 495 - buttonWidth, buttonTop, buttonWidth, kButtonHeight}};
}

} // namespace quill
