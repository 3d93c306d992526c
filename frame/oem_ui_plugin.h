// OemUIPlugin: the plug-in's one COM object, the IPrintOemUI2 the driver's UI host
// holds while its dialogs are open. It keeps the host's driver interface and the
// per-printer configuration record, and routes the page work to the printer and
// document page code.
#pragma once

#include <windows.h>

#include "config/ui_config.h"
#include "base/printer_oem_ui.h"

// The plug-in's private part of the device mode: the standard extra header followed by
// private bytes that are zero by default.
inline constexpr DWORD kOemPrivateDevModeSize = 724;
inline constexpr DWORD kOemSignature = 0x4F5A444B;  // "OZDK" read as a little-endian 32-bit value
inline constexpr DWORD kOemVersion = 13;

struct OemPrivateDevMode {
    OEM_DMEXTRAHEADER header;
    BYTE privateBytes[kOemPrivateDevModeSize - sizeof(OEM_DMEXTRAHEADER)];
};
static_assert(sizeof(OemPrivateDevMode) == kOemPrivateDevModeSize, "the private part is 724 bytes");

// The private capability the plug-in answers in DeviceCapabilities, and its text.
inline constexpr WORD kEmbosserCapability = 257;
inline constexpr wchar_t kEmbosserCapabilityText[] = L"EmbossMode=1,InkMode=1";
// The colour profile QueryColorProfile names, and the byte count it asks for.
inline constexpr wchar_t kColorProfileName[] = L"OEMPROFILE.icm";
inline constexpr ULONG kColorProfileBytes = 32;

// Merges an input private part into an output one (OEMDM_CONVERT / OEMDM_MERGE): same
// signature copies the smaller of the two sizes (never more than the 724 bytes of the
// part) and stamps the output's size and version; another signature only rewrites the
// output's header. Null on either side does nothing.
void MergeOemPrivateDevMode(const OEM_DMEXTRAHEADER* input, OEM_DMEXTRAHEADER* output) noexcept;

class OemUIPlugin final : public IPrintOemUI2 {
public:
    // One reference, owned by the creator; no driver interface, no configuration.
    OemUIPlugin() noexcept = default;
    OemUIPlugin(const OemUIPlugin&) = delete;
    OemUIPlugin& operator=(const OemUIPlugin&) = delete;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    // IPrintOemUI2, in slot order
    HRESULT STDMETHODCALLTYPE GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded) noexcept override;
    HRESULT STDMETHODCALLTYPE DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) noexcept override;
    HRESULT STDMETHODCALLTYPE PublishDriverInterface(IUnknown* pIUnknown) noexcept override;
    HRESULT STDMETHODCALLTYPE CommonUIProp(DWORD dwMode, POEMCUIPPARAM pOemCUIPParam) noexcept override;
    HRESULT STDMETHODCALLTYPE DocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) noexcept override;
    HRESULT STDMETHODCALLTYPE DevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) noexcept override;
    HRESULT STDMETHODCALLTYPE DevQueryPrintEx(POEMUIOBJ poemuiobj, PDEVQUERYPRINT_INFO pDQPInfo,
                                              PDEVMODEW pPublicDM, PVOID pOEMDM) noexcept override;
    HRESULT STDMETHODCALLTYPE DeviceCapabilities(POEMUIOBJ poemuiobj, HANDLE hPrinter, PWSTR pDeviceName,
                                                 WORD wCapability, PVOID pOutput, PDEVMODEW pPublicDM, PVOID pOEMDM,
                                                 DWORD dwOld, DWORD* dwResult) noexcept override;
    HRESULT STDMETHODCALLTYPE UpgradePrinter(DWORD dwLevel, PBYTE pDriverUpgradeInfo) noexcept override;
    HRESULT STDMETHODCALLTYPE PrinterEvent(PWSTR pPrinterName, INT iDriverEvent, DWORD dwFlags,
                                           LPARAM lParam) noexcept override;
    HRESULT STDMETHODCALLTYPE DriverEvent(DWORD dwDriverEvent, DWORD dwLevel, LPBYTE pDriverInfo,
                                          LPARAM lParam) noexcept override;
    HRESULT STDMETHODCALLTYPE QueryColorProfile(HANDLE hPrinter, POEMUIOBJ poemuiobj, PDEVMODEW pPublicDM,
                                                PVOID pOEMDM, ULONG ulQueryMode, VOID* pvProfileData,
                                                ULONG* pcbProfileData, FLONG* pflProfileData) noexcept override;
    HRESULT STDMETHODCALLTYPE FontInstallerDlgProc(HWND hWnd, UINT usMsg, WPARAM wParam,
                                                   LPARAM lParam) noexcept override;
    HRESULT STDMETHODCALLTYPE UpdateExternalFonts(HANDLE hPrinter, HANDLE hHeap,
                                                  PWSTR pwstrCartridges) noexcept override;
    HRESULT STDMETHODCALLTYPE QueryJobAttributes(HANDLE hPrinter, PDEVMODEW pDevmode, DWORD dwLevel,
                                                 LPBYTE lpAttributeInfo) noexcept override;
    HRESULT STDMETHODCALLTYPE HideStandardUI(DWORD dwMode) noexcept override;
    HRESULT STDMETHODCALLTYPE DocumentEvent(HANDLE hPrinter, HDC hdc, INT iEsc, ULONG cbIn, PVOID pbIn, ULONG cbOut,
                                            PVOID pbOut, PINT piResult) noexcept override;

    // The address of the object's configuration pointer, as handed to the page code:
    // every page opened through this object shares the record it points to.
    UIConfig** ConfigSlot() noexcept { return &config_; }

private:
    ~OemUIPlugin() = default;

    volatile LONG refCount_ = 1;
    IPrintOemDriverUI* driverUI_ = nullptr;  // owned; from PublishDriverInterface
    UIConfig* config_ = nullptr;             // owned; made by the first page that needs it
};
