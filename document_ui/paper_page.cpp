#include "document_ui/paper_page.h"

#include <winspool.h>

#include "base/spooler.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "config/localisation.h"
#include "config/paper_sizes.h"
#include "config/printer_data.h"
#include "document_ui/device_mode_setters.h"
#include "document_ui/page_frame.h"
#include "document_ui/paper_advanced_dialog.h"
#include "resources/document_dialog_ids.h"
#include "resources/resource_ids.h"

namespace {

const struct {
    UINT stringId;
    uint32_t code;
} kMediaTypes[kMediaTypeEntries] = {
    {IDS_PRINTER_SETTING, 256},  {IDS_MEDIA_DEFAULT_1, 268}, {IDS_MEDIA_DEFAULT_2, 269},
    {IDS_MEDIA_DEFAULT_3, 258},  {IDS_MEDIA_DEFAULT_4, 259}, {IDS_MEDIA_DEFAULT_5, 267},
    {IDS_MEDIA_DEFAULT_6, 273},  {IDS_CUSTOM, 286},          {IDS_MEDIA_CUSTOM_8, 287},
    {IDS_MEDIA_CUSTOM_9, 288},   {IDS_MEDIA_CUSTOM_10, 289}, {IDS_MEDIA_CUSTOM_11, 290},
    {IDS_MEDIA_CUSTOM_12, 291},  {IDS_MEDIA_CUSTOM_13, 292}, {IDS_MEDIA_CUSTOM_14, 293},
    {IDS_MEDIA_CUSTOM_15, 294},  {IDS_MEDIA_CUSTOM_16, 295},
};

// One capability of the printer's driver for its own device mode: `*count` elements of
// `elementBytes` each.
HeapBuffer PrinterCapability(const PRINTER_INFO_2W* printer, WORD capability, size_t elementBytes, int* count) {
    *count = Spool().DeviceCapabilitiesW(printer->pPrinterName, printer->pPortName, capability, nullptr,
                                         printer->pDevMode);
    if (*count < 1) {
        *count = 0;
        return HeapBuffer();
    }
    HeapBuffer values(static_cast<size_t>(*count) * elementBytes);
    if (!values || Spool().DeviceCapabilitiesW(printer->pPrinterName, printer->pPortName, capability,
                                               values.as<wchar_t>(), printer->pDevMode) < *count) {
        *count = 0;
        return HeapBuffer();
    }
    return values;
}

// The paper name at `index` of the driver's paper list.
void CopyDriverPaperName(const PRINTER_INFO_2W* printer, int index, wchar_t* name) {
    int count = 0;
    HeapBuffer names = PrinterCapability(printer, DC_PAPERNAMES, kPaperNameBytes, &count);
    if (name != nullptr && index < count) {
        CopyPaperName(names.as<wchar_t>(), index, name, kFormNameCapacity);
    }
}

bool FindByPaperId(const PRINTER_INFO_2W* printer, PaperDimensions* size, wchar_t* name) {
    const DEVMODEW* dm = printer->pDevMode;
    int count = 0;
    HeapBuffer ids = PrinterCapability(printer, DC_PAPERS, sizeof(WORD), &count);
    for (int i = 0; i < count; ++i) {
        if (ids.as<WORD>()[i] != static_cast<WORD>(dm->dmPaperSize)) {
            continue;
        }
        int sizes = 0;
        HeapBuffer points = PrinterCapability(printer, DC_PAPERSIZE, sizeof(POINT), &sizes);
        if (size != nullptr && i < sizes) {
            *size = {points.as<POINT>()[i].x * 100, points.as<POINT>()[i].y * 100};
        }
        CopyDriverPaperName(printer, i, name);
        return true;
    }
    return false;
}

bool FindByPaperDimensions(const PRINTER_INFO_2W* printer, PaperDimensions* size, wchar_t* name) {
    const DEVMODEW* dm = printer->pDevMode;
    if (size != nullptr) {
        *size = {dm->dmPaperWidth * 100, dm->dmPaperLength * 100};
    }
    int count = 0;
    HeapBuffer points = PrinterCapability(printer, DC_PAPERSIZE, sizeof(POINT), &count);
    for (int i = 0; i < count; ++i) {
        if (points.as<POINT>()[i].x == dm->dmPaperWidth && points.as<POINT>()[i].y == dm->dmPaperLength) {
            CopyDriverPaperName(printer, i, name);
            return true;
        }
    }
    return false;
}

bool FindByFormName(HANDLE hPrinter, const DEVMODEW* dm, PaperDimensions* size, wchar_t* name) {
    DWORD needed = 0;
    Spool().GetFormW(hPrinter, dm->dmFormName, 2, nullptr, 0, &needed);
    HeapBuffer form(needed);
    if (!form || needed < sizeof(FORM_INFO_2W) ||
        !Spool().GetFormW(hPrinter, dm->dmFormName, 2, form.bytes(), needed, &needed)) {
        return false;
    }
    const auto* info = form.as<FORM_INFO_2W>();
    if (size != nullptr) {
        *size = {info->Size.cx, info->Size.cy};
    }
    if (name != nullptr) {
        CopyWide(name, kFormNameCapacity, info->pName != nullptr ? info->pName : dm->dmFormName);
    }
    return true;
}

void MarkPaperChanged(HWND hDlg, PageState& page) {
    page.changed = true;
    SendMessageW(GetParent(hDlg), PSM_CHANGED, reinterpret_cast<WPARAM>(hDlg), 0);
}

int ListSelection(HWND list) { return static_cast<int>(SendMessageW(list, CB_GETCURSEL, 0, 0)); }

void InitPaperPage(HWND hDlg, PageState& page) {
    UIConfig* config = page.config;
    wchar_t name[kFormNameCapacity] = {};
    GetFormFromDevMode(config->hPrinter, &config->PaperSize, name);
    Trace(L"\t%s (%d, %d)\n", name, config->PaperSize.cx, config->PaperSize.cy);
    const bool canManage = CanManagePrinter(config->PrinterName);
    InitPaperSizeComboBox(GetDlgItem(hDlg, IDC_PAPER_SIZE_LIST), config, canManage);
    int changed = 0;
    InitMediaTypeComboBox(GetDlgItem(hDlg, IDC_MEDIA_TYPE_LIST), config, canManage, &changed);
    InitPaperSourceComboBox(hDlg, config, canManage);
    if (changed != 0) {
        MarkPaperChanged(hDlg, page);  // the stored media type is rewritten on apply
    }
    TranslateDialog(config, hDlg);
}

// The Advanced dialog, and what its changes ask of this page.
void OpenPaperAdvanced(HWND hDlg, PageState& page) {
    UIConfig* config = page.config;
    HWND mediaList = GetDlgItem(hDlg, IDC_MEDIA_TYPE_LIST);
    PaperAdvancedParam param = {config, 0, 0, 0, false};
    const int selection = ListSelection(mediaList);
    if (selection != CB_ERR) {
        param.mediaCode = static_cast<uint32_t>(SendMessageW(mediaList, CB_GETITEMDATA, selection, 0));
        const LRESULT length = SendMessageW(mediaList, CB_GETLBTEXTLEN, selection, 0);
        if (length >= 0 && length < kTextCapacity) {
            SendMessageW(mediaList, CB_GETLBTEXT, selection, reinterpret_cast<LPARAM>(config->CustomMediaType));
        }
        param.mediaIndex = selection > 0 ? selection - 1 : 0;
    }
    ShowModalDialog(IDD_PAPER_ADVANCED, hDlg, DocumentPaperAdvancedDlgProc, reinterpret_cast<LPARAM>(&param));

    if (param.flags & (kMediaSelectionChanged | kMediaTypeRemoved)) {
        int unused = 0;
        InitMediaTypeComboBox(mediaList, config, IsWindowEnabled(mediaList) != FALSE, &unused);
        // A custom type of the printer's own list is a "Custom" medium on this page.
        const int shown = param.mediaIndex + 1 < kMediaTypeEntries ? param.mediaIndex + 1 : kFirstCustomMediaIndex;
        SendMessageW(mediaList, CB_SETCURSEL, shown, 0);
        MarkPaperChanged(hDlg, page);
        if (param.flags & kMediaTypeRemoved) {
            ApplyPaperChanges(hDlg);
        }
    }
    if (param.flags & (kFormAdded | kFormDeleted)) {
        InitPaperSizeComboBox(GetDlgItem(hDlg, IDC_PAPER_SIZE_LIST), config, CanManagePrinter(config->PrinterName));
        page.changed = true;
        if (param.flags & kFormDeleted) {
            ApplyPaperChanges(hDlg);
        }
    }
}

}  // namespace

UINT MediaTypeStringId(int index) {
    return index >= 0 && index < kMediaTypeEntries ? kMediaTypes[index].stringId : IDS_PRINTER_SETTING;
}

uint32_t MediaTypeCode(int index) {
    return index >= 0 && index < kMediaTypeEntries ? kMediaTypes[index].code : kPrinterSettingMedia;
}

int MediaTypeIndex(uint32_t code) {
    for (int i = 1; i < kMediaTypeEntries; ++i) {
        if (kMediaTypes[i].code == code) {
            return i;
        }
    }
    return 0;
}

int GetFormFromDevMode(HANDLE hPrinter, PaperDimensions* size, wchar_t* name) {
    HeapBuffer info = FetchPrinterInfo(hPrinter, 2);
    if (!info) {
        return -1;
    }
    const auto* printer = info.as<PRINTER_INFO_2W>();
    const DEVMODEW* dm = printer->pDevMode;
    bool found = false;
    if (dm != nullptr) {
        Trace(L"GetFormFromDevMode(): dmFields & DM_PAPERSIZE=%d\n", (dm->dmFields & DM_PAPERSIZE) != 0);
        Trace(L"GetFormFromDevMode(): dmFields & DM_FORMNAME=%d\n", (dm->dmFields & DM_FORMNAME) != 0);
        Trace(L"GetFormFromDevMode(): dmFields & DM_PAPERLENGTH=%d\n", (dm->dmFields & DM_PAPERLENGTH) != 0);
        Trace(L"GetFormFromDevMode(): dmFields & DM_MEDIATYPE=%d\n", (dm->dmFields & DM_MEDIATYPE) != 0);
        Trace(L"GetFormFromDevMode(): (%d, %d) %d, dmScale=%d\n", dm->dmPaperWidth, dm->dmPaperLength,
              dm->dmPaperSize, dm->dmScale);
        Trace(L"GetFormFromDevMode(): dmMediaType=%d\n", static_cast<int>(dm->dmMediaType));
        if (dm->dmFields & DM_PAPERSIZE) {
            found = FindByPaperId(printer, size, name);
        }
        if (!found && (dm->dmFields & (DM_PAPERLENGTH | DM_PAPERWIDTH))) {
            Trace(L"GetFormFromDevMode(): not found in DM_PAPERSIZE, trying in DM_PAPERLENGTH|DM_PAPERWIDTH\n");
            found = FindByPaperDimensions(printer, size, name);
        }
        if (!found && (dm->dmFields & DM_FORMNAME)) {
            Trace(L"GetFormFromDevMode(): trying in DM_FORMNAME\n");
            found = FindByFormName(hPrinter, dm, size, name);
        }
    }
    Trace(L"GetFormFromDevMode(): found=%d\n", found ? 1 : 0);
    return found ? 0 : 1;
}

int InitPaperSizeComboBox(HWND list, UIConfig* config, bool enable) {
    EnableWindow(list, enable ? TRUE : FALSE);
    Trace(L"InitPaperSizeComboBox(): paper dimensions=(%d, %d)\n", config->PaperSize.cx, config->PaperSize.cy);
    SendMessageW(list, CB_RESETCONTENT, 0, 0);
    int count = 0;
    DWORD dmFields = 0;
    HeapBuffer names = FetchPrinterPaperNames(config->hPrinter, &count, &dmFields);
    if (count < 1) {
        return 0;
    }
    wchar_t automatic[kFormNameCapacity] = {};
    CopyWide(automatic, kFormNameCapacity, GetLocalString(config, IDS_AUTOMATIC_SELECT));
    SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(automatic));
    const bool selectByDimensions = (dmFields & (DM_PAPERSIZE | DM_PAPERLENGTH | DM_PAPERWIDTH)) ==
                                    (DM_PAPERLENGTH | DM_PAPERWIDTH);
    int chosen = -1;
    for (int i = 0; i < count; ++i) {
        wchar_t name[kFormNameCapacity] = {};
        CopyPaperName(names.as<wchar_t>(), i, name, kFormNameCapacity);
        const LRESULT entry = SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
        const PaperDimensions form = GetFormSize(config->hPrinter, name);
        const PaperDimensions rounded = {ToTenthMillimetre(form.cx), ToTenthMillimetre(form.cy)};
        Trace(L"InitPaperSizeComboBox(): %s (%d, %d)\n", name, rounded.cx, rounded.cy);
        if (rounded.cx == config->PaperSize.cx && rounded.cy == config->PaperSize.cy) {
            CopyWide(config->FormName, kFormNameCapacity, name);
            if (selectByDimensions) {
                chosen = static_cast<int>(entry);  // a later match overrides an earlier one
            }
        }
    }
    if (SendMessageW(list, CB_GETCOUNT, 0, 0) == CB_ERR) {
        EnableWindow(list, FALSE);
        Trace(L"InitPaperSizeComboBox(): failed to set selection\n");
    } else if (chosen >= 0) {
        SendMessageW(list, CB_SETCURSEL, chosen, 0);
    } else {
        SendMessageW(list, CB_SETCURSEL, 0, 0);
        config->PaperSize = GetFormSize(config->hPrinter, automatic);
        CopyWide(config->FormName, kFormNameCapacity, automatic);
    }
    Trace(L"InitPaperSizeComboBox(): current selection=%d\n", ListSelection(list));
    return count;
}

int InitMediaTypeComboBox(HWND list, UIConfig* config, bool enable, int* changed) {
    if (list == nullptr) {
        return kMediaTypeEntries;
    }
    EnableWindow(list, enable ? TRUE : FALSE);
    SendMessageW(list, CB_RESETCONTENT, 0, 0);
    for (const auto& media : kMediaTypes) {
        const LRESULT entry =
            SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(GetLocalString(config, media.stringId)));
        SendMessageW(list, CB_SETITEMDATA, entry, media.code);
    }
    Trace(L"InitMediaTypeComboBox(): media types returned=%d\n", kMediaTypeEntries);
    Trace(L"InitMediaTypeComboBox(): pConfig->iMediaType=%d\n", config->MediaType);
    const int index = MediaTypeIndex(config->MediaType);
    SendMessageW(list, CB_SETCURSEL, index, 0);
    if (index == 0 && config->MediaType != kPrinterSettingMedia && changed != nullptr) {
        *changed = 1;
    }
    return kMediaTypeEntries;
}

void InitPaperSourceComboBox(HWND hDlg, UIConfig* config, bool enable) {
    HWND list = GetDlgItem(hDlg, IDC_PAPER_SOURCE_LIST);
    EnableWindow(list, enable ? TRUE : FALSE);
    SendMessageW(list, CB_RESETCONTENT, 0, 0);
    ShowWindow(list, SW_HIDE);
    ShowWindow(GetDlgItem(hDlg, IDC_PAPER_SOURCE_GROUP), SW_HIDE);
    SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(GetLocalString(config, IDS_SOURCE_PORTRAIT)));
    SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(GetLocalString(config, IDS_SOURCE_LANDSCAPE)));
    SendMessageW(list, CB_SETCURSEL, config->PaperSource == 2 ? 1 : 0, 0);
}

void ApplyPaperSize(HWND list, UIConfig* config) {
    const int selection = ListSelection(list);
    if (selection == CB_ERR) {
        return;
    }
    if (selection == 0) {
        SetPrinterPaperSize(config, L"", ~static_cast<DWORD>(DM_FORMNAME | DM_PAPERLENGTH | DM_PAPERWIDTH),
                            DM_PAPERSIZE);
        return;
    }
    wchar_t name[kFormNameCapacity] = {};
    if (SendMessageW(list, CB_GETLBTEXTLEN, selection, 0) >= kFormNameCapacity) {
        return;
    }
    SendMessageW(list, CB_GETLBTEXT, selection, reinterpret_cast<LPARAM>(name));
    const PaperDimensions form = GetFormSize(config->hPrinter, name);
    const PaperDimensions rounded = {ToTenthMillimetre(form.cx), ToTenthMillimetre(form.cy)};
    Trace(L"ApplyPaperSize(): selected paper size=%s, (%d, %d)\n", name, rounded.cx, rounded.cy);
    if (rounded.cx != config->PaperSize.cx || rounded.cy != config->PaperSize.cy) {
        SetPrinterPaperSize(config, name, ~static_cast<DWORD>(DM_PAPERSIZE),
                            DM_FORMNAME | DM_PAPERLENGTH | DM_PAPERWIDTH);
        config->PaperSize = rounded;
        CopyWide(config->FormName, kFormNameCapacity, name);
    } else {
        Trace(L"ApplyPaperSize(): no changes in paper size\n");
    }
}

void ApplyMediaType(HWND list, UIConfig* config) {
    const int selection = ListSelection(list);
    if (selection == CB_ERR) {
        return;
    }
    CopyWide(config->CustomMediaType, kTextCapacity, L"(None)");
    uint32_t code = kPrinterSettingMedia;
    if (selection >= 1 && selection < kFirstCustomMediaIndex) {
        code = MediaTypeCode(selection);
    } else if (selection >= kFirstCustomMediaIndex && selection < kMediaTypeEntries) {
        code = static_cast<uint32_t>(selection + 279);
        if (SendMessageW(list, CB_GETLBTEXTLEN, selection, 0) < kTextCapacity) {
            SendMessageW(list, CB_GETLBTEXT, selection, reinterpret_cast<LPARAM>(config->CustomMediaType));
        }
        Trace(L"ApplyMediaType(): custom media type %s\n", config->CustomMediaType);
    }
    Trace(L"ApplyMediaType(): SetPrinterMediaType( %d )\n", code);
    SetPrinterMediaType(config, code);
}

void ApplyPaperChanges(HWND hDlg) {
    const PageState* page = PageStateOf(hDlg);
    UIConfig* config = page != nullptr ? page->config : nullptr;
    Trace(L"ApplyPaperChanges(): hDlg=%p, LPUIConfig=%p\n", static_cast<void*>(hDlg), static_cast<void*>(config));
    if (config == nullptr) {
        return;
    }
    ApplyPaperSize(GetDlgItem(hDlg, IDC_PAPER_SIZE_LIST), config);
    ApplyMediaType(GetDlgItem(hDlg, IDC_MEDIA_TYPE_LIST), config);
    if (ListSelection(GetDlgItem(hDlg, IDC_PAPER_SOURCE_LIST)) != CB_ERR) {
        SetPrinterPaperSource(config, DMBIN_TRACTOR);  // whichever feeder is chosen
    }
    UpdatePaperConfig(config);
}

void UpdatePaperConfig(UIConfig* config) {
    Trace(L"UpdatePaperConfig(): updating\n");
    SetPrinterDataPaperSize(config->hPrinter, L"PaperSize", &config->PaperSize, sizeof(config->PaperSize));
    SetPrinterDataInteger(config->hPrinter, L"MediaType", config->MediaType);
    SetPrinterDataInteger(config->hPrinter, L"PaperSource", config->PaperSource);
}

namespace {

INT_PTR OnPaperCommand(HWND hDlg, PageState& page, WORD id, WORD code) {
    switch (id) {
    case IDC_MEDIA_TYPE_LIST:
    case IDC_MEDIA_SURFACE_LIST:
    case IDC_PAPER_SOURCE_LIST:
    case IDC_PAPER_SIZE_LIST:
        if (code == CBN_SELCHANGE) {
            MarkPaperChanged(hDlg, page);
        }
        return TRUE;
    case IDC_ADVANCED:
        if (code == BN_CLICKED) {
            OpenPaperAdvanced(hDlg, page);
        }
        return TRUE;
    default:
        return FALSE;
    }
}

const PageBehaviour kPaperPage = {
    L"DocumentPaperPropPageProc",
    InitPaperPage,
    OnPaperCommand,
    [](HWND, int control) -> UINT { return control == IDC_LOGO_PICTURE ? IDB_LOGO : 0; },
    [](HWND hDlg, PageState&) { ApplyPaperChanges(hDlg); },
    nullptr,
    nullptr,
    true,
};

}  // namespace

UINT CALLBACK DocumentPaperPropPageCallback(HWND, UINT msg, PROPSHEETPAGEW* page) {
    return HandlePageCallback(L"DocumentPaperPropPageCallback", msg, page);
}

INT_PTR CALLBACK DocumentPaperPropPageProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    return RunPageProc(kPaperPage, hDlg, message, wParam, lParam);
}
