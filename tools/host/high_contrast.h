// A high-contrast theme for the host's process, as a person with low vision sets it.
//
// Wine has no high-contrast switch: SystemParametersInfoW(SPI_GETHIGHCONTRAST) always
// answers "off" and SPI_SETHIGHCONTRAST fails. So the theme's system colours are set for
// the session (SetSysColors), visual styles are turned off for the process, as Windows
// does in such a theme, and the question a library asks is answered "on" through that
// library's own import of SystemParametersInfoW. All is put back when the object goes.
#pragma once

#include <windows.h>

#include <vector>

namespace ozdkhost {

enum class HighContrastTheme { Black, White };
const wchar_t* HighContrastThemeName(HighContrastTheme theme);  // "black", "white"

class HighContrastSession {
public:
    // `module`: the library whose SPI_GETHIGHCONTRAST question is answered "on" (every
    // other question goes through); null: the colours only.
    HighContrastSession(HighContrastTheme theme, HMODULE module);
    ~HighContrastSession();
    HighContrastSession(const HighContrastSession&) = delete;
    HighContrastSession& operator=(const HighContrastSession&) = delete;

    // True when the library's import was found and answers "on".
    bool answering() const { return slot_ != nullptr; }

private:
    std::vector<int> elements_;
    std::vector<COLORREF> previous_;
    bool themed_ = false;
    void** slot_ = nullptr;  // the library's import slot of SystemParametersInfoW
    void* original_ = nullptr;
};

}  // namespace ozdkhost
