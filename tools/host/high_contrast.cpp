#include "tools/host/high_contrast.h"

#include <uxtheme.h>

namespace ozdkhost {

namespace {

// The colours of Windows' "High Contrast Black" and "High Contrast White" themes.
struct ThemeColour {
    int element;
    COLORREF black;
    COLORREF white;
};
constexpr ThemeColour kThemeColours[] = {
    {COLOR_BTNFACE, RGB(0, 0, 0), RGB(255, 255, 255)},
    {COLOR_BTNTEXT, RGB(255, 255, 255), RGB(0, 0, 0)},
    {COLOR_WINDOW, RGB(0, 0, 0), RGB(255, 255, 255)},
    {COLOR_WINDOWTEXT, RGB(255, 255, 255), RGB(0, 0, 0)},
    {COLOR_WINDOWFRAME, RGB(255, 255, 255), RGB(0, 0, 0)},
    {COLOR_GRAYTEXT, RGB(63, 242, 63), RGB(96, 0, 0)},
    {COLOR_HIGHLIGHT, RGB(26, 235, 255), RGB(55, 0, 110)},
    {COLOR_HIGHLIGHTTEXT, RGB(0, 0, 0), RGB(255, 255, 255)},
    {COLOR_HOTLIGHT, RGB(255, 255, 0), RGB(0, 0, 159)},
    {COLOR_3DHILIGHT, RGB(255, 255, 255), RGB(0, 0, 0)},
    {COLOR_3DLIGHT, RGB(255, 255, 255), RGB(0, 0, 0)},
    {COLOR_3DSHADOW, RGB(255, 255, 255), RGB(0, 0, 0)},
    {COLOR_3DDKSHADOW, RGB(255, 255, 255), RGB(0, 0, 0)},
    {COLOR_ACTIVECAPTION, RGB(26, 235, 255), RGB(55, 0, 110)},
    {COLOR_CAPTIONTEXT, RGB(0, 0, 0), RGB(255, 255, 255)},
    {COLOR_INACTIVECAPTION, RGB(0, 0, 0), RGB(255, 255, 255)},
    {COLOR_INACTIVECAPTIONTEXT, RGB(255, 255, 255), RGB(0, 0, 0)},
};

using SystemParametersInfoProc = BOOL(WINAPI*)(UINT, UINT, void*, UINT);
SystemParametersInfoProc gForward = nullptr;

BOOL WINAPI AnswerHighContrastOn(UINT action, UINT size, void* data, UINT flags) {
    auto* answer = static_cast<HIGHCONTRASTW*>(data);
    if (action != SPI_GETHIGHCONTRAST || answer == nullptr || answer->cbSize != sizeof(HIGHCONTRASTW)) {
        return gForward(action, size, data, flags);
    }
    answer->dwFlags = HCF_HIGHCONTRASTON | HCF_AVAILABLE;
    answer->lpszDefaultScheme = nullptr;
    return TRUE;
}

// The slot of `module`'s import table that holds `function`; null when it imports none.
void** FindImportSlot(HMODULE module, void* function) {
    auto* base = reinterpret_cast<BYTE*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (imports.VirtualAddress == 0) {
        return nullptr;
    }
    for (auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
         entry->Name != 0; ++entry) {
        for (auto* slot = reinterpret_cast<void**>(base + entry->FirstThunk); *slot != nullptr; ++slot) {
            if (*slot == function) {
                return slot;
            }
        }
    }
    return nullptr;
}

void WriteSlot(void** slot, void* value) {
    DWORD protection = 0;
    if (VirtualProtect(slot, sizeof(void*), PAGE_READWRITE, &protection)) {
        *slot = value;
        VirtualProtect(slot, sizeof(void*), protection, &protection);
    }
}

}  // namespace

const wchar_t* HighContrastThemeName(HighContrastTheme theme) {
    return theme == HighContrastTheme::Black ? L"black" : L"white";
}

HighContrastSession::HighContrastSession(HighContrastTheme theme, HMODULE module) {
    std::vector<COLORREF> colours;
    for (const ThemeColour& each : kThemeColours) {
        elements_.push_back(each.element);
        previous_.push_back(GetSysColor(each.element));
        colours.push_back(theme == HighContrastTheme::Black ? each.black : each.white);
    }
    SetSysColors(static_cast<int>(elements_.size()), elements_.data(), colours.data());
    // Windows draws no visual styles in a high-contrast theme: windows made from now on
    // are drawn in the classic way, in the theme's colours.
    themed_ = IsThemeActive() != FALSE;
    if (themed_) EnableTheming(FALSE);
    void* real = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "SystemParametersInfoW"));
    if (module != nullptr && real != nullptr && (slot_ = FindImportSlot(module, real)) != nullptr) {
        original_ = real;
        gForward = reinterpret_cast<SystemParametersInfoProc>(real);
        WriteSlot(slot_, reinterpret_cast<void*>(&AnswerHighContrastOn));
    }
}

HighContrastSession::~HighContrastSession() {
    if (slot_ != nullptr) {
        WriteSlot(slot_, original_);
    }
    if (themed_) EnableTheming(TRUE);
    SetSysColors(static_cast<int>(elements_.size()), elements_.data(), previous_.data());
}

}  // namespace ozdkhost
