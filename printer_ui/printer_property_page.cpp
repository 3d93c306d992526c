#include "printer_ui/printer_property_page.h"

#include "frame/trace_log.h"

// This build carries no device settings tree: the host is told so, and its own items
// stay as they are.
HRESULT hrPrinterPropertyPage(DWORD dwMode, POEMCUIPPARAM /*pOEMUIParam*/, UIConfig** /*ppUserData*/) {
    Trace(L"hrPrinterPropertyPage(): dwMode=%d, no device settings tree in this build\n", dwMode);
    SetLastError(ERROR_NOT_SUPPORTED);
    return E_NOTIMPL;
}
