// The maker's ink toolbox program ("TavrolinColorInkToolbox.exe"), which the "Service"
// page starts for the printer.
#pragma once

#include <windows.h>

// Finds the toolbox in "<folder>\Kestrova Tavrolin Color Pigmora", where <folder> is
// the maker's installation folder ("KSDir" of the maker's machine key) + "\Quorl", or,
// when that cannot be read, the program-files folder + "\Kestrova\Quorl". Starts it as
// a detached process in its own folder with `"<path>" --printer "<printerName>"`; when
// the program is not there, tells the person so in a message box owned by `owner`.
// True when the program was started.
bool LaunchInkToolbox(HWND owner, const wchar_t* printerName);
