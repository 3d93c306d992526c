// The language-monitor extension library ("ozdkrnlmex.dll" in the "3" folder of the
// printer-driver directory): loaded into the configuration record when one of its
// functions is first asked for, freed when the record is destroyed.
#pragma once

#include <windows.h>

#include "config/ui_config.h"

// The library, relative to the printer-driver directory.
inline constexpr wchar_t kExtensionLibraryPath[] = L"\\3\\ozdkrnlmex.dll";

// The named export of the extension library, loaded on first use into
// config.ExtLibraryHandle (a failed load is tried again at the next call); null when
// the library or the export is missing.
FARPROC ExtDllLoadFunction(UIConfig& config, const char* exportName);

// Frees the library when it was loaded.
void ReleaseExtensionLibrary(UIConfig& config);
