// The binding of the locale library "ozdkrnlcl.dll" of the printer-driver directory, and
// the string loaders every page uses. The plug-in's own resource text is the lookup key;
// without the library (or without a locale instance) the resource text is shown as is.
#pragma once

#include <windows.h>

#include "config/ui_config.h"

inline constexpr int kLocalStringCapacity = 4096;  // wide characters of a loaded text

// Loads the library, binds its exports into pConfig->lcl, creates the locale instance
// for this plug-in's section and selects the installed language.
void PrepareLocale(HANDLE hHeap, UIConfig* pConfig);
// Disposes of the locale instance and unloads the library.
void PostpareLocale(UIConfig* pConfig);

// Resource string `id`, translated when a translation exists, as a new zero-filled block
// of `heap` that the caller frees. Null when the resource string is empty or missing, or
// the heap is exhausted.
wchar_t* LoadLocalString(const UIConfig* pConfig, HANDLE heap, UINT id);
// The same through the locale's "Caption" section. With a locale instance bound, a text
// unknown to that section gives null; otherwise the resource text (empty when missing).
wchar_t* LoadLocalCaption(const UIConfig* pConfig, HANDLE heap, UINT id);
// Resource string `id`, translated, in one shared buffer of 4096 characters that every
// call overwrites. Never null; empty when the resource string is missing.
const wchar_t* GetLocalString(const UIConfig* pConfig, UINT id);

// Lets the locale library translate a dialog's texts in place (the module has no menus).
// False when no translation is bound.
bool TranslateDialog(const UIConfig* pConfig, HWND dialog);
