// The demo's walk through the dialogs the plug-in's pages open: each is opened as a
// person opens it, photographed, and closed without a change.
#pragma once

#include <windows.h>

#include <string>

#include "tools/host/host_library.h"

namespace ozdkhost {

// Opens, photographs and cancels the dialogs that page `page` of `sheet` opens (its tab
// title `title`), and the dialogs those open in turn: "Advanced" of Layout and of
// Paper/Media with the latter's "Custom Media Type" and "Add Form ...", "Advanced" of
// Quorl ("More Options ...") and its "2 In 1" warning, which is declined. Each is saved
// as <pagePath>-<dialog>.png (the page's screenshot path with the dialog's name).
void PhotographPageDialogs(PropertySheetHost& sheet, HWND page, const std::wstring& title,
                           const std::wstring& pagePath, HostLog& log);

// On a thread of the script, while the plug-in reads a silent or unreachable embosser:
// photographs the notice `notice` as <path> and presses its "Cancel", as a person who
// does not want to wait would. A notice gone within a second (the embosser answered) is
// neither photographed nor cancelled.
void PhotographReadingNoticeAndCancel(HWND notice, const std::wstring& path, HostLog& log);

}  // namespace ozdkhost
