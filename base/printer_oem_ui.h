// The printer-driver UI plug-in contract: the interfaces the driver's UI host and a UI
// plug-in exchange, their call blocks and constants, as the Windows Driver Kit documents
// them (printoem.h, prcomoem.h). MinGW ships compstui.h and winddiui.h but not these.
#pragma once

#include <windows.h>
#include <unknwn.h>
#include <winddiui.h>
#include <compstui.h>
#include <prsht.h>

// --- identifiers ---
// The class every UI plug-in of the driver is asked for.
inline constexpr CLSID CLSID_OEMUI = {0xABCE80D7, 0x9F46, 0x11D1, {0x88, 0x2A, 0x00, 0xC0, 0x4F, 0xB9, 0x61, 0xEC}};
inline constexpr IID IID_IPrintOemUI = {0xC6A7A9D0, 0x774C, 0x11D1, {0x94, 0x7F, 0x00, 0xA0, 0xC9, 0x06, 0x40, 0xB8}};
inline constexpr IID IID_IPrintOemUI2 = {0x292515F9, 0xB54B, 0x489B, {0x92, 0x75, 0xBA, 0xB5, 0x68, 0x21, 0x39, 0x5E}};
inline constexpr IID IID_IPrintOemDriverUI = {0x92B05D50, 0x78BC, 0x11D1, {0x94, 0x80, 0x00, 0xA0, 0xC9, 0x06, 0x40, 0xB8}};

// --- GetInfo modes ---
#define OEMGI_GETSIGNATURE 1
#define OEMGI_GETINTERFACEVERSION 2
#define OEMGI_GETVERSION 3
#define OEMGI_GETPUBLISHERINFO 4

// --- DevMode modes ---
#define OEMDM_SIZE 1
#define OEMDM_DEFAULT 2
#define OEMDM_CONVERT 3
#define OEMDM_MERGE 4

// --- CommonUIProp / HideStandardUI modes ---
#define OEMCUIP_DOCPROP 1
#define OEMCUIP_PRNPROP 2

// --- QueryColorProfile ---
#ifndef QCP_DEVICEPROFILE
#define QCP_DEVICEPROFILE 0x0000
#define QCP_SOURCEPROFILE 0x0001
#define QCP_PROFILEMEMORY 0x00000001
#define QCP_PROFILEDISK 0x00000002
#endif

// --- call blocks ---
struct OEMUIPROCS;
typedef struct _OEMUIOBJ {
    DWORD cbSize;
    OEMUIPROCS* pOemUIProcs;
} OEMUIOBJ, *POEMUIOBJ;

typedef struct _OEM_DMEXTRAHEADER {
    DWORD dwSize;
    DWORD dwSignature;
    DWORD dwVersion;
} OEM_DMEXTRAHEADER, *POEM_DMEXTRAHEADER;

typedef struct _OEMDMPARAM {
    DWORD cbSize;
    PVOID pdriverobj;
    HANDLE hPrinter;
    HANDLE hModule;
    PDEVMODEW pPublicDMIn;
    PDEVMODEW pPublicDMOut;
    PVOID pOEMDMIn;
    PVOID pOEMDMOut;
    DWORD cbBufSize;
} OEMDMPARAM, *POEMDMPARAM;

struct _OEMCUIPPARAM;
typedef LONG(APIENTRY* OEMCUIPCALLBACK)(PCPSUICBPARAM, _OEMCUIPPARAM*);

typedef struct _OEMCUIPPARAM {
    DWORD cbSize;
    POEMUIOBJ poemuiobj;
    HANDLE hPrinter;
    PWSTR pPrinterName;
    HANDLE hModule;
    HANDLE hOEMHeap;
    PDEVMODEW pPublicDM;
    PVOID pOEMDM;
    DWORD dwFlags;
    POPTITEM pDrvOptItems;
    DWORD cDrvOptItems;
    POPTITEM pOEMOptItems;
    DWORD cOEMOptItems;
    PVOID pOEMUserData;
    OEMCUIPCALLBACK OEMCUIPCallback;
} OEMCUIPPARAM, *POEMCUIPPARAM;

// What the host passes (through PROPSHEETUI_INFO::lParamInit) to the property-sheet
// calls. Its members up to pOEMDM are laid out as in OEMCUIPPARAM.
typedef struct _OEMUIPSPARAM {
    DWORD cbSize;
    POEMUIOBJ poemuiobj;
    HANDLE hPrinter;
    PWSTR pPrinterName;
    HANDLE hModule;
    HANDLE hOEMHeap;
    PDEVMODEW pPublicDM;
    PVOID pOEMDM;
    PVOID pOEMUserData;
    DWORD dwFlags;
    PVOID pOemEntry;
} OEMUIPSPARAM, *POEMUIPSPARAM;

// The property-page record of common controls 6 (version 4): the version-3 record that
// MinGW declares as PROPSHEETPAGEW, followed by the header bitmap. Its size (104 bytes on
// 64-bit Windows) is what a page declares in dwSize. Callbacks receive it as a
// PROPSHEETPAGEW, whose members it begins with.
struct PROPSHEETPAGEW_V4_RECORD {
    DWORD dwSize;
    DWORD dwFlags;
    HINSTANCE hInstance;
    union {
        LPCWSTR pszTemplate;
        LPCDLGTEMPLATEW pResource;
    };
    union {
        HICON hIcon;
        LPCWSTR pszIcon;
    };
    LPCWSTR pszTitle;
    DLGPROC pfnDlgProc;
    LPARAM lParam;
    LPFNPSPCALLBACKW pfnCallback;
    UINT* pcRefParent;
    LPCWSTR pszHeaderTitle;
    LPCWSTR pszHeaderSubTitle;
    HANDLE hActCtx;
    union {
        HBITMAP hbmHeader;
        LPCWSTR pszbmHeader;
    };
};
static_assert(sizeof(void*) != 8 || sizeof(PROPSHEETPAGEW_V4_RECORD) == 104, "104 bytes on 64-bit Windows");

#ifndef DEVQUERYPRINT_INFO_DEFINED
#define DEVQUERYPRINT_INFO_DEFINED
typedef struct _DEVQUERYPRINT_INFO {
    WORD cbSize;
    WORD Level;
    HANDLE hPrinter;
    DEVMODEW* pDevMode;
    LPWSTR pszErrorStr;
    DWORD cchErrorStr;
    DWORD cchNeeded;
} DEVQUERYPRINT_INFO, *PDEVQUERYPRINT_INFO;
#endif

// --- interfaces ---
// The host's own services to a UI plug-in.
struct IPrintOemDriverUI : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE DrvGetDriverSetting(PVOID pci, PCSTR feature, PVOID output, DWORD size,
                                                          PDWORD needed, PDWORD optionsReturned) = 0;
    virtual HRESULT STDMETHODCALLTYPE DrvUpgradeRegistrySetting(HANDLE printer, PCSTR feature, PCSTR option) = 0;
    virtual HRESULT STDMETHODCALLTYPE DrvUpdateUISetting(PVOID pci, PVOID optItem, DWORD previousSelection,
                                                         DWORD mode) = 0;
};

// The plug-in's interface, slots in vtable order.
struct IPrintOemUI2 : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded) = 0;
    virtual HRESULT STDMETHODCALLTYPE DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE PublishDriverInterface(IUnknown* pIUnknown) = 0;
    virtual HRESULT STDMETHODCALLTYPE CommonUIProp(DWORD dwMode, POEMCUIPPARAM pOemCUIPParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DevQueryPrintEx(POEMUIOBJ poemuiobj, PDEVQUERYPRINT_INFO pDQPInfo,
                                                      PDEVMODEW pPublicDM, PVOID pOEMDM) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeviceCapabilities(POEMUIOBJ poemuiobj, HANDLE hPrinter, PWSTR pDeviceName,
                                                         WORD wCapability, PVOID pOutput, PDEVMODEW pPublicDM,
                                                         PVOID pOEMDM, DWORD dwOld, DWORD* dwResult) = 0;
    virtual HRESULT STDMETHODCALLTYPE UpgradePrinter(DWORD dwLevel, PBYTE pDriverUpgradeInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE PrinterEvent(PWSTR pPrinterName, INT iDriverEvent, DWORD dwFlags,
                                                   LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DriverEvent(DWORD dwDriverEvent, DWORD dwLevel, LPBYTE pDriverInfo,
                                                  LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryColorProfile(HANDLE hPrinter, POEMUIOBJ poemuiobj, PDEVMODEW pPublicDM,
                                                        PVOID pOEMDM, ULONG ulQueryMode, VOID* pvProfileData,
                                                        ULONG* pcbProfileData, FLONG* pflProfileData) = 0;
    virtual HRESULT STDMETHODCALLTYPE FontInstallerDlgProc(HWND hWnd, UINT usMsg, WPARAM wParam, LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE UpdateExternalFonts(HANDLE hPrinter, HANDLE hHeap, PWSTR pwstrCartridges) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryJobAttributes(HANDLE hPrinter, PDEVMODEW pDevmode, DWORD dwLevel,
                                                         LPBYTE lpAttributeInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE HideStandardUI(DWORD dwMode) = 0;
    virtual HRESULT STDMETHODCALLTYPE DocumentEvent(HANDLE hPrinter, HDC hdc, INT iEsc, ULONG cbIn, PVOID pbIn,
                                                    ULONG cbOut, PVOID pbOut, PINT piResult) = 0;
};
