// The printer's paper names, the form that matches a paper size, and the comparison of
// two sizes with a tolerance of one unit.
//
// Paper names come as the DC_PAPERNAMES capability returns them: a packed array of slots
// of 64 wide characters (128 bytes), a name filling its slot having no terminator.
// Sizes are width then height; the spooler's form sizes are in micrometres.
#pragma once

#include <windows.h>

#include "base/heap_memory.h"
#include "config/ui_config.h"

inline constexpr DWORD kPaperNameCharacters = 64;
inline constexpr DWORD kPaperNameBytes = kPaperNameCharacters * sizeof(wchar_t);

// The printer's paper names. `names` null: only the count and `*byteSize` (count x 128)
// are reported. `names` given: it is filled, and must hold the byte size that a sizing
// call reported. `dmFields`, when given, receives the dmFields word of the printer's
// default device mode. Returns the number of names, 0 on any failure (no printer
// information, no default device mode, no paper names).
int EnumPrinterPaperSizes(HANDLE printer, wchar_t* names, DWORD* byteSize, DWORD* dmFields);

// The same, filling at most `capacityBytes`: when the names would not fit, nothing is
// written and the result is 0.
int EnumPrinterPaperSizes(HANDLE printer, wchar_t* names, DWORD capacityBytes, DWORD* byteSize, DWORD* dmFields);

// Both calls at once: the printer's paper names in a new buffer, `*count` the names it
// holds (an empty buffer and 0 when there are none or they cannot be had).
HeapBuffer FetchPrinterPaperNames(HANDLE printer, int* count, DWORD* dmFields = nullptr);

// Truncates toward zero to a whole multiple of 100 micrometres (a tenth of a millimetre).
inline int32_t ToTenthMillimetre(int32_t micrometres) { return micrometres / 100 * 100; }

// Copies paper name `index` of a DC_PAPERNAMES list into `destination` (terminated,
// cut to fit).
void CopyPaperName(const wchar_t* names, int index, wchar_t* destination, size_t capacity);

// The size of a form of the print server (GetFormW level 2), in micrometres; 0 x 0 when
// the form's information cannot be had.
PaperDimensions GetFormSize(HANDLE printer, const wchar_t* formName);

// The printer's paper name whose form size, each dimension truncated to a whole multiple
// of 100 micrometres, equals `size`; the last such name wins. "Letter" when nothing
// matched; `destination` (64 characters) is left as it was when the printer reports no
// paper names. Returns the paper-name count.
int GetPrinterCurrentFormName(HANDLE printer, PaperDimensions size, wchar_t* destination);

// True when `sf` lies within one unit of `df` in both dimensions, as it stands or turned
// by a quarter.
bool IsFormAboutSize(PaperDimensions sf, PaperDimensions df);

// True when a spooler form of `form` (micrometres) is about the embosser's paper size
// (1/20 inch, 1270 micrometres each, in `config`).
bool IsFormOfDeviceSize(PaperDimensions form, const UIConfig& config);
