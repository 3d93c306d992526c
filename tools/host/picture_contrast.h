// How the pictures of a page stand out from it, measured the way accessibility guidance
// asks of graphics that carry meaning: the contrast ratio of the relative luminances of
// two sRGB colours, at least 3:1.
#pragma once

#include <windows.h>

#include <vector>

namespace ozdkhost {

struct PictureContrast {
    int control = 0;
    COLORREF page = 0;       // the page's colour around the control
    COLORREF commonest = 0;  // the capture's commonest colour: the page's, unless the picture sits on a box
    size_t drawn = 0;        // pixels of the capture whose colour is not the page's
    double ratio = 1.0;      // the contrast to the page that a quarter of the drawn pixels reach at least
    double span = 0.0;       // the drawn part's width or height, whichever is the larger share of the control's
};

// (L1 + 0.05) / (L2 + 0.05) of the lighter and the darker colour: 1 to 21.
double ContrastRatio(COLORREF a, COLORREF b);

// Every visible picture control of `page` (owner-drawn, icon and bitmap statics), each
// captured as it paints itself (WM_PRINT), against the page as it paints itself.
std::vector<PictureContrast> MeasurePictureContrast(HWND page);

}  // namespace ozdkhost
