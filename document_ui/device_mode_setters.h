// The device-mode setters of the document pages. Each writes one choice into the
// document's device mode and into the printer's own (level-2) device mode, stores the
// printer's through SetPrinterW and tells every top-level window with WM_DEVMODECHANGE.
// They differ only in the fields they set.
#pragma once

#include <windows.h>

#include <functional>

#include "config/ui_config.h"

// Sets the fields of one choice in a device mode.
using DevModeEdit = std::function<void(DEVMODEW& devMode)>;

// The write-through: `edit` on the document's device mode (when there is one) and a
// merge with DocumentPropertiesW; then on the printer's device mode (the driver's default
// when the printer has none) `beforePrinter` (for the setter's trace), `edit`, a merge,
// `reapply` (the fields again, as the merge may have touched them), SetPrinterW level 2
// with the administrator retry, and the broadcast when either write succeeded. A device
// mode the driver refuses to merge stays as it was: the document's gets its fields back,
// the printer's is not written.
// `printerMerge`, when given, receives the outcome of the printer's merge.
// Returns 0 when the printer's device mode could not be had, 1 otherwise (also when its
// information could not be read: then only the document's device mode was changed).
struct DevModeMerge {
    LONG result;  // of DocumentPropertiesW
    DWORD error;  // the last error after it
};
int WriteDevModeThrough(UIConfig* config, const DevModeEdit& edit, const DevModeEdit& reapply,
                        const DevModeEdit& beforePrinter = nullptr, DevModeMerge* printerMerge = nullptr);

// 1 portrait, 2 landscape. 0 when the value was already set.
int SetPrinterOrientation(UIConfig* config, uint32_t orientation);
// Interpoint on or off with the binding edge (2 open to left, 3 open to top).
int SetPrinterInterpoint(UIConfig* config, uint32_t interpoint, uint32_t bindingEdge);
int SetPrinterCollate(UIConfig* config, uint32_t collate);
// `formName` empty for "Automatic Select". dmFields becomes (dmFields & keepMask) | setMask.
int SetPrinterPaperSize(UIConfig* config, const wchar_t* formName, DWORD keepMask, DWORD setMask);
int SetPrinterMediaType(UIConfig* config, uint32_t code);
int SetPrinterPaperSource(UIConfig* config, uint32_t source);
// 1 grayscale (DMCOLOR_MONOCHROME), 2 colour (DMCOLOR_COLOR). 0 when the value was
// already set or the printer's device mode could not be had.
int SetPrinterColor(UIConfig* config, uint32_t color);
