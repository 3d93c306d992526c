#include "printer_ui/service_page.h"

#include <cstdarg>
#include <cstdint>
#include <cwchar>
#include <initializer_list>

#include "base/module_pages.h"
#include "base/module_pictures.h"
#include "base/spooler.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "config/localisation.h"
#include "config/version_string.h"
#include "device/device_settings_store.h"
#include "device/legacy_transports.h"
#include "printer_ui/extension_services.h"
#include "printer_ui/ink_toolbox.h"
#include "printer_ui/reading_notice.h"
#include "resources/device_dialog_ids.h"
#include "resources/resource_ids.h"

namespace {

constexpr size_t kStatusCapacity = 4096;  // wide characters of the status text
constexpr const wchar_t* kStatusMonitoringValue = L"EnableStatusMonitoring";

UIConfig* ConfigOfPage(HWND hDlg) { return reinterpret_cast<UIConfig*>(GetWindowLongPtrW(hDlg, DWLP_USER)); }

bool IsDeviceKnown(const UIConfig* config) { return config->LegacyParmCount >= 1; }

// Appends formatted text to `text`; what does not fit is cut.
void AppendStatus(wchar_t* text, const wchar_t* format, ...) {
    const size_t used = wcslen(text);
    va_list args;
    va_start(args, format);
    FormatWideV(text + used, kStatusCapacity - used, format, args);
    va_end(args);
}

// "Config"/"EnableStatusMonitoring" is stored as a nonzero 32-bit number.
bool IsStatusMonitoringStored(HANDLE printer) {
    DWORD type = REG_NONE;
    DWORD value = 0;
    DWORD needed = 0;
    const DWORD status = Spool().GetPrinterDataExW(printer, L"Config", kStatusMonitoringValue, &type,
                                                   reinterpret_cast<BYTE*>(&value), sizeof(value), &needed);
    return status == ERROR_SUCCESS && needed == sizeof(value) && value != 0;
}

// The printer's error, "<text> (Code <code>)", when the extension library tells it.
void AppendPrinterError(wchar_t* text, UIConfig& config) {
    auto getError = reinterpret_cast<GetPrinterErrorFunction>(ExtDllLoadFunction(config, kGetPrinterErrorExport));
    if (getError == nullptr) {
        return;
    }
    int32_t record[2] = {-1, -1};
    const DWORD answer = getError(nullptr, config.PrinterName, record, 2);
    Trace(L"UpdatePrinterStatusString(): %u=DllExportGetPrinterError(), code %d\n", static_cast<unsigned>(answer),
          record[0]);
    if (answer != 0) {
        return;
    }
    auto getText = reinterpret_cast<GetPrinterErrorTextFunction>(ExtDllLoadFunction(config, kGetPrinterErrorTextExport));
    if (getText == nullptr) {
        return;
    }
    wchar_t errorText[kPrinterErrorTextCapacity] = {};
    getText(nullptr, record[0], errorText);
    errorText[kPrinterErrorTextCapacity - 1] = L'\0';  // whatever the library left
    AppendStatus(text, L"%s (Code %d)", errorText, record[0]);
}

// The request carries only its code; the rest of the record stays zero.
void RequestPrinterService(HWND hDlg, UIConfig& config, uint32_t service) {
    auto run = reinterpret_cast<PrinterServiceFunction>(ExtDllLoadFunction(config, kPrinterServiceExport));
    if (run == nullptr) {
        return;
    }
    PrinterServiceRecord request = {};
    request.printTestPage.service = service;
    const DWORD result = run(hDlg, config.PrinterName, &request);
    Trace(L"DeviceServicePropPageProc(): %u=DllExportPrinterService(%u)\n", static_cast<unsigned>(result), service);
}

// The timer rebuilds the status every few seconds: writing the same text again would put
// the caret back to the start under a screen reader's cursor and scroll the box.
void SetTextIfChanged(HWND control, const wchar_t* text) {
    wchar_t shown[kStatusCapacity] = {};
    const int length = GetWindowTextW(control, shown, static_cast<int>(kStatusCapacity));
    if (length >= static_cast<int>(kStatusCapacity) - 1 || wcscmp(shown, text) != 0) {
        SetWindowTextW(control, text);
    }
}

void RunStatusTimerNow(HWND hDlg) { DeviceServiceTimerProc(hDlg, WM_TIMER, kServiceStatusTimer, 0); }

void InitServicePage(HWND hDlg, const PROPSHEETPAGEW* page) {
    UIConfig* config = page != nullptr ? reinterpret_cast<UIConfig*>(page->lParam) : nullptr;
    SetWindowLongPtrW(hDlg, DWLP_USER, reinterpret_cast<LONG_PTR>(config));
    Trace(L"ServicePage(): %p  %d\n", static_cast<void*>(config), config != nullptr ? config->LegacyParmCount : 0);
    if (config == nullptr) {
        return;
    }
    ReadDeviceSettingsWithNotice(hDlg, *config, L"ServicePage");
    const BOOL known = IsDeviceKnown(config) ? TRUE : FALSE;
    for (int id : {IDC_EMBOSS_USAGE, IDC_OPEN_PRINTER_EXTENSION, IDC_SERIAL_SETTINGS, IDC_ENABLE_STATUS_MONITORING}) {
        EnableWindow(GetDlgItem(hDlg, id), known);
    }
    CheckDlgButton(hDlg, IDC_ENABLE_STATUS_MONITORING,
                   IsStatusMonitoringStored(config->hPrinter) ? BST_CHECKED : BST_UNCHECKED);
    RunStatusTimerNow(hDlg);
    TranslateDialog(config, hDlg);
}

// The box is stored at once. When the store refuses (no right to change the printer),
// the box goes back to what is stored, so that it never shows a state that is not kept.
void OnStatusMonitoringClicked(HWND hDlg, UIConfig& config) {
    DWORD value = IsDlgButtonChecked(hDlg, IDC_ENABLE_STATUS_MONITORING) == BST_CHECKED ? 1 : 0;
    const DWORD status = Spool().SetPrinterDataExW(config.hPrinter, L"Config", kStatusMonitoringValue, REG_DWORD,
                                                   reinterpret_cast<const BYTE*>(&value), sizeof(value));
    Trace(L"DeviceServicePropPageProc(): %u=SetPrinterDataEx(%s, %u)\n", static_cast<unsigned>(status),
          kStatusMonitoringValue, static_cast<unsigned>(value));
    if (status != ERROR_SUCCESS) {
        CheckDlgButton(hDlg, IDC_ENABLE_STATUS_MONITORING,
                       IsStatusMonitoringStored(config.hPrinter) ? BST_CHECKED : BST_UNCHECKED);
    }
    RunStatusTimerNow(hDlg);
}

void OnServiceClick(HWND hDlg, int id) {
    UIConfig* config = ConfigOfPage(hDlg);
    if (config == nullptr) {
        return;
    }
    switch (id) {
    case IDC_ENABLE_STATUS_MONITORING:
        OnStatusMonitoringClicked(hDlg, *config);
        break;
    case IDC_PRINT_TEST_PAGE:
        RequestPrinterService(hDlg, *config, kServicePrintTestPage);
        break;
    case IDC_SERIAL_SETTINGS:
        RequestPrinterService(hDlg, *config, kServiceSerialSettings);
        break;
    case IDC_OPEN_PRINTER_EXTENSION:
        LaunchInkToolbox(hDlg, *config);
        break;
    default:
        break;  // "Emboss Usage ..." has nothing to do
    }
}

}  // namespace

int UpdatePrinterStatusString(HWND hDlg, UIConfig* pConfig) {
    wchar_t text[kStatusCapacity] = {};
    const bool known = IsDeviceKnown(pConfig);
    if (known && IsDlgButtonChecked(hDlg, IDC_ENABLE_STATUS_MONITORING) == BST_CHECKED) {
        AppendPrinterError(text, *pConfig);
    }
    AppendStatus(text, L"\r\n\r\n");
    AppendStatus(text, L"\r\n%s %s", GetLocalString(pConfig, IDS_DRIVER_VERSION), GetFileVersionString(pConfig));
    if (known) {
        AppendStatus(text, L"\r\n%ws %ws", GetLocalString(pConfig, IDS_SERIAL_NUMBER), pConfig->SerialNumber);
        const uint32_t firmware = pConfig->FirmwareVersion;  // major, minor, build from the high byte down
        AppendStatus(text, L"\r\n%ws %u.%u.%u", GetLocalString(pConfig, IDS_FIRMWARE_VERSION), (firmware >> 16) & 0xFFu,
                     (firmware >> 8) & 0xFFu, firmware & 0xFFu);
        AppendStatus(text, L"\r\n%ws %ws", GetLocalString(pConfig, IDS_MODEL_NUMBER), pConfig->ModelNumber);
    }
    SetTextIfChanged(GetDlgItem(hDlg, IDC_PRINTER_STATUS), text);
    return known ? 1 : 0;
}

void CALLBACK DeviceServiceTimerProc(HWND hwnd, UINT msg, UINT_PTR idEvent, DWORD /*time*/) {
    UIConfig* config = ConfigOfPage(hwnd);
    Trace(L"DeviceServiceTimerProc(): pConfig=0x%p, idEvent=%d\n", static_cast<void*>(config),
          static_cast<int>(idEvent));
    if (msg != WM_TIMER || idEvent != kServiceStatusTimer) {
        return;
    }
    KillTimer(hwnd, kServiceStatusTimer);
    if (config != nullptr && UpdatePrinterStatusString(hwnd, config) != 0) {
        SetTimer(hwnd, kServiceStatusTimer, kServiceStatusPeriod, DeviceServiceTimerProc);
    }
}

UINT CALLBACK DeviceServicePropPageCallback(HWND /*hwnd*/, UINT msg, PROPSHEETPAGEW* page) {
    switch (msg) {
    case PSPCB_CREATE: {
        UIConfig* config = page != nullptr ? reinterpret_cast<UIConfig*>(page->lParam) : nullptr;
        Trace(L"DeviceServicePropPageCallback(): PSPCB_CREATE, pConfig=0x%p\n", static_cast<void*>(config));
        return config != nullptr ? 1 : 0;
    }
    case PSPCB_RELEASE:
        Trace(L"DeviceServicePropPageCallback(): PSPCB_RELEASE\n");
        return 0;
    default:
        return 0;
    }
}

INT_PTR CALLBACK DeviceServicePropPageProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        InitServicePage(hDlg, reinterpret_cast<const PROPSHEETPAGEW*>(lParam));
        return TRUE;
    case WM_COMMAND:
        if (HIWORD(wParam) == BN_CLICKED) {
            OnServiceClick(hDlg, LOWORD(wParam));
        }
        return TRUE;
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        if (header->code == PSN_SETACTIVE) {
            SetTimer(hDlg, kServiceStatusTimer, kServiceStatusPeriod, DeviceServiceTimerProc);
        } else if (header->code == PSN_KILLACTIVE) {
            KillTimer(hDlg, kServiceStatusTimer);
        }
        return FALSE;  // activation and deactivation are never refused
    }
    case WM_DRAWITEM: {
        const auto* item = reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
        if (item->CtlID != IDC_SERVICE_PICTURE) {
            return FALSE;
        }
        DrawModuleBitmap(item, IDB_LOGO, PICTURE_TRANSPARENT_COLOR);
        return TRUE;
    }
    case WM_DESTROY:
        KillTimer(hDlg, kServiceStatusTimer);
        return FALSE;
    default:
        return FALSE;
    }
}
