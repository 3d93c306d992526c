// Reading string values from the registry and from printer data without overruns.
#pragma once

#include <windows.h>

// Terminates a string of `bytesRead` bytes read into a buffer of `capacity` characters:
// a string stored without its terminator, or one that filled the buffer, is cut so that
// the terminator fits.
void TerminateReadString(wchar_t* buffer, DWORD capacity, DWORD bytesRead);

// Copies a string value of `bytes` bytes that was read whole into a buffer of
// `capacity` characters: what does not fit is cut, and the copy is terminated.
void CopyCutString(wchar_t* destination, DWORD capacity, const BYTE* value, DWORD bytes);

// The registry string reader: reads the string value `name` of the open key into
// `destination` (capacity in bytes, at least 2), always terminated, a longer value cut to
// fit. Closes the key whatever the outcome. Returns the query's status; a value that is
// not a string gives ERROR_INVALID_DATA and leaves `destination` empty.
LONG ReadRegistryString(const wchar_t* name, wchar_t* destination, DWORD capacityBytes, HKEY key);
