#include "tools/dialog_lint/dialog_lint.h"

#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace ozdklint {
namespace {

struct Token {
    enum Type { Ident, Number, String, Punct } type;
    std::string text;
};
using Tokens = std::vector<Token>;

#define OZDK_NAME(name) {#name, static_cast<unsigned long>(name)}
const std::map<std::string, unsigned long> kWindowsNames = {
    OZDK_NAME(WS_CHILD), OZDK_NAME(WS_POPUP), OZDK_NAME(WS_VISIBLE), OZDK_NAME(WS_DISABLED),
    OZDK_NAME(WS_CAPTION), OZDK_NAME(WS_SYSMENU), OZDK_NAME(WS_BORDER), OZDK_NAME(WS_VSCROLL),
    OZDK_NAME(WS_HSCROLL), OZDK_NAME(WS_GROUP), OZDK_NAME(WS_TABSTOP), OZDK_NAME(DS_SHELLFONT),
    OZDK_NAME(DS_SETFONT), OZDK_NAME(DS_CONTROL), OZDK_NAME(DS_3DLOOK), OZDK_NAME(DS_MODALFRAME),
    OZDK_NAME(DS_CENTER), OZDK_NAME(SS_LEFT), OZDK_NAME(SS_CENTER), OZDK_NAME(SS_RIGHT),
    OZDK_NAME(SS_ICON), OZDK_NAME(SS_BITMAP), OZDK_NAME(SS_OWNERDRAW), OZDK_NAME(SS_NOPREFIX),
    OZDK_NAME(SS_NOTIFY), OZDK_NAME(SS_SUNKEN), OZDK_NAME(SS_CENTERIMAGE), OZDK_NAME(SS_LEFTNOWORDWRAP),
    OZDK_NAME(BS_PUSHBUTTON), OZDK_NAME(BS_DEFPUSHBUTTON), OZDK_NAME(BS_CHECKBOX),
    OZDK_NAME(BS_AUTOCHECKBOX), OZDK_NAME(BS_RADIOBUTTON), OZDK_NAME(BS_AUTORADIOBUTTON),
    OZDK_NAME(BS_GROUPBOX), OZDK_NAME(BS_OWNERDRAW), OZDK_NAME(BS_MULTILINE), OZDK_NAME(BS_TOP),
    OZDK_NAME(BS_LEFT), OZDK_NAME(BS_BITMAP), OZDK_NAME(BS_ICON), OZDK_NAME(ES_LEFT),
    OZDK_NAME(ES_MULTILINE), OZDK_NAME(ES_READONLY), OZDK_NAME(ES_AUTOHSCROLL), OZDK_NAME(ES_AUTOVSCROLL),
    OZDK_NAME(ES_NUMBER), OZDK_NAME(ES_WANTRETURN), OZDK_NAME(ES_PASSWORD), OZDK_NAME(CBS_SIMPLE),
    OZDK_NAME(CBS_DROPDOWN), OZDK_NAME(CBS_DROPDOWNLIST), OZDK_NAME(CBS_SORT), OZDK_NAME(CBS_AUTOHSCROLL),
    OZDK_NAME(LBS_NOTIFY), OZDK_NAME(LBS_SORT), OZDK_NAME(LBS_NOINTEGRALHEIGHT), OZDK_NAME(TBS_HORZ),
    OZDK_NAME(TBS_VERT), OZDK_NAME(TBS_NOTICKS), OZDK_NAME(TBS_AUTOTICKS), OZDK_NAME(TBS_BOTH),
    OZDK_NAME(UDS_SETBUDDYINT), OZDK_NAME(UDS_ALIGNRIGHT), OZDK_NAME(UDS_ARROWKEYS),
    OZDK_NAME(UDS_NOTHOUSANDS), OZDK_NAME(UDS_AUTOBUDDY), OZDK_NAME(IDOK), OZDK_NAME(IDCANCEL),
};
#undef OZDK_NAME

// The statements of a dialog body: their window class, the style they get without a style
// expression, and the one a style expression starts from (as windres 2.40 builds them).
struct Statement {
    const char* keyword;
    const char* className;
    unsigned long defaultStyle;
    unsigned long baseStyle;
    bool hasText;
};
const Statement kStatements[] = {
    {"LTEXT", "Static", SS_LEFT | WS_GROUP, SS_LEFT, true},
    {"CTEXT", "Static", SS_CENTER | WS_GROUP, SS_CENTER, true},
    {"RTEXT", "Static", SS_RIGHT | WS_GROUP, SS_RIGHT, true},
    {"ICON", "Static", SS_ICON, SS_ICON, true},
    {"PUSHBUTTON", "Button", BS_PUSHBUTTON | WS_TABSTOP, BS_PUSHBUTTON | WS_TABSTOP, true},
    {"DEFPUSHBUTTON", "Button", BS_DEFPUSHBUTTON | WS_TABSTOP, BS_DEFPUSHBUTTON | WS_TABSTOP, true},
    {"CHECKBOX", "Button", BS_CHECKBOX | WS_TABSTOP, BS_CHECKBOX | WS_TABSTOP, true},
    {"AUTOCHECKBOX", "Button", BS_AUTOCHECKBOX | WS_TABSTOP, BS_AUTOCHECKBOX | WS_TABSTOP, true},
    {"RADIOBUTTON", "Button", BS_RADIOBUTTON | WS_TABSTOP, BS_RADIOBUTTON, true},
    {"AUTORADIOBUTTON", "Button", BS_AUTORADIOBUTTON | WS_TABSTOP, BS_AUTORADIOBUTTON, true},
    {"GROUPBOX", "Button", BS_GROUPBOX, BS_GROUPBOX, true},
    {"EDITTEXT", "Edit", ES_LEFT | WS_BORDER | WS_TABSTOP, ES_LEFT | WS_BORDER | WS_TABSTOP, false},
    {"COMBOBOX", "ComboBox", CBS_SIMPLE | WS_TABSTOP, 0, false},
    {"LISTBOX", "ListBox", LBS_NOTIFY | WS_BORDER, LBS_NOTIFY | WS_BORDER, false},
    {"CONTROL", nullptr, 0, 0, true},
};

bool IsIdentChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

class Reader {
public:
    explicit Reader(std::string folder) : folder_(std::move(folder)) {}

    Script script;

    // Splits text into tokens; # lines are taken as directives.
    Tokens Tokenize(const std::string& s, bool directives) {
        Tokens out;
        bool lineStart = true;
        for (size_t i = 0; i < s.size();) {
            const char c = s[i];
            if (c == '\n') {
                lineStart = true;
                ++i;
            } else if (std::isspace(static_cast<unsigned char>(c)) != 0) {
                ++i;
            } else if (s.compare(i, 2, "//") == 0) {
                i = s.find('\n', i);
                i = i == std::string::npos ? s.size() : i;
            } else if (s.compare(i, 2, "/*") == 0) {
                i = s.find("*/", i + 2);
                i = i == std::string::npos ? s.size() : i + 2;
            } else if (c == '#' && lineStart && directives) {
                size_t end = i;
                while ((end = s.find('\n', end)) != std::string::npos && s[end - 1] == '\\') {
                    ++end;
                }
                end = end == std::string::npos ? s.size() : end;
                Directive(s.substr(i + 1, end - i - 1));
                i = end;
            } else if (c == '"') {
                std::string text;
                for (++i; i < s.size(); ++i) {
                    if (s[i] == '"' && i + 1 < s.size() && s[i + 1] == '"') {
                        text += s[++i];
                    } else if (s[i] == '"') {
                        break;
                    } else {
                        text += s[i];
                    }
                }
                ++i;
                out.push_back({Token::String, text});
                lineStart = false;
            } else {
                size_t end = i + 1;
                const bool word = IsIdentChar(c);
                while (word && end < s.size() && IsIdentChar(s[end])) {
                    ++end;
                }
                const Token::Type type = !word ? Token::Punct : std::isdigit(static_cast<unsigned char>(c)) != 0
                                                                    ? Token::Number
                                                                    : Token::Ident;
                out.push_back({type, s.substr(i, end - i)});
                i = end;
                lineStart = false;
            }
        }
        return out;
    }

    void Load(const std::string& text) { Parse(Tokenize(text, true)); }

    // Evaluates an expression of numbers, names and "|"/"NOT" terms on top of start.
    unsigned long Value(const Tokens& raw, unsigned long start) {
        const Tokens t = Expand(raw, 0);
        size_t pos = 0;
        const unsigned long value = Combine(t, pos, start);
        if (pos != t.size()) {
            throw std::runtime_error("unexpected '" + t[pos].text + "'");
        }
        return value;
    }

private:
    void Directive(const std::string& line) {
        const Tokens t = Tokenize(line, false);
        if (t.size() >= 2 && t[0].text == "define" && line.find(t[1].text + "(") == std::string::npos) {
            defines_[t[1].text] = Tokens(t.begin() + 2, t.end());
        } else if (t.size() == 2 && t[0].text == "include" && t[1].type == Token::String && !folder_.empty()) {
            std::ifstream in(folder_ + "/" + t[1].text, std::ios::binary);
            std::stringstream text;
            text << in.rdbuf();
            if (!in) {
                script.errors.push_back("cannot read " + t[1].text);
            }
            Tokenize(text.str(), true);  // only its #defines count
        }
    }

    Tokens Expand(const Tokens& t, int depth) {
        Tokens out;
        for (const Token& token : t) {
            const auto define = defines_.find(token.text);
            if (token.type == Token::Ident && define != defines_.end() && depth < 16) {
                const Tokens inner = Expand(define->second, depth + 1);
                out.insert(out.end(), inner.begin(), inner.end());
            } else {
                out.push_back(token);
            }
        }
        return out;
    }

    unsigned long Combine(const Tokens& t, size_t& pos, unsigned long value) {
        for (;;) {
            const bool negate = pos < t.size() && t[pos].text == "NOT";
            pos += negate ? 1 : 0;
            const unsigned long term = Term(t, pos);
            value = negate ? value & ~term : value | term;
            if (pos >= t.size() || t[pos].text != "|") {
                return value;
            }
            ++pos;
        }
    }

    unsigned long Term(const Tokens& t, size_t& pos) {
        if (pos >= t.size()) {
            throw std::runtime_error("expression ends early");
        }
        const Token& token = t[pos++];
        if (token.text == "(") {
            const unsigned long value = Combine(t, pos, 0);
            if (pos >= t.size() || t[pos++].text != ")") {
                throw std::runtime_error("missing ')'");
            }
            return value;
        }
        if (token.text == "-" || token.text == "~") {
            const unsigned long value = Term(t, pos);
            return token.text == "-" ? 0UL - value : ~value;
        }
        if (token.type == Token::Number) {
            return std::strtoul(token.text.c_str(), nullptr, 0);
        }
        const auto known = kWindowsNames.find(token.text);
        if (known == kWindowsNames.end()) {
            throw std::runtime_error("unknown name '" + token.text + "'");
        }
        return known->second;
    }

    // NAME DIALOG[EX] ... BEGIN statements END
    void Parse(const Tokens& t) {
        for (size_t i = 0; i + 1 < t.size(); ++i) {
            if (t[i + 1].text != "DIALOGEX" && t[i + 1].text != "DIALOG") {
                continue;
            }
            Dialog dialog;
            dialog.name = t[i].text;
            try {
                dialog.id = static_cast<int>(Value({t[i]}, 0));
            } catch (const std::exception& e) {
                script.errors.push_back(dialog.name + ": " + e.what());
            }
            size_t j = i + 2;
            while (j < t.size() && t[j].text != "BEGIN" && t[j].text != "{") {
                ++j;
            }
            Tokens statement;
            for (++j; j < t.size() && t[j].text != "END" && t[j].text != "}"; ++j) {
                if (t[j].type == Token::Ident && FindStatement(t[j].text) != nullptr && !statement.empty()) {
                    AddControl(dialog, statement);
                    statement.clear();
                }
                statement.push_back(t[j]);
            }
            if (!statement.empty()) {
                AddControl(dialog, statement);
            }
            script.dialogs.push_back(dialog);
            i = j;
        }
    }

    static const Statement* FindStatement(const std::string& keyword) {
        for (const Statement& statement : kStatements) {
            if (keyword == statement.keyword) {
                return &statement;
            }
        }
        return nullptr;
    }

    void AddControl(Dialog& dialog, const Tokens& t) {
        const Statement* statement = FindStatement(t[0].text);
        std::vector<Tokens> fields(1);
        for (size_t i = 1; i < t.size(); ++i) {
            if (t[i].text == ",") {
                fields.emplace_back();
            } else {
                fields.back().push_back(t[i]);
            }
        }
        try {
            if (statement == nullptr) {
                throw std::runtime_error("unknown statement");
            }
            Control control;
            size_t f = 0;
            if (statement->hasText) {
                control.text = fields[0].empty() || fields[0][0].type != Token::String ? "" : fields[0][0].text;
                ++f;
            }
            const bool isControl = statement->className == nullptr;
            const bool isIcon = std::string(statement->keyword) == "ICON";
            control.id = static_cast<int>(Field(fields, f++, 0));
            if (isControl) {
                control.className = fields.at(f++).at(0).text;
                control.style = Field(fields, f++, WS_CHILD | WS_VISIBLE);
            } else {
                control.className = statement->className;
            }
            control.x = static_cast<int>(Field(fields, f++, 0));
            control.y = static_cast<int>(Field(fields, f++, 0));
            if (!isIcon || f < fields.size()) {
                control.cx = static_cast<int>(Field(fields, f++, 0));
                control.cy = static_cast<int>(Field(fields, f++, 0));
            }
            if (!isControl) {
                control.style = f < fields.size() ? Field(fields, f, statement->baseStyle | WS_CHILD | WS_VISIBLE)
                                                  : statement->defaultStyle | WS_CHILD | WS_VISIBLE;
            }
            control.kind = KindOf(control);
            dialog.controls.push_back(control);
        } catch (const std::exception& e) {
            script.errors.push_back(dialog.name + ": " + t[0].text + " #" + std::to_string(dialog.controls.size() + 1) +
                                    ": " + e.what());
        }
    }

    unsigned long Field(const std::vector<Tokens>& fields, size_t index, unsigned long start) {
        if (index >= fields.size()) {
            throw std::runtime_error("too few fields");
        }
        return Value(fields[index], start);
    }

    static Kind KindOf(const Control& c) {
        std::string name = c.className;
        std::transform(name.begin(), name.end(), name.begin(), [](char ch) { return std::tolower(ch); });
        if (name == "static") {
            const unsigned long type = c.style & SS_TYPEMASK;
            return type == SS_LEFT || type == SS_CENTER || type == SS_RIGHT || type == SS_LEFTNOWORDWRAP ||
                           type == SS_SIMPLE
                       ? Kind::Label
                       : Kind::Picture;
        }
        if (name == "button") {
            switch (c.style & BS_TYPEMASK) {
            case BS_GROUPBOX: return Kind::GroupBox;
            case BS_RADIOBUTTON:
            case BS_AUTORADIOBUTTON: return Kind::Radio;
            case BS_CHECKBOX:
            case BS_AUTOCHECKBOX:
            case BS_3STATE:
            case BS_AUTO3STATE: return Kind::CheckBox;
            default: return Kind::Button;
            }
        }
        if (name == "edit") return Kind::Edit;
        if (name == "combobox" || name == "listbox") return Kind::List;
        if (name == "msctls_trackbar32") return Kind::Slider;
        if (name == "msctls_updown32") return Kind::UpDown;
        return Kind::Other;
    }

    std::string folder_;
    std::map<std::string, Tokens> defines_;
};

bool Has(const Control& c, unsigned long style) { return (c.style & style) == style; }
bool IsInput(Kind k) { return k == Kind::Edit || k == Kind::List || k == Kind::Slider; }
bool IsInteractive(Kind k) {
    return IsInput(k) || k == Kind::Button || k == Kind::CheckBox || k == Kind::Radio;
}
// By the top left corner: a combo box's height counts its drop-down list.
bool Inside(const Control& box, const Control& c) {
    return c.x > box.x && c.x < box.x + box.cx && c.y > box.y && c.y < box.y + box.cy;
}
std::string Describe(const Control& c) {
    return (c.text.empty() ? c.className : "\"" + c.text + "\"") + " (" + std::to_string(c.id) + ")";
}

// The control a visible label stands for on screen: the visible edit, list or slider
// right of it on its row, else the one right below it. Null when it stands for none.
const Control* PlacedFor(const std::vector<Control>& cs, const Control& label) {
    if (label.kind != Kind::Label || label.text.empty() || !Has(label, WS_VISIBLE)) return nullptr;
    const Control* beside = nullptr;
    const Control* below = nullptr;
    for (const Control& c : cs) {
        if (!IsInput(c.kind) || !Has(c, WS_VISIBLE)) continue;
        const int right = c.x - (label.x + label.cx);
        const int down = c.y - (label.y + label.cy);
        if (std::abs(c.y - label.y) <= 4 && right >= -1 && right <= 12 && (beside == nullptr || c.x < beside->x)) {
            beside = &c;
        } else if (down >= -1 && down <= 4 && c.x < label.x + label.cx && label.x < c.x + c.cx &&
                   (below == nullptr || c.y < below->y)) {
            below = &c;
        }
    }
    return beside != nullptr ? beside : below;
}

// The label that stands for the control on screen, null when none does.
const Control* LabelFor(const std::vector<Control>& cs, const Control& control) {
    for (const Control& c : cs) {
        if (PlacedFor(cs, c) == &control) return &c;
    }
    return nullptr;
}

// What a control's name comes from for a screen reader: the label or group box right
// before it; a group box only for a control that has no label of its own on screen. A
// list switched on by a check box on its row may follow that check box; a slider set
// from a number box follows the box (or the box's up-down control).
bool Named(const std::vector<Control>& cs, size_t i) {
    if (i == 0) return false;
    const Control& prev = cs[i - 1];
    if (prev.kind == Kind::Label) return !prev.text.empty();
    if (prev.kind == Kind::GroupBox) return !prev.text.empty() && LabelFor(cs, cs[i]) == nullptr;
    if (cs[i].kind == Kind::List && prev.kind == Kind::CheckBox) {
        return std::abs(prev.y - cs[i].y) <= 4 && prev.x + prev.cx <= cs[i].x;
    }
    if (cs[i].kind == Kind::Slider) {
        const size_t box = prev.kind == Kind::UpDown && i >= 2 ? i - 2 : i - 1;
        return cs[box].kind == Kind::Edit && Named(cs, box);
    }
    return false;
}

}  // namespace

Script ParseScript(const std::string& text, const std::string& folder) {
    Reader reader(folder);
    reader.Load(text);
    return reader.script;
}

Script ReadScript(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    const size_t slash = path.find_last_of("/\\");
    Script script = ParseScript(text.str(), slash == std::string::npos ? "." : path.substr(0, slash));
    if (!in) {
        script.errors.push_back("cannot read " + path);
    }
    return script;
}

Script ReadFolder(const std::string& folder) {
    Script all;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".rc") continue;
        const std::string path = entry.path().string();
        const Script script = ReadScript(path);
        for (const std::string& error : script.errors) all.errors.push_back(path + ": " + error);
        all.dialogs.insert(all.dialogs.end(), script.dialogs.begin(), script.dialogs.end());
    }
    std::sort(all.dialogs.begin(), all.dialogs.end(), [](const Dialog& a, const Dialog& b) { return a.name < b.name; });
    return all;
}

std::vector<std::string> CheckDialog(const Dialog& dialog) {
    std::vector<std::string> problems;
    const auto report = [&](const Control& c, const std::string& what) {
        problems.push_back(dialog.name + ": " + Describe(c) + " " + what);
    };
    const std::vector<Control>& cs = dialog.controls;
    const Control* previous = nullptr;  // the last tab stop or group box, for the order
    for (size_t i = 0; i < cs.size(); ++i) {
        const Control& c = cs[i];
        const bool visible = Has(c, WS_VISIBLE);
        const bool radio = c.kind == Kind::Radio;
        const bool groupStart = Has(c, WS_GROUP);
        if (IsInput(c.kind) && visible && !Named(cs, i)) {
            report(c, "does not follow the label that names it");
        }
        const Control* placed = PlacedFor(cs, c);
        if (placed != nullptr && (i + 1 == cs.size() || &cs[i + 1] != placed)) {
            report(c, "names " + Describe(*placed) + " on screen but does not come right before it");
        }
        if (c.kind == Kind::UpDown && (i == 0 || cs[i - 1].kind != Kind::Edit)) {
            report(c, "does not follow its number box");
        }
        if (IsInteractive(c.kind) && !Has(c, WS_DISABLED) && !Has(c, WS_TABSTOP) && !(radio && !groupStart)) {
            report(c, "is not a tab stop");
        }
        const bool decoration = c.kind == Kind::Label || c.kind == Kind::Picture || c.kind == Kind::GroupBox;
        if (decoration && Has(c, WS_TABSTOP)) {
            report(c, "is a tab stop but takes no input");
        }
        const bool afterRadio = i > 0 && cs[i - 1].kind == Kind::Radio;
        if (!groupStart && (radio != afterRadio)) {
            report(c, radio ? "starts a radio group without WS_GROUP" : "follows a radio group without WS_GROUP");
        }
        if (c.kind == Kind::GroupBox) {
            size_t end = i + 1;
            while (end < cs.size() && Inside(c, cs[end])) {
                ++end;
            }
            for (size_t k = 0; k < cs.size(); ++k) {
                if ((k < i || k >= end) && Inside(c, cs[k])) {
                    report(cs[k], "lies in group box " + Describe(c) + " but does not follow its other controls");
                }
            }
        }
        if (c.kind == Kind::GroupBox || (IsInteractive(c.kind) && Has(c, WS_TABSTOP))) {
            // Rows go left to right, rows top to bottom; going up starts a column to the right.
            if (previous != nullptr) {
                const int dy = c.y - previous->y;
                const bool sameRow = std::abs(dy) <= 4;
                if ((sameRow && c.x < previous->x) || (!sameRow && dy < 0 && c.x < previous->x + previous->cx)) {
                    report(c, "comes after " + Describe(*previous) + " in the tab order but not on screen");
                }
            }
            previous = &c;
        }
    }
    return problems;
}

std::vector<std::string> MnemonicCollisions(const Dialog& dialog) {
    std::map<char, std::vector<std::string>> keys;
    for (const Control& c : dialog.controls) {
        if (!Has(c, WS_VISIBLE) || (c.kind == Kind::Label && Has(c, SS_NOPREFIX))) {
            continue;
        }
        for (size_t i = c.text.find('&'); i != std::string::npos && i + 1 < c.text.size();
             i = c.text.find('&', i + 2)) {
            if (c.text[i + 1] != '&') {
                keys[static_cast<char>(std::toupper(static_cast<unsigned char>(c.text[i + 1])))].push_back(c.text);
                break;
            }
        }
    }
    std::vector<std::string> collisions;
    for (const auto& key : keys) {
        if (key.second.size() > 1) {
            std::string line = dialog.name + " &" + key.first + ":";
            for (size_t i = 0; i < key.second.size(); ++i) {
                line += (i == 0 ? " " : " | ") + key.second[i];
            }
            collisions.push_back(line);
        }
    }
    return collisions;
}

}  // namespace ozdklint
