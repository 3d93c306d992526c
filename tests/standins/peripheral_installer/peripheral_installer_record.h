// The peripheral-installer stand-in appends one line per call to the REG_BINARY value
// "Calls" of this key under HKEY_CURRENT_USER:
//   <command line as received> <show command> <1: window and instance both null> <1: the
//   printer named by the command line was opened and its "Config" key recreated>
#pragma once

#define OZDK_INSTALLER_RECORD_KEY L"Software\\Kestrova Stand-ins\\Peripheral Installer"
