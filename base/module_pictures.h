// The module's pictures drawn into owner-drawn controls, legible for people who see
// little: in the colours of a high-contrast theme when one is on, and as large as the
// text around them.
#pragma once

#include <windows.h>

// The contrast ratio of two sRGB colours, (L1 + 0.05) / (L2 + 0.05) of their relative
// luminances, lighter over darker: from 1 to 21.
double ContrastRatio(COLORREF a, COLORREF b);

// Draws bitmap `bitmapId` of this module at the top left of an owner-drawn control,
// leaving the `transparent` colour out, on the background the control's page gives its
// pictures (WM_CTLCOLORSTATIC).
// - Size: the bitmap's own size at 96 dots per inch, grown with the text (the device
//   context's dots per inch), but no larger than the control, keeping its proportions;
//   a grown picture is resampled smoothly.
// - High contrast on: the picture's dark strokes are drawn in the button-text colour and
//   its light parts are left to the page, so that nothing but strokes and background
//   remain; when the page's background does not set the button-text colour off by 3:1
//   (a page that paints its own background), in black or white, whichever stands out.
void DrawModuleBitmap(const DRAWITEMSTRUCT* item, UINT bitmapId, COLORREF transparent);
