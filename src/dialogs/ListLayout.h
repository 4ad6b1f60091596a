// The layout that the list dialogs share: an info text, a list below it, the OK button at the right
// bottom. Twips.
#pragma once

#include "gui/Form.h"

namespace quill {

struct ListLayout {
    TwipSize outer; // never below the minimum
    TwipRect label, list, button;
};

// The smallest outer size, which is also the designed one. Without an info text the list and the
// button close up.
constexpr TwipSize MinimumListSize(bool hasInfo)
{
    return {4335, hasInfo ? 4920.0F : 4065.0F};
}

// Places for a form of this outer size: the list takes what the window gains.
constexpr ListLayout LayOutList(TwipSize outer, bool hasInfo)
{
    const TwipSize minimum = MinimumListSize(hasInfo);
    const float width = outer.width < minimum.width ? minimum.width : outer.width;
    const float height = outer.height < minimum.height ? minimum.height : outer.height;
    const float listTop = hasInfo ? 1180 : 200;
    const float listHeight = height - (hasInfo ? 2700.0F : 1845.0F);
    const float buttonTop = height - (hasInfo ? 1180.0F : 1205.0F);
    return {{width, height},
            {240, 140, width - 635, 840},
            {200, listTop, width - 585, listHeight},
            {width - 1695, buttonTop, 1200, 380}};
}

} // namespace quill
