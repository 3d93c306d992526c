// Where the peripheral-installer stand-in records each call, for the tests to read back:
// under HKEY_CURRENT_USER, the values
//   CommandLine  REG_BINARY  the 8-bit command line exactly as received (no terminator)
//   ShowCommand  REG_DWORD
//   NullWindow   REG_DWORD   1 when the window and instance arguments were both null
//   Calls        REG_DWORD   number of calls so far
//   Repaired     REG_DWORD   1 when the printer named by the command line was opened and
//                            its "Config" key recreated (value "OutputVersion" = 1)
#pragma once

#define OZDK_INSTALLER_RECORD_KEY L"Software\\Kestrova Stand-ins\\Peripheral Installer"
