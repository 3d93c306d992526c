// A dialog template built in memory (DLGTEMPLATE followed by DLGITEMTEMPLATEs), for the
// host's own pages. Coordinates are dialog units; controls are created in the order
// they are added, which is also their tab order.
#pragma once

#include <windows.h>

#include <vector>

namespace ozdkhost {

class DialogTemplate {
public:
    DialogTemplate(const wchar_t* title, short cx, short cy) {
        AppendDword(DS_SETFONT | DS_3DLOOK | DS_CONTROL | WS_CHILD | WS_TABSTOP);
        AppendDword(0);
        countIndex_ = words_.size();
        words_.push_back(0);
        words_.push_back(0);
        words_.push_back(0);
        words_.push_back(static_cast<WORD>(cx));
        words_.push_back(static_cast<WORD>(cy));
        words_.push_back(0);  // no menu
        words_.push_back(0);  // standard class
        AppendString(title);
        words_.push_back(8);
        AppendString(L"MS Shell Dlg");
    }

    void AddControl(const wchar_t* className, const wchar_t* text, WORD id, short x, short y, short cx, short cy,
                    DWORD style) {
        if (words_.size() % 2 != 0) {
            words_.push_back(0);  // DWORD alignment
        }
        AppendDword(style | WS_CHILD | WS_VISIBLE);
        AppendDword(0);
        words_.push_back(static_cast<WORD>(x));
        words_.push_back(static_cast<WORD>(y));
        words_.push_back(static_cast<WORD>(cx));
        words_.push_back(static_cast<WORD>(cy));
        words_.push_back(id);
        AppendString(className);
        AppendString(text);
        words_.push_back(0);  // no creation data
        words_[countIndex_] = static_cast<WORD>(words_[countIndex_] + 1);
    }

    const DLGTEMPLATE* get() const { return reinterpret_cast<const DLGTEMPLATE*>(words_.data()); }

private:
    void AppendDword(DWORD value) {
        words_.push_back(LOWORD(value));
        words_.push_back(HIWORD(value));
    }
    void AppendString(const wchar_t* text) {
        for (; text != nullptr && *text != L'\0'; ++text) {
            words_.push_back(static_cast<WORD>(*text));
        }
        words_.push_back(0);
    }

    std::vector<WORD> words_;
    size_t countIndex_ = 0;
};

}  // namespace ozdkhost
