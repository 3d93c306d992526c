// How the language-monitor extension stand-in talks with the test that loaded it: through
// environment variables of that process.
//  - OZDK_EXTENSION_CALLS: the stand-in appends one line per DllExportPrinterService call,
//    "<owner> <printer name> <service code> <table index> <nonzero>\n": the table index
//    for the braille-table service, else 0; the number of nonzero bytes of the whole
//    PrinterServiceRecord after the code (and the table index).
//  - OZDK_PRINTER_ERROR: the printer's current error as "<code> <text>"; unset, the
//    printer has none to tell (DllExportGetPrinterError fails).
#pragma once

#define OZDK_EXTENSION_CALLS L"OZDK_EXTENSION_CALLS"
#define OZDK_PRINTER_ERROR L"OZDK_PRINTER_ERROR"
