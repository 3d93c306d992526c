// Where the language-monitor extension stand-in records its calls: this environment
// variable of the process that loaded it, one line per DllExportPrinterService call,
// "<owner> <printer name> <service code> <table index>\n" (the index only for the
// braille-table service, else 0).
#pragma once

#define OZDK_EXTENSION_CALLS L"OZDK_EXTENSION_CALLS"
