// The "Paper/Media" page: the paper size (a form of the print server), the media type
// (six built-in embosser media and ten custom slots) and the paper source.
#pragma once

#include <windows.h>
#include <prsht.h>

#include "config/ui_config.h"

INT_PTR CALLBACK DocumentPaperPropPageProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);
UINT CALLBACK DocumentPaperPropPageCallback(HWND hwnd, UINT msg, PROPSHEETPAGEW* page);

// The form the printer's own device mode names: 0 found, 1 not found, -1 when the
// printer's information cannot be read. `size` in micrometres; `name` of 64 characters.
// Either may be null.
int GetFormFromDevMode(HANDLE hPrinter, PaperDimensions* size, wchar_t* name);

// "Automatic Select" and the printer's forms; the number of forms (0 on failure).
int InitPaperSizeComboBox(HWND list, UIConfig* config, bool enable);
// The 17 media entries, each with its code as item data. `*changed` becomes 1 when the
// stored media type is neither listed nor 256.
int InitMediaTypeComboBox(HWND list, UIConfig* config, bool enable, int* changed);
void InitPaperSourceComboBox(HWND hDlg, UIConfig* config, bool enable);

// The media list's entries: index -> string number and media code. The entries from
// "Custom" on map to code = index + 279.
inline constexpr int kMediaTypeEntries = 17;
inline constexpr int kFirstCustomMediaIndex = 7;
inline constexpr uint32_t kPrinterSettingMedia = 256;
inline constexpr uint32_t kCustomMediaCode = 286;
UINT MediaTypeStringId(int index);
uint32_t MediaTypeCode(int index);
// The list index of a media code; 0 ("Printer Setting") when the code is not listed.
int MediaTypeIndex(uint32_t code);

void ApplyPaperSize(HWND list, UIConfig* config);
void ApplyMediaType(HWND list, UIConfig* config);
// Takes page `hDlg`'s choices into the configuration kept with its window and stores them.
void ApplyPaperChanges(HWND hDlg);
void UpdatePaperConfig(UIConfig* config);
