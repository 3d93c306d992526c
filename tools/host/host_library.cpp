#include "tools/host/host_library.h"

#include "tools/host/dialog_driver.h"
#include "tools/host/dialog_photographs.h"
#include "tools/host/dialog_template.h"
#include "tools/host/high_contrast.h"
#include "tools/host/option_tree_page.h"

#include <winspool.h>

#include <cstdarg>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <new>

namespace ozdkhost {

namespace {

std::wstring FormatV(const wchar_t* format, va_list args) {
    va_list measure;
    va_copy(measure, args);
    const int length = _vscwprintf(format, measure);
    va_end(measure);
    if (length <= 0) {
        return std::wstring();
    }
    std::wstring text(static_cast<size_t>(length) + 1, L'\0');
    _vsnwprintf(&text[0], text.size(), format, args);
    text.resize(static_cast<size_t>(length));
    return text;
}

std::string ToUtf8(const std::wstring& text) {
    if (text.empty()) {
        return std::string();
    }
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), nullptr, 0,
                                          nullptr, nullptr);
    std::string out(static_cast<size_t>(bytes > 0 ? bytes : 0), '\0');
    if (bytes > 0) {
        WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), &out[0], bytes, nullptr,
                            nullptr);
    }
    return out;
}

void Log(HostLog* log, const wchar_t* format, ...) {
    if (log == nullptr) {
        return;
    }
    va_list args;
    va_start(args, format);
    log->Add(L"%s", FormatV(format, args).c_str());
    va_end(args);
}

const wchar_t* ReasonName(WORD reason) {
    switch (reason) {
    case PROPSHEETUI_REASON_INIT: return L"PROPSHEETUI_REASON_INIT";
    case PROPSHEETUI_REASON_GET_INFO_HEADER: return L"PROPSHEETUI_REASON_GET_INFO_HEADER";
    case PROPSHEETUI_REASON_DESTROY: return L"PROPSHEETUI_REASON_DESTROY";
    case PROPSHEETUI_REASON_SET_RESULT: return L"PROPSHEETUI_REASON_SET_RESULT";
    default: return L"PROPSHEETUI_REASON_?";
    }
}

// Flag of OEMCUIPPARAM/OEMUIPSPARAM: the user may not change printer-wide settings.
constexpr DWORD kNoPermission = 0x0001;
// What the common property sheet UI passes with CPSFUNC_SET_HSTARTPAGE for a page of its
// own tree view.
constexpr LPARAM kTreeViewPageSelector = 10000;

}  // namespace

// --- HostLog ---

void HostLog::Add(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    std::wstring line = FormatV(format, args);
    va_end(args);
    std::lock_guard<std::mutex> hold(lock_);
    if (echo_) {
        const std::string text = ToUtf8(line) + "\n";
        fwrite(text.data(), 1, text.size(), stdout);
        fflush(stdout);
    }
    lines_.push_back(std::move(line));
}

bool HostLog::Contains(const std::wstring& fragment) const {
    std::lock_guard<std::mutex> hold(lock_);
    for (const auto& line : lines_) {
        if (line.find(fragment) != std::wstring::npos) {
            return true;
        }
    }
    return false;
}

std::wstring HostLog::Text() const {
    std::lock_guard<std::mutex> hold(lock_);
    std::wstring text;
    for (const auto& line : lines_) {
        text += line;
        text += L"\r\n";
    }
    return text;
}

// --- measurements ---

HeapUsage MeasureHeapUsage(HANDLE heap) {
    HeapUsage usage;
    if (!HeapLock(heap)) {
        return usage;
    }
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(heap, &entry)) {
        if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
            usage.busyBytes += entry.cbData;
            usage.busyBlocks += 1;
        }
    }
    HeapUnlock(heap);
    return usage;
}

HeapUsage MeasureHeapUsage() {
    HeapUsage usage;
    std::vector<HANDLE> heaps(64);
    DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    if (count > heaps.size()) {
        heaps.resize(count + 16);
        count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    }
    heaps.resize(count < heaps.size() ? count : heaps.size());
    for (HANDLE heap : heaps) {
        const HeapUsage one = MeasureHeapUsage(heap);
        usage.busyBytes += one.busyBytes;
        usage.busyBlocks += one.busyBlocks;
    }
    return usage;
}

DWORD ProcessHandleCount() {
    DWORD count = 0;
    return GetProcessHandleCount(GetCurrentProcess(), &count) ? count : 0;
}

DWORD CountOpenHandles() {
    // Kernel handles are multiples of 4; the probe stops after a long run of unused values.
    DWORD count = 0;
    DWORD unusedRun = 0;
    for (ULONG_PTR value = 4; value < 0x100000 && unusedRun < 4096; value += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) {
            ++count;
            unusedRun = 0;
        } else {
            ++unusedRun;
        }
    }
    return count;
}

std::wstring PrinterDriverDirectory() {
    wchar_t directory[MAX_PATH] = {};
    DWORD needed = 0;
    if (!GetPrinterDriverDirectoryW(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(directory), sizeof(directory),
                                    &needed)) {
        return std::wstring();
    }
    return directory;
}

std::wstring InstalledPluginPath() {
    const std::wstring directory = PrinterDriverDirectory();
    return directory.empty() ? directory : directory + L"\\3\\ozdkrnui.dll";
}

// --- PluginLibrary ---

PluginLibrary::~PluginLibrary() {
    if (module_ != nullptr && !UnloadIfAllowed()) {
        Log(log_, L"host: %s stays loaded: DllCanUnloadNow answered S_FALSE", path_.c_str());
    }
}

bool PluginLibrary::Load(const std::wstring& path) {
    path_ = path;
    module_ = LoadLibraryW(path.c_str());
    if (module_ == nullptr) {
        Log(log_, L"host: LoadLibraryW(%s) failed, error %lu", path.c_str(), GetLastError());
        return false;
    }
    getClassObject_ = reinterpret_cast<LPFNGETCLASSOBJECT>(GetProcAddress(module_, "DllGetClassObject"));
    canUnloadNow_ = reinterpret_cast<LPFNCANUNLOADNOW>(GetProcAddress(module_, "DllCanUnloadNow"));
    if (getClassObject_ == nullptr || canUnloadNow_ == nullptr) {
        Log(log_, L"host: %s lacks DllGetClassObject or DllCanUnloadNow", path.c_str());
        FreeLibrary(module_);
        module_ = nullptr;
        return false;
    }
    Log(log_, L"host: loaded %s", path.c_str());
    return true;
}

HRESULT PluginLibrary::GetClassObject(REFCLSID clsid, REFIID iid, void** object) const {
    if (getClassObject_ == nullptr) {
        return E_UNEXPECTED;
    }
    return getClassObject_(clsid, iid, object);
}

HRESULT PluginLibrary::CanUnloadNow() const {
    return canUnloadNow_ != nullptr ? canUnloadNow_() : E_UNEXPECTED;
}

bool PluginLibrary::UnloadIfAllowed() {
    if (module_ == nullptr) {
        return true;
    }
    const HRESULT answer = CanUnloadNow();
    if (answer != S_OK) {
        return false;
    }
    FreeLibrary(module_);
    module_ = nullptr;
    getClassObject_ = nullptr;
    canUnloadNow_ = nullptr;
    Log(log_, L"host: DllCanUnloadNow = S_OK, library freed");
    return true;
}

// --- HostDriverUI ---

HostDriverUI* HostDriverUI::Create() {
    return new (std::nothrow) HostDriverUI();
}

HRESULT STDMETHODCALLTYPE HostDriverUI::QueryInterface(REFIID iid, void** object) noexcept {
    if (object == nullptr) {
        return E_POINTER;
    }
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IPrintOemDriverUI)) {
        *object = static_cast<IPrintOemDriverUI*>(this);
        AddRef();
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE HostDriverUI::AddRef() noexcept {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG STDMETHODCALLTYPE HostDriverUI::Release() noexcept {
    const LONG count = InterlockedDecrement(&references_);
    if (count == 0) {
        delete this;
    }
    return static_cast<ULONG>(count);
}

// The host has no driver features (GPD/PPD options) to report or change.
HRESULT STDMETHODCALLTYPE HostDriverUI::DrvGetDriverSetting(PVOID, PCSTR, PVOID, DWORD, PDWORD needed,
                                                            PDWORD optionsReturned) noexcept {
    if (needed != nullptr) {
        *needed = 0;
    }
    if (optionsReturned != nullptr) {
        *optionsReturned = 0;
    }
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE HostDriverUI::DrvUpgradeRegistrySetting(HANDLE, PCSTR, PCSTR) noexcept {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE HostDriverUI::DrvUpdateUISetting(PVOID, PVOID, DWORD, DWORD) noexcept {
    return E_NOTIMPL;
}

// --- the plug-in object ---

HRESULT CreatePluginObject(const PluginLibrary& library, IPrintOemUI2** object, HostLog* log) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    ComRef<IClassFactory> factory;
    HRESULT hr = library.GetClassObject(CLSID_OEMUI, IID_IClassFactory, factory.put());
    if (FAILED(hr) || !factory) {
        Log(log, L"host: DllGetClassObject(CLSID_OEMUI, IID_IClassFactory) = 0x%08lX", static_cast<unsigned long>(hr));
        return FAILED(hr) ? hr : E_UNEXPECTED;
    }
    ComRef<IUnknown> unknown;
    hr = factory->CreateInstance(nullptr, IID_IUnknown, unknown.put());
    factory.reset();
    if (FAILED(hr) || !unknown) {
        Log(log, L"host: CreateInstance(IID_IUnknown) = 0x%08lX", static_cast<unsigned long>(hr));
        return FAILED(hr) ? hr : E_UNEXPECTED;
    }
    hr = unknown->QueryInterface(IID_IPrintOemUI2, reinterpret_cast<void**>(object));
    unknown.reset();
    if (FAILED(hr) || *object == nullptr) {
        Log(log, L"host: QueryInterface(IID_IPrintOemUI2) = 0x%08lX", static_cast<unsigned long>(hr));
        *object = nullptr;
        return FAILED(hr) ? hr : E_UNEXPECTED;
    }
    return S_OK;
}

HRESULT PluginObject::Create(const PluginLibrary& library) {
    Release();
    IPrintOemUI2* object = nullptr;
    HRESULT hr = CreatePluginObject(library, &object, log_);
    if (FAILED(hr)) {
        return hr;
    }
    return Adopt(object);
}

HRESULT PluginObject::Adopt(IPrintOemUI2* object) {
    Release();
    if (object == nullptr) {
        return E_POINTER;
    }
    object_ = ComRef<IPrintOemUI2>(object);
    driverUI_ = HostDriverUI::Create();
    if (driverUI_ == nullptr) {
        Release();
        return E_OUTOFMEMORY;
    }
    const HRESULT hr = object_->PublishDriverInterface(static_cast<IUnknown*>(driverUI_));
    Log(log_, L"plug-in: PublishDriverInterface = 0x%08lX", static_cast<unsigned long>(hr));
    return S_OK;
}

ULONG PluginObject::Release() {
    const bool held = static_cast<bool>(object_);
    const ULONG count = object_.reset();
    if (held) {
        Log(log_, L"host: plug-in object released, Release() = %lu", count);
    }
    if (driverUI_ != nullptr) {
        driverUI_->Release();
        driverUI_ = nullptr;
    }
    return count;
}

// --- HostPrinter ---

HostPrinter::~HostPrinter() {
    if (heap_ != nullptr) {
        HeapDestroy(heap_);
    }
    if (handle_ != nullptr) {
        ClosePrinter(handle_);
    }
}

bool HostPrinter::Open(const std::wstring& name) {
    name_ = name;
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
    fullAccess_ = OpenPrinterW(const_cast<wchar_t*>(name.c_str()), &handle_, &defaults) != FALSE;
    if (!fullAccess_) {
        handle_ = nullptr;
        if (!OpenPrinterW(const_cast<wchar_t*>(name.c_str()), &handle_, nullptr)) {
            Log(log_, L"host: OpenPrinterW(%s) failed, error %lu", name.c_str(), GetLastError());
            handle_ = nullptr;
            return false;
        }
    }
    heap_ = HeapCreate(0, 0, 0);
    if (heap_ == nullptr) {
        Log(log_, L"host: HeapCreate failed, error %lu", GetLastError());
        return false;
    }

    DWORD needed = 0;
    GetPrinterW(handle_, 2, nullptr, 0, &needed);
    std::vector<BYTE> info(needed);
    if (needed != 0 && GetPrinterW(handle_, 2, info.data(), needed, &needed)) {
        const auto* level2 = reinterpret_cast<const PRINTER_INFO_2W*>(info.data());
        if (level2->pDevMode != nullptr) {
            const auto* dm = level2->pDevMode;
            const size_t bytes = static_cast<size_t>(dm->dmSize) + dm->dmDriverExtra;
            devMode_.assign(reinterpret_cast<const BYTE*>(dm), reinterpret_cast<const BYTE*>(dm) + bytes);
        }
    }
    if (devMode_.empty()) {
        const LONG bytes = DocumentPropertiesW(nullptr, handle_, const_cast<wchar_t*>(name.c_str()), nullptr,
                                               nullptr, 0);
        if (bytes > 0) {
            devMode_.resize(static_cast<size_t>(bytes));
            if (DocumentPropertiesW(nullptr, handle_, const_cast<wchar_t*>(name.c_str()),
                                    reinterpret_cast<DEVMODEW*>(devMode_.data()), nullptr, DM_OUT_BUFFER) != IDOK) {
                devMode_.clear();
            }
        }
    }
    Log(log_, L"host: opened printer \"%s\" (%s access), public device mode of %u bytes", name.c_str(),
        fullAccess_ ? L"full" : L"default", static_cast<unsigned>(devMode_.size()));
    return true;
}

bool HostPrinter::PrepareOemPrivatePart(IPrintOemUI2* plugin, HMODULE pluginModule) {
    OEMDMPARAM param = {};
    param.cbSize = sizeof(param);
    param.hPrinter = handle_;
    param.hModule = pluginModule;
    param.pPublicDMIn = publicDevMode();
    param.pPublicDMOut = publicDevMode();
    HRESULT hr = plugin->DevMode(OEMDM_SIZE, &param);
    Log(log_, L"plug-in: DevMode(OEMDM_SIZE) = 0x%08lX, cbBufSize=%lu", static_cast<unsigned long>(hr),
        param.cbBufSize);
    // A private part larger than 64 KB would not fit behind a DEVMODE (dmDriverExtra).
    if (FAILED(hr) || param.cbBufSize == 0 || param.cbBufSize > 0xFFFF) {
        oemPart_.clear();
        return false;
    }
    const DWORD size = param.cbBufSize;
    oemPart_.assign(size, 0);
    param.pOEMDMIn = nullptr;
    param.pOEMDMOut = oemPart_.data();
    hr = plugin->DevMode(OEMDM_DEFAULT, &param);
    Log(log_, L"plug-in: DevMode(OEMDM_DEFAULT) = 0x%08lX", static_cast<unsigned long>(hr));
    if (FAILED(hr)) {
        oemPart_.clear();
        return false;
    }
    const auto* header = reinterpret_cast<const OEM_DMEXTRAHEADER*>(oemPart_.data());
    if (size >= sizeof(OEM_DMEXTRAHEADER)) {
        Log(log_, L"host: private part dwSize=%lu, dwSignature=0x%08lX, dwVersion=%lu", header->dwSize,
            header->dwSignature, header->dwVersion);
    }
    return true;
}

// --- the host's own pages ---

namespace {

constexpr WORD kCallLogEditId = 100;

class CallLogPage final : public HostPage {
public:
    explicit CallLogPage(const HostLog& log) : log_(log), template_(L"Plug-in Calls", 252, 218) {
        template_.AddControl(L"EDIT", L"", kCallLogEditId, 7, 7, 238, 204,
                             ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL | WS_VSCROLL | WS_BORDER | WS_TABSTOP);
    }

    HPROPSHEETPAGE CreatePage() override {
        PROPSHEETPAGEW page = {};
        page.dwSize = sizeof(page);
        page.dwFlags = PSP_DLGINDIRECT | PSP_USETITLE;
        page.pResource = template_.get();
        page.pszTitle = L"Plug-in Calls";
        page.pfnDlgProc = &CallLogPage::DialogProc;
        page.lParam = reinterpret_cast<LPARAM>(this);
        return CreatePropertySheetPageW(&page);
    }

private:
    static INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            const auto* page = reinterpret_cast<const PROPSHEETPAGEW*>(lParam);
            SetWindowLongPtrW(dialog, DWLP_USER, page->lParam);
            reinterpret_cast<CallLogPage*>(page->lParam)->Refresh(dialog);
            return TRUE;
        }
        if (message == WM_NOTIFY && reinterpret_cast<const NMHDR*>(lParam)->code == static_cast<UINT>(PSN_SETACTIVE)) {
            auto* self = reinterpret_cast<CallLogPage*>(GetWindowLongPtrW(dialog, DWLP_USER));
            if (self != nullptr) {
                self->Refresh(dialog);
            }
            SetWindowLongPtrW(dialog, DWLP_MSGRESULT, 0);
            return TRUE;
        }
        return FALSE;
    }

    void Refresh(HWND dialog) const {
        SetDlgItemTextW(dialog, kCallLogEditId, log_.Text().c_str());
    }

    const HostLog& log_;
    DialogTemplate template_;
};

}  // namespace

std::unique_ptr<HostPage> MakeCallLogPage(const HostLog& log) {
    return std::unique_ptr<HostPage>(new CallLogPage(log));
}

// --- PropertySheetHost ---

const wchar_t* SheetKindName(SheetKind kind) {
    return kind == SheetKind::Document ? L"document" : L"printer";
}

PropertySheetHost::PropertySheetHost(SheetKind kind, PluginObject& plugin, HMODULE pluginModule,
                                     HostPrinter& printer, HostLog* log)
    : kind_(kind), plugin_(plugin), pluginModule_(pluginModule), printer_(printer), log_(log) {
    uiObject_.cbSize = sizeof(uiObject_);
    uiObject_.pOemUIProcs = nullptr;  // the host offers no option procedures

    sheetParam_.cbSize = sizeof(sheetParam_);
    sheetParam_.poemuiobj = &uiObject_;
    sheetParam_.hPrinter = printer.handle();
    sheetParam_.pPrinterName = const_cast<wchar_t*>(printer.name().c_str());
    sheetParam_.hModule = pluginModule;
    sheetParam_.hOEMHeap = printer.heap();
    sheetParam_.pPublicDM = printer.publicDevMode();
    sheetParam_.pOEMDM = printer.oemPrivatePart();
    sheetParam_.dwFlags = printer.fullAccess() ? 0 : kNoPermission;

    info_.cbSize = sizeof(info_);
    info_.Version = PROPSHEETUI_INFO_VERSION;
    info_.Flags = PSUIINFO_UNICODE;
    info_.hComPropSheet = reinterpret_cast<HANDLE>(this);
    info_.pfnComPropSheet = &PropertySheetHost::ComPropSheet;
    info_.lParamInit = reinterpret_cast<LPARAM>(&sheetParam_);

    title_ = printer.name() + (kind == SheetKind::Document ? L" Printing Preferences" : L" Properties");
}

PropertySheetHost::~PropertySheetHost() {
    Close();
    if (!pagesHandedOver_) {
        for (HPROPSHEETPAGE page : pluginPages_) {
            DestroyPropertySheetPage(page);
        }
    }
}

void PropertySheetHost::Record(const std::wstring& call, HRESULT result, DWORD lastError, ULONG_PTR sheetResult) {
    calls_.push_back(CallRecord{call, result, lastError, sheetResult});
    if (FAILED(result)) {
        Log(log_, L"plug-in: %s = 0x%08lX, last error %lu", call.c_str(), static_cast<unsigned long>(result),
            lastError);
    } else if (call.find(L"PropertySheets(") != std::wstring::npos) {
        Log(log_, L"plug-in: %s = 0x%08lX, Result %Iu", call.c_str(), static_cast<unsigned long>(result),
            sheetResult);
    } else {
        Log(log_, L"plug-in: %s = 0x%08lX", call.c_str(), static_cast<unsigned long>(result));
    }
}

const CallRecord* PropertySheetHost::FindCall(const std::wstring& call) const {
    for (auto it = calls_.rbegin(); it != calls_.rend(); ++it) {
        if (it->call == call) {
            return &*it;
        }
    }
    return nullptr;
}

void PropertySheetHost::CollectItems(DWORD mode) {
    IPrintOemUI2* plugin = plugin_.get();
    OEMCUIPPARAM param = {};
    param.cbSize = sizeof(param);
    param.poemuiobj = &uiObject_;
    param.hPrinter = printer_.handle();
    param.pPrinterName = const_cast<wchar_t*>(printer_.name().c_str());
    param.hModule = pluginModule_;
    param.hOEMHeap = printer_.heap();
    param.pPublicDM = printer_.publicDevMode();
    param.pOEMDM = printer_.oemPrivatePart();
    param.dwFlags = printer_.fullAccess() ? 0 : kNoPermission;
    param.pDrvOptItems = nullptr;  // the host has no option items of its own
    param.cDrvOptItems = 0;

    const std::wstring modeName = mode == OEMCUIP_DOCPROP ? L"OEMCUIP_DOCPROP" : L"OEMCUIP_PRNPROP";
    // Sizing call: how many items does the plug-in add?
    SetLastError(0);
    items_.sizingResult = plugin->CommonUIProp(mode, &param);
    Record(L"CommonUIProp(" + modeName + L", sizing)", items_.sizingResult, GetLastError());
    Log(log_, L"host: the plug-in asks for %lu option items", param.cOEMOptItems);
    if (FAILED(items_.sizingResult) || param.cOEMOptItems == 0) {
        items_.param = param;
        return;
    }
    // The common property sheet UI cannot hold more than a few hundred items per page.
    if (param.cOEMOptItems > 4096) {
        Log(log_, L"host: %lu option items are more than the host can show", param.cOEMOptItems);
        items_.param = param;
        return;
    }
    const DWORD count = param.cOEMOptItems;
    auto* items = static_cast<POPTITEM>(HeapAlloc(printer_.heap(), HEAP_ZERO_MEMORY, sizeof(OPTITEM) * count));
    if (items == nullptr) {
        Log(log_, L"host: no memory for %lu option items", count);
        items_.param = param;
        return;
    }
    for (DWORD i = 0; i < count; ++i) {
        items[i].cbSize = sizeof(OPTITEM);
    }
    param.pOEMOptItems = items;
    SetLastError(0);
    items_.buildingResult = plugin->CommonUIProp(mode, &param);
    Record(L"CommonUIProp(" + modeName + L", building)", items_.buildingResult, GetLastError());
    items_.param = param;
    if (SUCCEEDED(items_.buildingResult)) {
        items_.items = items;
        items_.count = param.cOEMOptItems < count ? param.cOEMOptItems : count;
    }
}

void PropertySheetHost::CallPropertySheets(WORD reason, LPARAM lParam, const wchar_t* reasonName) {
    info_.Reason = reason;
    info_.Result = 0;
    SetLastError(0);
    IPrintOemUI2* plugin = plugin_.get();
    const HRESULT hr = kind_ == SheetKind::Document ? plugin->DocumentPropertySheets(&info_, lParam)
                                                    : plugin->DevicePropertySheets(&info_, lParam);
    const DWORD lastError = GetLastError();
    const std::wstring call =
        std::wstring(kind_ == SheetKind::Document ? L"DocumentPropertySheets(" : L"DevicePropertySheets(") +
        reasonName + L")";
    Record(call, hr, lastError, info_.Result);
}

void PropertySheetHost::Prepare() {
    IPrintOemUI2* plugin = plugin_.get();
    if (plugin == nullptr) {
        Log(log_, L"host: no plug-in object to prepare the %s sheet with", SheetKindName(kind_));
        return;
    }
    CollectItems(kind_ == SheetKind::Document ? OEMCUIP_DOCPROP : OEMCUIP_PRNPROP);
    if (kind_ == SheetKind::Document) {
        SetLastError(0);
        const HRESULT hr = plugin->HideStandardUI(OEMCUIP_DOCPROP);
        Record(L"HideStandardUI(OEMCUIP_DOCPROP)", hr, GetLastError());
    }
    CallPropertySheets(PROPSHEETUI_REASON_INIT, info_.lParamInit, ReasonName(PROPSHEETUI_REASON_INIT));
    initialised_ = true;

    header_ = {};
    header_.cbSize = sizeof(header_);
    header_.hInst = GetModuleHandleW(nullptr);
    CallPropertySheets(PROPSHEETUI_REASON_GET_INFO_HEADER, reinterpret_cast<LPARAM>(&header_),
                       ReasonName(PROPSHEETUI_REASON_GET_INFO_HEADER));
    if (header_.pTitle != nullptr && header_.pTitle[0] != L'\0') {
        Log(log_, L"host: the plug-in names the sheet \"%s\"", header_.pTitle);
    }
    Log(log_, L"host: %u page(s) from the plug-in for the %s sheet, start page %d",
        static_cast<unsigned>(pluginPages_.size()), SheetKindName(kind_), startPage_);
}

void PropertySheetHost::AddHostPage(std::unique_ptr<HostPage> page) {
    if (page != nullptr) {
        hostPages_.push_back(std::move(page));
    }
}

OptionTreePage* PropertySheetHost::AddOptionTreePage() {
    if (items_.items == nullptr || items_.count == 0) {
        return nullptr;
    }
    // The person may change the settings when the printer opened with full access.
    auto page = std::make_unique<OptionTreePage>(items_, log_,
                                                 printer_.fullAccess() ? CPSUIF_UPDATE_PERMISSION : 0);
    OptionTreePage* added = page.get();
    hostPages_.push_back(std::move(page));
    return added;
}

LONG_PTR CALLBACK PropertySheetHost::ComPropSheet(HANDLE sheet, UINT function, LPARAM lParam1, LPARAM lParam2) {
    try {
        auto* self = reinterpret_cast<PropertySheetHost*>(sheet);
        return self != nullptr ? self->OnComPropSheet(function, lParam1, lParam2) : 0;
    } catch (...) {
        return 0;
    }
}

LONG_PTR PropertySheetHost::OnComPropSheet(UINT function, LPARAM lParam1, LPARAM lParam2) {
    switch (function) {
    case CPSFUNC_ADD_PROPSHEETPAGEW: {
        auto* page = reinterpret_cast<PROPSHEETPAGEW*>(lParam1);
        if (page == nullptr) {
            Log(log_, L"host: CPSFUNC_ADD_PROPSHEETPAGEW without a page");
            return 0;
        }
        HPROPSHEETPAGE handle = CreatePropertySheetPageW(page);
        Log(log_, L"host: CPSFUNC_ADD_PROPSHEETPAGEW (template %u, title \"%s\") -> %p",
            IS_INTRESOURCE(page->pszTemplate) ? static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(page->pszTemplate))
                                               : 0u,
            (page->dwFlags & PSP_USETITLE) != 0 && page->pszTitle != nullptr && !IS_INTRESOURCE(page->pszTitle)
                ? page->pszTitle
                : L"",
            static_cast<void*>(handle));
        if (handle == nullptr) {
            return 0;
        }
        pluginPages_.push_back(handle);
        return reinterpret_cast<LONG_PTR>(handle);
    }
    case CPSFUNC_SET_HSTARTPAGE: {
        const auto handle = reinterpret_cast<HPROPSHEETPAGE>(lParam1);
        for (size_t i = 0; i < pluginPages_.size(); ++i) {
            if (pluginPages_[i] == handle) {
                startPage_ = static_cast<int>(i);
                Log(log_, L"host: CPSFUNC_SET_HSTARTPAGE page %d%s", startPage_,
                    lParam2 == kTreeViewPageSelector ? L" (tree-view selector)" : L"");
                return 1;
            }
        }
        Log(log_, L"host: CPSFUNC_SET_HSTARTPAGE with an unknown page %p", static_cast<void*>(handle));
        return 0;
    }
    default:
        Log(log_, L"host: pfnComPropSheet function %u is not offered by this host", function);
        return 0;
    }
}

// The sheet's pages in order: the host pages that lead, the plug-in's pages, the other
// host pages. Also settles the start page.
std::vector<HPROPSHEETPAGE> PropertySheetHost::AllPages() {
    std::vector<HPROPSHEETPAGE> pages;
    hostPageHandles_.clear();
    auto addHostPages = [&](bool leading) {
        for (auto& hostPage : hostPages_) {
            if (hostPage->LeadsPluginPages() != leading) {
                continue;
            }
            HPROPSHEETPAGE page = hostPage->CreatePage();
            if (page != nullptr) {
                hostPageHandles_.emplace_back(hostPage.get(), page);
                pages.push_back(page);
            }
        }
    };
    addHostPages(true);
    const size_t leading = pages.size();
    leadingPages_ = leading;
    pages.insert(pages.end(), pluginPages_.begin(), pluginPages_.end());
    addHostPages(false);

    startIndex_ = leading < pages.size() ? static_cast<int>(leading) : 0;
    if (!pluginPages_.empty() && startPage_ >= 0 && static_cast<size_t>(startPage_) < pluginPages_.size()) {
        startIndex_ = static_cast<int>(leading) + startPage_;
    }
    for (size_t i = 0; i < pages.size(); ++i) {
        for (const auto& entry : hostPageHandles_) {
            if (startHostPage_ != nullptr && entry.first == startHostPage_ && entry.second == pages[i]) {
                startIndex_ = static_cast<int>(i);
            }
        }
    }
    return pages;
}

void PropertySheetHost::FillHeader(PROPSHEETHEADERW* header, std::vector<HPROPSHEETPAGE>* pages, bool modeless) {
    *header = {};
    header->dwSize = sizeof(*header);
    header->dwFlags = modeless ? PSH_MODELESS : 0;
    header->hwndParent = nullptr;
    header->hInstance = GetModuleHandleW(nullptr);
    header->pszCaption = title_.c_str();
    header->nPages = static_cast<UINT>(pages->size());
    header->nStartPage = static_cast<UINT>(startIndex_ < static_cast<int>(pages->size()) ? startIndex_ : 0);
    header->phpage = pages->data();
}

HWND PropertySheetHost::ShowModeless() {
    std::vector<HPROPSHEETPAGE> pages = AllPages();
    if (pages.empty()) {
        Log(log_, L"host: no pages to show for the %s sheet", SheetKindName(kind_));
        return nullptr;
    }
    PROPSHEETHEADERW header;
    FillHeader(&header, &pages, true);
    pagesHandedOver_ = true;
    window_ = reinterpret_cast<HWND>(PropertySheetW(&header));
    if (window_ == nullptr || window_ == reinterpret_cast<HWND>(-1)) {
        window_ = nullptr;
        Log(log_, L"host: PropertySheetW failed for the %s sheet, error %lu", SheetKindName(kind_), GetLastError());
        return nullptr;
    }
    Log(log_, L"host: %s sheet \"%s\" open with %u page(s)", SheetKindName(kind_), title_.c_str(),
        static_cast<unsigned>(pages.size()));
    return window_;
}

INT_PTR PropertySheetHost::ShowModal() {
    std::vector<HPROPSHEETPAGE> pages = AllPages();
    if (pages.empty()) {
        Log(log_, L"host: no pages to show for the %s sheet", SheetKindName(kind_));
        return -1;
    }
    PROPSHEETHEADERW header;
    FillHeader(&header, &pages, false);
    pagesHandedOver_ = true;
    const INT_PTR result = PropertySheetW(&header);
    applied_ = result > 0;
    Log(log_, L"host: %s sheet closed, PropertySheetW = %ld", SheetKindName(kind_), static_cast<long>(result));
    return result;
}

bool PropertySheetHost::PumpMessages(DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (window_ == nullptr || !PropSheet_IsDialogMessage(window_, &message)) {
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
        }
        if (window_ != nullptr && PropSheet_GetCurrentPageHwnd(window_) == nullptr) {
            // The sheet ended itself (OK, Cancel or the close box).
            DestroyWindow(window_);
            window_ = nullptr;
            Log(log_, L"host: %s sheet closed", SheetKindName(kind_));
        }
        const ULONGLONG now = GetTickCount64();
        if (now >= end) {
            break;
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now < 20 ? end - now : 20),
                                  QS_ALLINPUT);
    }
    return window_ != nullptr;
}

bool PropertySheetHost::ShowHostPage(const HostPage* page) {
    if (window_ == nullptr) {
        return false;
    }
    for (const auto& entry : hostPageHandles_) {
        if (entry.first == page) {
            const BOOL shown = PropSheet_SetCurSel(window_, entry.second, 0);
            Log(log_, L"host: PSM_SETCURSEL to a host page of the %s sheet = %d", SheetKindName(kind_), shown);
            PumpMessages(20);
            return shown != FALSE;
        }
    }
    Log(log_, L"host: the %s sheet has no such host page", SheetKindName(kind_));
    return false;
}

HWND PropertySheetHost::ShowPluginPage(size_t index) {
    if (window_ == nullptr || index >= pluginPages_.size()) {
        Log(log_, L"host: the %s sheet has no plug-in page %u", SheetKindName(kind_), static_cast<unsigned>(index));
        return nullptr;
    }
    const int position = static_cast<int>(leadingPages_ + index);
    const BOOL shown = PropSheet_SetCurSel(window_, nullptr, position);
    Log(log_, L"host: PSM_SETCURSEL to plug-in page %u of the %s sheet = %d", static_cast<unsigned>(index),
        SheetKindName(kind_), shown);
    PumpMessages(20);
    const HWND page = shown != FALSE && window_ != nullptr ? PropSheet_IndexToHwnd(window_, position) : nullptr;
    return page != nullptr && page == CurrentPage() ? page : nullptr;
}

HWND PropertySheetHost::CurrentPage() const {
    return window_ != nullptr ? PropSheet_GetCurrentPageHwnd(window_) : nullptr;
}

std::vector<std::wstring> PropertySheetHost::TabTitles() const {
    std::vector<std::wstring> titles;
    const HWND tabs = window_ != nullptr ? PropSheet_GetTabControl(window_) : nullptr;
    const int count = tabs != nullptr ? TabCtrl_GetItemCount(tabs) : 0;
    for (int i = 0; i < count; ++i) {
        wchar_t text[256] = {};
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        item.pszText = text;
        item.cchTextMax = 256;
        const bool got = SendMessageW(tabs, TCM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item)) != 0;
        titles.emplace_back(got && item.pszText != nullptr ? item.pszText : L"");
    }
    return titles;
}

int PropertySheetHost::pageCount() const {
    const HWND tabs = window_ != nullptr ? PropSheet_GetTabControl(window_) : nullptr;
    return tabs != nullptr ? TabCtrl_GetItemCount(tabs) : 0;
}

bool PropertySheetHost::Apply() {
    if (window_ == nullptr) {
        return false;
    }
    const LRESULT result = SendMessageW(window_, PSM_APPLY, 0, 0);
    applied_ = result != 0;
    Log(log_, L"host: PSM_APPLY on the %s sheet = %ld", SheetKindName(kind_), static_cast<long>(result));
    PumpMessages(50);
    return applied_;
}

void PropertySheetHost::SendDestroy() {
    if (!initialised_) {
        return;
    }
    initialised_ = false;
    if (plugin_.get() != nullptr) {
        CallPropertySheets(PROPSHEETUI_REASON_DESTROY, applied_ ? 1 : 0, ReasonName(PROPSHEETUI_REASON_DESTROY));
    }
}

void PropertySheetHost::Cancel() {
    if (window_ != nullptr) {
        PropSheet_PressButton(window_, PSBTN_CANCEL);
        PumpMessages(50);
        if (window_ != nullptr) {
            Log(log_, L"host: the %s sheet stays open after Cancel", SheetKindName(kind_));
        }
    }
    Close();
}

void PropertySheetHost::Close() {
    if (window_ != nullptr) {
        PropSheet_PressButton(window_, PSBTN_CANCEL);
        PumpMessages(50);
        if (window_ != nullptr) {
            DestroyWindow(window_);
            window_ = nullptr;
            Log(log_, L"host: %s sheet closed", SheetKindName(kind_));
        }
    }
    SendDestroy();
}

// --- printers ---

bool AddPrinterOfDriver(const std::wstring& name, const std::wstring& driver, const std::wstring& port, HostLog* log) {
    HANDLE existing = nullptr;
    if (OpenPrinterW(const_cast<wchar_t*>(name.c_str()), &existing, nullptr)) {
        ClosePrinter(existing);
        Log(log, L"host: printer \"%s\" exists already", name.c_str());
        return true;
    }
    PRINTER_INFO_2W info = {};
    info.pPrinterName = const_cast<wchar_t*>(name.c_str());
    info.pPortName = const_cast<wchar_t*>(port.c_str());
    info.pDriverName = const_cast<wchar_t*>(driver.c_str());
    info.pPrintProcessor = const_cast<wchar_t*>(L"WinPrint");
    info.pDatatype = const_cast<wchar_t*>(L"RAW");
    HANDLE added = AddPrinterW(nullptr, 2, reinterpret_cast<BYTE*>(&info));
    if (added == nullptr) {
        Log(log, L"host: AddPrinterW(\"%s\", driver \"%s\", port \"%s\") failed, error %lu", name.c_str(),
            driver.c_str(), port.c_str(), GetLastError());
        return false;
    }
    ClosePrinter(added);
    Log(log, L"host: added printer \"%s\" (driver \"%s\", port \"%s\")", name.c_str(), driver.c_str(), port.c_str());
    return true;
}

// --- screenshots ---

bool RegisterStandardTcpIpPort(const std::wstring& port, const std::wstring& hostName, HostLog* log,
                               const std::wstring& ipAddress) {
    const std::wstring path =
        L"SYSTEM\\CurrentControlSet\\Control\\Print\\Monitors\\Standard TCP/IP Port\\Ports\\" + port;
    HKEY key = nullptr;
    LSTATUS status = RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key,
                                     nullptr);
    if (status == ERROR_SUCCESS) {
        const auto setText = [&](const wchar_t* name, const std::wstring& text) {
            if (status == ERROR_SUCCESS && !text.empty()) {
                status = RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                                        static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
            }
        };
        const auto setNumber = [&](const wchar_t* name, DWORD value) {
            if (status == ERROR_SUCCESS) {
                status = RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof(value));
            }
        };
        setText(L"HostName", hostName);
        setText(L"IPAddress", ipAddress);
        setNumber(L"PortNumber", 9100);
        setNumber(L"Protocol", 1);  // raw
        RegCloseKey(key);
    }
    if (status != ERROR_SUCCESS) {
        Log(log, L"host: port \"%s\" could not be registered as a Standard TCP/IP port, error %ld", port.c_str(),
            static_cast<long>(status));
        return false;
    }
    Log(log, L"host: port \"%s\" registered as a Standard TCP/IP port of host %s", port.c_str(), hostName.c_str());
    return true;
}

bool SaveScreenshot(const std::wstring& unixPath, HostLog* log, HWND window) {
    wchar_t display[256] = {};
    if (GetEnvironmentVariableW(L"DISPLAY", display, 256) == 0) {
        Log(log, L"host: no DISPLAY, no screenshot");
        return false;
    }
    std::wstring windowsPath = L"Z:" + unixPath;
    for (auto& c : windowsPath) {
        if (c == L'/') c = L'\\';
    }
    DeleteFileW(windowsPath.c_str());
    // Runs on the Unix side, where Wine does not let us wait for the process: the picture
    // is written under a temporary name and moved into place when complete.
    std::wstring quoted = L"'";
    for (wchar_t c : unixPath) {
        quoted += c == L'\'' ? std::wstring(L"'\\''") : std::wstring(1, c);
    }
    quoted += L"'";
    const std::wstring partial = quoted.substr(0, quoted.size() - 1) + L".partial'";
    std::wstring command = L"/bin/sh -c \"xwd -root -silent -display ";
    command += display;
    command += L" | convert xwd:- ";
    RECT bounds = {};
    if (window != nullptr && GetWindowRect(window, &bounds) && bounds.right > bounds.left &&
        bounds.bottom > bounds.top) {
        // Without a window manager the sheet's screen rectangle is its place on the root
        // window.
        const LONG left = bounds.left > 0 ? bounds.left : 0;
        const LONG top = bounds.top > 0 ? bounds.top : 0;
        command += L"-crop " + std::to_wstring(bounds.right - left) + L"x" + std::to_wstring(bounds.bottom - top) +
                   L"+" + std::to_wstring(left) + L"+" + std::to_wstring(top) + L" +repage ";
    }
    command += L"png:" + partial + L" && mv -f " + partial + L" " + quoted + L"\"";
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        Log(log, L"host: the screenshot command could not be started, error %lu", GetLastError());
        return false;
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    const ULONGLONG end = GetTickCount64() + 20000;
    bool written = false;
    while (!(written = GetFileAttributesW(windowsPath.c_str()) != INVALID_FILE_ATTRIBUTES) &&
           GetTickCount64() < end) {
        // Keep the windows painted while the picture is taken.
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        Sleep(50);
    }
    Log(log, written ? L"host: screenshot saved to %s" : L"host: no screenshot at %s", unixPath.c_str());
    return written;
}

// --- the whole run ---

std::wstring ScreenshotPathFor(const std::wstring& path, const std::wstring& suffix) {
    const size_t dot = path.rfind(L'.');
    const size_t slash = path.rfind(L'/');
    if (dot == std::wstring::npos || (slash != std::wstring::npos && dot < slash)) {
        return path + L"-" + suffix;
    }
    return path.substr(0, dot) + L"-" + suffix + path.substr(dot);
}

namespace {

// A tab title as part of a file name: "Paper/Media" gives "paper-media".
std::wstring FileNamePart(const std::wstring& title) {
    std::wstring part;
    for (wchar_t c : title) {
        if ((c >= L'a' && c <= L'z') || (c >= L'0' && c <= L'9')) {
            part += c;
        } else if (c >= L'A' && c <= L'Z') {
            part += static_cast<wchar_t>(c - L'A' + L'a');
        } else if (!part.empty() && part.back() != L'-') {
            part += L'-';
        }
    }
    if (!part.empty() && part.back() == L'-') {
        part.pop_back();
    }
    return part;
}

// Brings each of the plug-in's pages to the front in turn and photographs the sheet, as
// <path>-<prefix><tab title>.
void PhotographPluginPages(PropertySheetHost& sheet, const std::wstring& path, const std::wstring& prefix,
                           HostLog& log) {
    const std::vector<std::wstring> titles = sheet.TabTitles();
    for (size_t i = 0; i < sheet.pluginPages().size() && sheet.window() != nullptr; ++i) {
        if (sheet.ShowPluginPage(i) == nullptr) {
            continue;
        }
        sheet.PumpMessages(300);
        const size_t tab = sheet.leadingPages() + i;
        std::wstring name = tab < titles.size() ? FileNamePart(titles[tab]) : std::wstring();
        if (name.empty()) {
            name = L"page-" + std::to_wstring(i + 1);
        }
        const std::wstring shot = ScreenshotPathFor(path, prefix + name);
        SaveScreenshot(shot, &log, sheet.window());
        if (tab < titles.size()) {
            PhotographPageDialogs(sheet, sheet.CurrentPage(), titles[tab], shot, log);
        }
    }
}

// What a person does on the "Device Settings" page: picks the list entry that reads the
// value, or types it. False when an item could not be changed.
bool ChangeDeviceItems(PropertySheetHost& sheet, OptionTreePage* tree,
                       const std::vector<std::pair<BYTE, std::wstring>>& changes, HostLog& log) {
    bool all = tree != nullptr && sheet.ShowHostPage(tree);
    for (const auto& [id, value] : changes) {
        const bool done = tree != nullptr && tree->ChooseOrType(id, value);
        log.Add(L"host: item %u of Device Settings set to \"%s\": %s", static_cast<unsigned>(id), value.c_str(),
                done ? L"done" : L"not possible");
        all = all && done;
    }
    return all;
}

bool ShowSheet(const HostOptions& options, SheetKind kind, PluginObject& object, HMODULE module,
               HostPrinter& printer, HostLog& log) {
    PropertySheetHost sheet(kind, object, module, printer, &log);
    sheet.Prepare();
    OptionTreePage* tree = nullptr;
    if (kind == SheetKind::Printer && options.deviceSettingsPage) {
        tree = sheet.AddOptionTreePage();
        if (tree != nullptr && options.showDeviceSettings) {
            sheet.StartWithHostPage(tree);
        }
    }
    if (options.callLogPage) {
        sheet.AddHostPage(MakeCallLogPage(log));
    }
    if (options.interactive) {
        return sheet.ShowModal() >= 0;
    }
    // A read of the embosser that keeps the sheet waiting (a silent or unreachable one)
    // shows its notice while the sheet opens: photographed, then cancelled.
    std::unique_ptr<DialogScript> reading;
    if (kind == SheetKind::Printer && options.showDeviceSettings && !options.screenshotPath.empty()) {
        const std::wstring shot = ScreenshotPathFor(options.screenshotPath, L"printer-reading");
        reading = std::make_unique<DialogScript>(printer.name(), [shot, &log](HWND notice) {
            PhotographReadingNoticeAndCancel(notice, shot, log);
        }, 3000);
    }
    const HWND opened = sheet.ShowModeless();
    reading.reset();  // the read is over: a notice not seen by now was never needed
    if (opened == nullptr) {
        return false;
    }
    sheet.PumpMessages(options.showMilliseconds);
    bool changed = true;
    if (kind == SheetKind::Printer && !options.deviceItemChanges.empty()) {
        changed = ChangeDeviceItems(sheet, tree, options.deviceItemChanges, log);
    }
    if (!options.screenshotPath.empty()) {
        const bool both = options.documentSheet && options.printerSheet;
        if (kind == SheetKind::Document && !sheet.pluginPages().empty()) {
            PhotographPluginPages(sheet, options.screenshotPath, L"", log);
        } else {
            // The page the sheet opened with, then the plug-in's own pages.
            SaveScreenshot(kind == SheetKind::Printer && both ? ScreenshotPathFor(options.screenshotPath, L"printer")
                                                              : options.screenshotPath,
                           &log, sheet.window());
            PhotographPluginPages(sheet, options.screenshotPath, both ? L"printer-" : L"", log);
        }
    }
    if (options.apply) {
        sheet.Apply();
    }
    sheet.Close();
    return changed;
}

}  // namespace

int RunHost(const HostOptions& options, HostLog& log) {
    INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_WIN95_CLASSES};
    InitCommonControlsEx(&controls);

    // Declared in the order of set-up; torn down in reverse: sheets, plug-in object,
    // printer and its heap, library.
    PluginLibrary library(&log);
    const std::wstring path = options.dllPath.empty() ? InstalledPluginPath() : options.dllPath;
    if (!library.Load(path)) {
        return 1;
    }
    HostPrinter printer(&log);
    if (!printer.Open(options.printerName)) {
        return 1;
    }
    PluginObject object(&log);
    const HRESULT hr = object.Create(library);
    if (FAILED(hr)) {
        log.Add(L"host: no plug-in object, 0x%08lX", static_cast<unsigned long>(hr));
        return 1;
    }
    printer.PrepareOemPrivatePart(object.get(), library.module());
    std::unique_ptr<HighContrastSession> highContrast;
    if (!options.highContrast.empty()) {
        highContrast = std::make_unique<HighContrastSession>(
            options.highContrast == L"white" ? HighContrastTheme::White : HighContrastTheme::Black, library.module());
        log.Add(L"host: high-contrast %s theme%s", options.highContrast.c_str(),
                highContrast->answering() ? L"" : L" (the plug-in does not ask for it)");
    }

    bool ok = true;
    if (options.documentSheet) {
        ok = ShowSheet(options, SheetKind::Document, object, library.module(), printer, log) && ok;
    }
    if (options.printerSheet) {
        ok = ShowSheet(options, SheetKind::Printer, object, library.module(), printer, log) && ok;
    }
    object.Release();
    return ok ? 0 : 1;
}

}  // namespace ozdkhost
