#include "frame/oem_ui_plugin.h"

#include <cstring>

#include "config/config_lifecycle.h"
#include "document_ui/document_property_sheets.h"
#include "frame/class_factory.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "printer_ui/device_property_sheets.h"
#include "printer_ui/printer_property_page.h"

namespace {

// The one answer of every slot the plug-in leaves to the host.
HRESULT NotImplemented() noexcept {
    return E_NOTIMPL;
}

HRESULT FailWithLastError(DWORD error) noexcept {
    SetLastError(error);
    return E_FAIL;
}

void WriteOemHeader(OEM_DMEXTRAHEADER* header) noexcept {
    header->dwSize = kOemPrivateDevModeSize;
    header->dwSignature = kOemSignature;
    header->dwVersion = kOemVersion;
}

}  // namespace

void MergeOemPrivateDevMode(const OEM_DMEXTRAHEADER* input, OEM_DMEXTRAHEADER* output) noexcept {
    if (input == nullptr || output == nullptr) {
        return;
    }
    if (input->dwSignature != output->dwSignature) {
        WriteOemHeader(output);
        return;
    }
    DWORD bytes = input->dwSize < output->dwSize ? input->dwSize : output->dwSize;
    if (bytes > kOemPrivateDevModeSize) {
        // The host sized both buffers with OEMDM_SIZE: nothing beyond them is ours.
        Trace(L"MergeOemPrivateDevMode(): dwSize in=%u, out=%u, copying %u\n", input->dwSize, output->dwSize,
              kOemPrivateDevModeSize);
        bytes = kOemPrivateDevModeSize;
    }
    if (input != output) {
        std::memmove(output, input, bytes);
    }
    output->dwSize = kOemPrivateDevModeSize;
    output->dwVersion = kOemVersion;
}

// --- IUnknown ---

HRESULT STDMETHODCALLTYPE OemUIPlugin::QueryInterface(REFIID riid, void** ppv) noexcept {
    return QueryOwnInterface(static_cast<IPrintOemUI2*>(this), IID_IPrintOemUI2, riid, ppv);
}

ULONG STDMETHODCALLTYPE OemUIPlugin::AddRef() noexcept {
    return IncrementReferenceCount(&refCount_);
}

ULONG STDMETHODCALLTYPE OemUIPlugin::Release() noexcept {
    const ULONG count = DecrementReferenceCount(&refCount_);
    if (count != 0) {
        return count;
    }
    if (driverUI_ != nullptr) {
        driverUI_->Release();
        driverUI_ = nullptr;
    }
    if (config_ != nullptr) {
        UIConfig* config = config_;
        config_ = nullptr;
        try {
            DestroyConfig(config);
        } catch (...) {
            Trace(L"OemUIPlugin::Release(): DestroyConfig failed for pConfig=0x%p\n", config);
        }
    }
    delete this;
    return 0;
}

// --- IPrintOemUI2 ---

HRESULT STDMETHODCALLTYPE OemUIPlugin::GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize,
                                               PDWORD pcbNeeded) noexcept {
    // The interface-version mode is deliberately among the rejected ones.
    if (pcbNeeded == nullptr ||
        (dwMode != OEMGI_GETSIGNATURE && dwMode != OEMGI_GETVERSION && dwMode != OEMGI_GETPUBLISHERINFO)) {
        return FailWithLastError(ERROR_INVALID_PARAMETER);
    }
    *pcbNeeded = sizeof(DWORD);
    if (cbSize < sizeof(DWORD) || pBuffer == nullptr) {
        return FailWithLastError(ERROR_INSUFFICIENT_BUFFER);
    }
    switch (dwMode) {
    case OEMGI_GETSIGNATURE:
        *static_cast<DWORD*>(pBuffer) = kOemSignature;
        return S_OK;
    case OEMGI_GETVERSION:
        *static_cast<DWORD*>(pBuffer) = kOemVersion;
        return S_OK;
    default:  // OEMGI_GETPUBLISHERINFO
        *pcbNeeded = 0;
        return FailWithLastError(ERROR_NOT_SUPPORTED);
    }
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) noexcept {
    if (pOemDMParam == nullptr || dwMode < OEMDM_SIZE || dwMode > OEMDM_MERGE) {
        return FailWithLastError(ERROR_INVALID_PARAMETER);
    }
    auto* input = static_cast<const OEM_DMEXTRAHEADER*>(pOemDMParam->pOEMDMIn);
    auto* output = static_cast<OEM_DMEXTRAHEADER*>(pOemDMParam->pOEMDMOut);
    switch (dwMode) {
    case OEMDM_SIZE:
        pOemDMParam->cbBufSize = kOemPrivateDevModeSize;
        return S_OK;
    case OEMDM_DEFAULT:
        if (output == nullptr) {
            Trace(L"DevMode(): OEMDM_DEFAULT without an output buffer\n");
            return FailWithLastError(ERROR_INVALID_PARAMETER);
        }
        std::memset(output, 0, kOemPrivateDevModeSize);
        WriteOemHeader(output);
        return S_OK;
    case OEMDM_CONVERT:
        MergeOemPrivateDevMode(input, output);
        return S_OK;
    default:  // OEMDM_MERGE
        MergeOemPrivateDevMode(input, output);
        if (output != nullptr) {
            WriteOemHeader(output);
        }
        return S_OK;
    }
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::PublishDriverInterface(IUnknown* pIUnknown) noexcept {
    if (driverUI_ != nullptr) {
        return S_OK;
    }
    if (pIUnknown == nullptr) {
        return E_FAIL;
    }
    void* driverUI = nullptr;
    if (FAILED(pIUnknown->QueryInterface(IID_IPrintOemDriverUI, &driverUI)) || driverUI == nullptr) {
        driverUI_ = nullptr;
        return E_FAIL;
    }
    driverUI_ = static_cast<IPrintOemDriverUI*>(driverUI);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::CommonUIProp(DWORD dwMode, POEMCUIPPARAM pOemCUIPParam) noexcept {
    if (dwMode != OEMCUIP_DOCPROP && dwMode != OEMCUIP_PRNPROP) {
        return FailWithLastError(ERROR_INVALID_PARAMETER);
    }
    if (pOemCUIPParam == nullptr) {
        Trace(L"hrOEMPropertyPage(): dwMode=%d without parameters\n", dwMode);
        return FailWithLastError(ERROR_INVALID_PARAMETER);
    }
    Trace(L"hrOEMPropertyPage(): dwMode=%d, cDrvOptItems=%d, cOEMOptItems=%d\n", dwMode, pOemCUIPParam->cDrvOptItems,
          pOemCUIPParam->cOEMOptItems);
    if (dwMode == OEMCUIP_DOCPROP) {
        // The document option tree gets no items of the plug-in: its pages replace it.
        if (pOemCUIPParam->pOEMOptItems == nullptr) {
            pOemCUIPParam->cOEMOptItems = 0;
        }
        return S_OK;
    }
    try {
        return hrPrinterPropertyPage(dwMode, pOemCUIPParam, &config_);
    } catch (...) {
        Trace(L"hrOEMPropertyPage(): the device settings tree failed\n");
        return E_FAIL;
    }
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::DocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) noexcept {
    try {
        return hrOEMDocumentPropertySheets(pPSUIInfo, lParam, driverUI_, &config_);
    } catch (...) {
        Trace(L"DocumentPropertySheets(): the document pages failed\n");
        return E_FAIL;
    }
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::DevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) noexcept {
    try {
        return hrOEMDevicePropertySheets(pPSUIInfo, lParam, &config_);
    } catch (...) {
        Trace(L"DevicePropertySheets(): the device pages failed\n");
        return E_FAIL;
    }
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::DevQueryPrintEx(POEMUIOBJ, PDEVQUERYPRINT_INFO, PDEVMODEW, PVOID) noexcept {
    return NotImplemented();
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::DeviceCapabilities(POEMUIOBJ, HANDLE, PWSTR, WORD wCapability, PVOID pOutput,
                                                          PDEVMODEW, PVOID, DWORD, DWORD* dwResult) noexcept {
    if (wCapability != kEmbosserCapability) {
        return NotImplemented();
    }
    if (pOutput != nullptr) {
        std::memcpy(pOutput, kEmbosserCapabilityText, sizeof(kEmbosserCapabilityText));
    }
    if (dwResult != nullptr) {
        *dwResult = sizeof(kEmbosserCapabilityText);
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::UpgradePrinter(DWORD, PBYTE) noexcept {
    return NotImplemented();
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::PrinterEvent(PWSTR, INT, DWORD, LPARAM) noexcept {
    return NotImplemented();
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::DriverEvent(DWORD, DWORD, LPBYTE, LPARAM) noexcept {
    return NotImplemented();
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::QueryColorProfile(HANDLE, POEMUIOBJ, PDEVMODEW, PVOID, ULONG ulQueryMode,
                                                         VOID* pvProfileData, ULONG* pcbProfileData,
                                                         FLONG* pflProfileData) noexcept {
    if (ulQueryMode != QCP_DEVICEPROFILE) {
        return E_FAIL;
    }
    if (pcbProfileData == nullptr) {
        Trace(L"QueryColorProfile(): no size to report\n");
        return FailWithLastError(ERROR_INVALID_PARAMETER);
    }
    // 32 bytes are asked for and reported, though the name needs 30 with its terminator.
    if (pvProfileData == nullptr || *pcbProfileData < kColorProfileBytes) {
        *pcbProfileData = kColorProfileBytes;
        return FailWithLastError(ERROR_INSUFFICIENT_BUFFER);
    }
    if (!CopyWide(static_cast<wchar_t*>(pvProfileData), *pcbProfileData / sizeof(wchar_t), kColorProfileName)) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
    }
    *pcbProfileData = kColorProfileBytes;
    if (pflProfileData != nullptr) {
        *pflProfileData = QCP_PROFILEDISK;
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::FontInstallerDlgProc(HWND, UINT, WPARAM, LPARAM) noexcept {
    return NotImplemented();
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::UpdateExternalFonts(HANDLE, HANDLE, PWSTR) noexcept {
    return NotImplemented();
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::QueryJobAttributes(HANDLE, PDEVMODEW, DWORD, LPBYTE) noexcept {
    return NotImplemented();
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::HideStandardUI(DWORD dwMode) noexcept {
    // The plug-in's own document sheets take the place of the standard document UI.
    return dwMode == OEMCUIP_DOCPROP ? S_OK : NotImplemented();
}

HRESULT STDMETHODCALLTYPE OemUIPlugin::DocumentEvent(HANDLE, HDC, INT, ULONG, PVOID, ULONG, PVOID, PINT) noexcept {
    return NotImplemented();
}
