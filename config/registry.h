// Reading string values from the registry and from printer data without overruns, and
// where the user's pattern files are kept.
#pragma once

#include <windows.h>

// Terminates a string of `bytesRead` bytes read into a buffer of `capacity` characters:
// a string stored without its terminator, or one that filled the buffer, is cut so that
// the terminator fits.
void TerminateReadString(wchar_t* buffer, DWORD capacity, DWORD bytesRead);

// The registry string reader: reads the string value `name` of the open key into
// `destination` (capacity in bytes, at least 2) and closes the key whatever the outcome.
// Returns the query's status: a value longer than the buffer cannot be read
// (ERROR_MORE_DATA). `destination` is always terminated; it is left empty when the
// query fails or the value is not a string.
LONG ReadRegistryString(const wchar_t* name, wchar_t* destination, DWORD capacityBytes, HKEY key);

// The maker's machine key: "KSDir" names the installation folder.
inline constexpr const wchar_t* kMakerKey = L"SOFTWARE\\Kestrova";

// The user's key that names the pattern file picked last (value "CurrentPattern").
inline constexpr const wchar_t* kUserPatternsKey = L"SOFTWARE\\Kestrova\\Patterns";

// The folder of the pattern files: the common application-data folder followed by
// "\\Kestrova\\Quorl\\Patterns". False (and `folder` empty) when the common folder is unknown.
bool GetPatternFolder(wchar_t* folder, size_t count);
