// A stand-in for the printer driver's user-interface host: it loads ozdkrnui.dll the way
// the driver does, creates the plug-in object, hands it a driver interface, builds the
// call blocks from a real printer, plays the common property sheet UI's part for the
// pages and option items the plug-in adds (option_tree_page.h), and shows them in a
// property sheet.
//
// Used by the end-to-end tests, the soak program and the demo (ozdk_host.exe). Not part
// of the plug-in.
#pragma once

#include <windows.h>
#include <commctrl.h>
#include <prsht.h>

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "base/printer_oem_ui.h"

namespace ozdkhost {

// What the host did and what the plug-in answered, one line per event. Lines may be
// added from several threads (a script acting on a modal dialog logs too).
class HostLog {
public:
    void Add(const wchar_t* format, ...);
    const std::vector<std::wstring>& Lines() const { return lines_; }
    bool Contains(const std::wstring& fragment) const;
    std::wstring Text() const;  // the lines joined with "\r\n"
    // Also print every line to standard output (UTF-8) as it is added.
    void EchoToStandardOutput(bool echo) { echo_ = echo; }

private:
    std::vector<std::wstring> lines_;
    bool echo_ = false;
    mutable std::mutex lock_;
};

// --- resources of the process, for soak measurements ---
struct HeapUsage {
    SIZE_T busyBytes = 0;
    SIZE_T busyBlocks = 0;
};
// Busy blocks of every heap of the process (HeapWalk), or of one heap.
HeapUsage MeasureHeapUsage();
HeapUsage MeasureHeapUsage(HANDLE heap);
// GetProcessHandleCount of this process; 0 when it cannot be had (Wine answers 0).
DWORD ProcessHandleCount();
// The handles of this process counted one by one (GetHandleInformation on every
// possible handle value), for systems whose GetProcessHandleCount does not count.
DWORD CountOpenHandles();

// The printer-driver folder of this machine; empty when the spooler does not say.
std::wstring PrinterDriverDirectory();

// Where the driver keeps the plug-in: the printer-driver directory + "\3\ozdkrnui.dll".
std::wstring InstalledPluginPath();

// Owns one reference of a COM interface.
template <typename T>
class ComRef {
public:
    ComRef() = default;
    explicit ComRef(T* adopted) : pointer_(adopted) {}
    ~ComRef() { reset(); }
    ComRef(const ComRef&) = delete;
    ComRef& operator=(const ComRef&) = delete;
    ComRef(ComRef&& other) noexcept : pointer_(other.pointer_) { other.pointer_ = nullptr; }
    ComRef& operator=(ComRef&& other) noexcept {
        if (this != &other) {
            reset();
            pointer_ = other.pointer_;
            other.pointer_ = nullptr;
        }
        return *this;
    }
    T* get() const { return pointer_; }
    T* operator->() const { return pointer_; }
    explicit operator bool() const { return pointer_ != nullptr; }
    void** put() {
        reset();
        return reinterpret_cast<void**>(&pointer_);
    }
    // Releases the reference; the count the object's Release returned (0 when none).
    ULONG reset() {
        ULONG count = 0;
        if (pointer_ != nullptr) {
            count = pointer_->Release();
            pointer_ = nullptr;
        }
        return count;
    }

private:
    T* pointer_ = nullptr;
};

// The plug-in library as the host loads it: by full path, through its two exports.
class PluginLibrary {
public:
    explicit PluginLibrary(HostLog* log = nullptr) : log_(log) {}
    ~PluginLibrary();  // unloads when DllCanUnloadNow allows it
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    bool Load(const std::wstring& path);
    bool loaded() const { return module_ != nullptr; }
    HMODULE module() const { return module_; }
    const std::wstring& path() const { return path_; }

    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object) const;
    HRESULT CanUnloadNow() const;
    // FreeLibrary when DllCanUnloadNow answers S_OK; true when the library was unloaded.
    bool UnloadIfAllowed();

private:
    HostLog* log_;
    std::wstring path_;
    HMODULE module_ = nullptr;
    LPFNGETCLASSOBJECT getClassObject_ = nullptr;
    LPFNCANUNLOADNOW canUnloadNow_ = nullptr;
};

// The host's own IPrintOemDriverUI, handed to the plug-in through
// PublishDriverInterface. It has no driver features of its own to offer.
class HostDriverUI final : public IPrintOemDriverUI {
public:
    static HostDriverUI* Create();  // one reference, owned by the caller

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;
    HRESULT STDMETHODCALLTYPE DrvGetDriverSetting(PVOID pci, PCSTR feature, PVOID output, DWORD size, PDWORD needed,
                                                  PDWORD optionsReturned) noexcept override;
    HRESULT STDMETHODCALLTYPE DrvUpgradeRegistrySetting(HANDLE printer, PCSTR feature,
                                                        PCSTR option) noexcept override;
    HRESULT STDMETHODCALLTYPE DrvUpdateUISetting(PVOID pci, PVOID optItem, DWORD previousSelection,
                                                 DWORD mode) noexcept override;

    LONG references() const { return references_; }

private:
    HostDriverUI() = default;
    ~HostDriverUI() = default;
    volatile LONG references_ = 1;
};

// Creates one plug-in object the way the driver's host does: DllGetClassObject for
// IClassFactory, CreateInstance for IUnknown, release of the factory, query for
// IPrintOemUI2. Logs each step.
HRESULT CreatePluginObject(const PluginLibrary& library, IPrintOemUI2** object, HostLog* log = nullptr);

// One plug-in object held by the host, with its published driver interface.
class PluginObject {
public:
    explicit PluginObject(HostLog* log = nullptr) : log_(log) {}
    ~PluginObject() { Release(); }
    PluginObject(const PluginObject&) = delete;
    PluginObject& operator=(const PluginObject&) = delete;

    // Creates the object and publishes the host's driver interface to it.
    HRESULT Create(const PluginLibrary& library);
    // Takes over one reference of an object made otherwise (a plug-in linked into the
    // host's program) and publishes the host's driver interface to it.
    HRESULT Adopt(IPrintOemUI2* object);
    IPrintOemUI2* get() const { return object_.get(); }
    HostDriverUI* driverUI() const { return driverUI_; }
    // Releases the host's reference; what the plug-in's Release returned.
    ULONG Release();

private:
    HostLog* log_;
    ComRef<IPrintOemUI2> object_;
    HostDriverUI* driverUI_ = nullptr;
};

// A printer as the driver's host holds it for one user-interface session: the open
// handle, a heap of the session, the public device mode and the plug-in's private part.
// Must outlive the plug-in object that was given its heap and device mode.
class HostPrinter {
public:
    explicit HostPrinter(HostLog* log = nullptr) : log_(log) {}
    ~HostPrinter();
    HostPrinter(const HostPrinter&) = delete;
    HostPrinter& operator=(const HostPrinter&) = delete;

    // Opens the printer (full access when allowed), creates the session heap and fetches
    // the public device mode (GetPrinterW level 2, else DocumentPropertiesW).
    bool Open(const std::wstring& name);
    // Sizes and defaults the plug-in's private part through DevMode(OEMDM_SIZE/DEFAULT).
    bool PrepareOemPrivatePart(IPrintOemUI2* plugin, HMODULE pluginModule);

    HANDLE handle() const { return handle_; }
    const std::wstring& name() const { return name_; }
    HANDLE heap() const { return heap_; }
    bool fullAccess() const { return fullAccess_; }
    DEVMODEW* publicDevMode() const {
        return devMode_.empty() ? nullptr : reinterpret_cast<DEVMODEW*>(const_cast<BYTE*>(devMode_.data()));
    }
    void* oemPrivatePart() const { return oemPart_.empty() ? nullptr : const_cast<BYTE*>(oemPart_.data()); }
    DWORD oemPrivateSize() const { return static_cast<DWORD>(oemPart_.size()); }

private:
    HostLog* log_;
    std::wstring name_;
    HANDLE handle_ = nullptr;
    HANDLE heap_ = nullptr;
    bool fullAccess_ = false;
    std::vector<BYTE> devMode_;
    std::vector<BYTE> oemPart_;
};

enum class SheetKind { Document, Printer };
const wchar_t* SheetKindName(SheetKind kind);

// One call the host made into the plug-in and its answer.
struct CallRecord {
    std::wstring call;  // e.g. "DocumentPropertySheets(PROPSHEETUI_REASON_INIT)"
    HRESULT result = S_OK;
    DWORD lastError = 0;
    ULONG_PTR sheetResult = 0;  // PROPSHEETUI_INFO::Result after a property-sheet call
};

// The option items the plug-in added through CommonUIProp, kept for a page of the host
// that shows them (the common property sheet UI under Wine cannot).
struct CollectedItems {
    OEMCUIPPARAM param = {};  // the building call's block as the plug-in left it
    POPTITEM items = nullptr;  // param.cOEMOptItems items in the session heap
    DWORD count = 0;
    HRESULT sizingResult = E_PENDING;
    HRESULT buildingResult = E_PENDING;
};

// A page the host adds to the sheet itself, after the plug-in's pages unless it leads
// them.
class HostPage {
public:
    virtual ~HostPage() = default;
    // Creates the page; null when it cannot be made.
    virtual HPROPSHEETPAGE CreatePage() = 0;
    // True for a page that stands before the plug-in's pages, as the driver's own
    // "Device Settings" page does.
    virtual bool LeadsPluginPages() const { return false; }
};

class PropertySheetHost;
class OptionTreePage;

// The host's "Plug-in Calls" page: the host log as read-only text.
std::unique_ptr<HostPage> MakeCallLogPage(const HostLog& log);

// The document or printer property sheet of one printer, with the plug-in's pages.
class PropertySheetHost {
public:
    PropertySheetHost(SheetKind kind, PluginObject& plugin, HMODULE pluginModule, HostPrinter& printer,
                      HostLog* log = nullptr);
    ~PropertySheetHost();  // closes the sheet and sends PROPSHEETUI_REASON_DESTROY
    PropertySheetHost(const PropertySheetHost&) = delete;
    PropertySheetHost& operator=(const PropertySheetHost&) = delete;

    // The calls the driver's host makes before a sheet is shown: CommonUIProp (sizing
    // call, then building call), HideStandardUI for documents, then
    // DocumentPropertySheets / DevicePropertySheets with PROPSHEETUI_REASON_INIT and
    // PROPSHEETUI_REASON_GET_INFO_HEADER.
    void Prepare();
    void AddHostPage(std::unique_ptr<HostPage> page);
    // Adds the host's "Device Settings" page with the option items the plug-in added
    // (printer sheet); null when the plug-in added none. The sheet owns the page.
    OptionTreePage* AddOptionTreePage();
    // The page the sheet opens with. Without one: the plug-in's start page, else the
    // first page after the leading host pages, so that the "Device Settings" page comes
    // to the front only when asked to.
    void StartWithHostPage(const HostPage* page) { startHostPage_ = page; }

    // Shows the sheet without waiting; null when no sheet could be made.
    HWND ShowModeless();
    // Shows the sheet and returns when the person closes it; PropertySheetW's result.
    INT_PTR ShowModal();
    // Dispatches messages for a while (modeless sheet). False once the sheet is gone.
    bool PumpMessages(DWORD milliseconds);
    // PSM_SETCURSEL: brings a host page of the open sheet to the front (the page that
    // was in front gets PSN_KILLACTIVE, this one PSN_SETACTIVE). False when the sheet or
    // the page is not there or the change was refused.
    bool ShowHostPage(const HostPage* page);
    // PSM_SETCURSEL to the plug-in's page `index` (0: the first page the plug-in added;
    // the host pages that lead are counted in), as a click on its tab. The page's window;
    // null when the sheet or the page is not there or the change was refused.
    HWND ShowPluginPage(size_t index);
    // The page in front (PSM_GETCURRENTPAGEHWND); null when no sheet is open.
    HWND CurrentPage() const;
    // The texts of the sheet's tabs in order (the tab control's items), and their number.
    std::vector<std::wstring> TabTitles() const;
    int pageCount() const;
    // PSM_APPLY: every created page gets PSN_APPLY. False when the sheet refused.
    bool Apply();
    // The person's Cancel (PSM_PRESSBUTTON with PSBTN_CANCEL); then the sheet closes as
    // with Close(), also when a page refused to be cancelled.
    void Cancel();
    // Closes the sheet (modeless: cancel and destroy) and sends PROPSHEETUI_REASON_DESTROY.
    void Close();

    SheetKind kind() const { return kind_; }
    const HostPrinter& printer() const { return printer_; }
    HWND window() const { return window_; }
    const std::wstring& title() const { return title_; }
    const std::vector<HPROPSHEETPAGE>& pluginPages() const { return pluginPages_; }
    size_t leadingPages() const { return leadingPages_; }  // host pages before the plug-in's
    int startPage() const { return startPage_; }
    const CollectedItems& items() const { return items_; }
    const std::vector<CallRecord>& calls() const { return calls_; }
    const CallRecord* FindCall(const std::wstring& call) const;  // the last with this name
    bool applied() const { return applied_; }

private:
    static LONG_PTR CALLBACK ComPropSheet(HANDLE sheet, UINT function, LPARAM lParam1, LPARAM lParam2);
    LONG_PTR OnComPropSheet(UINT function, LPARAM lParam1, LPARAM lParam2);
    void CollectItems(DWORD mode);
    void CallPropertySheets(WORD reason, LPARAM lParam, const wchar_t* reasonName);
    void Record(const std::wstring& call, HRESULT result, DWORD lastError, ULONG_PTR sheetResult = 0);
    std::vector<HPROPSHEETPAGE> AllPages();
    void FillHeader(PROPSHEETHEADERW* header, std::vector<HPROPSHEETPAGE>* pages, bool modeless);
    void SendDestroy();

    SheetKind kind_;
    PluginObject& plugin_;
    HMODULE pluginModule_;
    HostPrinter& printer_;
    HostLog* log_;

    OEMUIOBJ uiObject_ = {};
    OEMUIPSPARAM sheetParam_ = {};
    PROPSHEETUI_INFO info_ = {};
    PROPSHEETUI_INFO_HEADER header_ = {};
    CollectedItems items_;
    std::vector<HPROPSHEETPAGE> pluginPages_;
    std::vector<std::unique_ptr<HostPage>> hostPages_;
    std::vector<std::pair<const HostPage*, HPROPSHEETPAGE>> hostPageHandles_;  // of the last shown sheet
    const HostPage* startHostPage_ = nullptr;
    int startIndex_ = 0;  // of the last shown sheet
    size_t leadingPages_ = 0;  // of the last shown sheet
    std::vector<CallRecord> calls_;
    std::wstring title_;
    int startPage_ = 0;
    bool initialised_ = false;   // PROPSHEETUI_REASON_INIT was sent
    bool pagesHandedOver_ = false;  // the sheet owns the pages
    bool applied_ = false;
    HWND window_ = nullptr;
};

// --- the whole run of ozdk_host.exe ---
struct HostOptions {
    std::wstring dllPath;         // empty: the installed plug-in
    std::wstring printerName;
    bool documentSheet = true;
    bool printerSheet = true;
    bool apply = false;           // PSM_APPLY before closing
    bool interactive = false;     // modal sheets for a person
    bool callLogPage = true;      // add the host's "Plug-in Calls" page
    bool deviceSettingsPage = true;  // add the "Device Settings" page with the plug-in's items
    bool showDeviceSettings = false;  // open the printer sheet with "Device Settings" in front
    // Items of the "Device Settings" page a person changes once the printer sheet is open
    // (not interactive): UserItemID and the list entry's text, the typed text or number.
    std::vector<std::pair<BYTE, std::wstring>> deviceItemChanges;
    DWORD showMilliseconds = 1500;  // how long a modeless sheet stays open
    // Unix path X.png of the screenshots; empty: none. The document sheet is photographed
    // once per plug-in page, as X-<tab title>.png (the title in lower case, other
    // characters than letters and digits as "-"; "page-N" when nothing is left), or as
    // X.png when the plug-in added no page; the printer sheet as X-printer.png when both
    // sheets are shown, else as X.png, on the page it opens with, and then once per
    // plug-in page as X-printer-<tab title>.png (X-<tab title>.png when it is shown alone).
    std::wstring screenshotPath;
    // "black" or "white": the sheets are shown in that high-contrast theme; empty: as the
    // session's theme is.
    std::wstring highContrast;
};

// Loads the plug-in, opens the printer, shows the chosen sheets, releases everything in
// the host's order. 0 when the host itself got through, 1 when it could not (library,
// object, printer or sheet), whatever the plug-in's calls answered.
int RunHost(const HostOptions& options, HostLog& log);

// Adds a printer of an installed driver on a port (for the demo's printer). True when it
// exists afterwards, whether added now or before.
bool AddPrinterOfDriver(const std::wstring& name, const std::wstring& driver, const std::wstring& port,
                HostLog* log = nullptr);

// Registers `port` as a port of the Standard TCP/IP port monitor that reaches
// `hostName` (the monitor's "HostName" value, raw printing on 9100), the way the port
// monitor's own set-up leaves it; `ipAddress`, when given, as its "IPAddress" value. An
// empty host name is left out. True when the values were written.
bool RegisterStandardTcpIpPort(const std::wstring& port, const std::wstring& hostName, HostLog* log = nullptr,
                               const std::wstring& ipAddress = std::wstring());

// Saves a PNG of the X display the process runs on (xwd | convert, run on the Unix
// side), cut to `window`'s rectangle when one is given. True when the file was written.
bool SaveScreenshot(const std::wstring& unixPath, HostLog* log = nullptr, HWND window = nullptr);
// `path` with "-suffix" before its extension: the name of a further screenshot.
std::wstring ScreenshotPathFor(const std::wstring& path, const std::wstring& suffix);

}  // namespace ozdkhost
