// Where the language-monitor extension stand-in records its calls: the REG_SZ value
// "Calls" of this key under HKEY_CURRENT_USER, one line per DllExportPrinterService call,
// "<owner> <printer name> <service code> <table index>\n" (the index only for the
// braille-table service, else 0).
#pragma once

#define OZDK_EXTENSION_RECORD_KEY L"Software\\Kestrova Stand-ins\\Language Monitor Extension"
