// The maker's ink toolbox program ("TavrolinColorInkToolbox.exe"), which the "Service"
// page starts for the printer.
#pragma once

#include <windows.h>

#include "config/ui_config.h"

// Finds the toolbox in "<folder>\Kestrova Tavrolin Color Pigmora", where <folder> is
// the maker's installation folder ("KSDir" of the maker's machine key) + "\Quorl", or,
// when that cannot be read, the program-files folder + "\Kestrova\Quorl". Starts it as
// a detached process in its own folder with `"<path>" --printer "<PrinterName>"`, the
// path also given as the program to run. When the program is not there, tells the
// person so in a message box owned by `owner`; when the program-files folder is unknown
// or the program cannot be started (it asks for elevation, say), nothing is started and
// the message box gives the system's reason. True when the program was started.
bool LaunchInkToolbox(HWND owner, const UIConfig& config);

// The two system calls of the launch, with the system's signatures.
struct InkToolboxSystem {
    HRESULT(WINAPI* getFolderPath)(HWND owner, int folder, HANDLE token, DWORD flags, LPWSTR path);
    BOOL(WINAPI* createProcess)(LPCWSTR program, LPWSTR commandLine, LPSECURITY_ATTRIBUTES processAttributes,
                                LPSECURITY_ATTRIBUTES threadAttributes, BOOL inheritHandles, DWORD flags,
                                LPVOID environment, LPCWSTR folder, LPSTARTUPINFOW startup,
                                LPPROCESS_INFORMATION process);
};

// Test seam: replaces the launch's system calls for this process (a test sees the exact
// command line and produces the failures a test machine cannot); null restores them.
void SetInkToolboxSystemForTesting(const InkToolboxSystem* replacement);
