// Reads the dialog templates of a resource script (DIALOG/DIALOGEX blocks, with the
// #defines of the headers it includes) and checks them for keyboard and screen-reader use:
// naming labels right before their controls, tab stops, radio groups, tab order against
// the layout, and access keys that do not collide.
#pragma once

#include <string>
#include <vector>

namespace ozdklint {

enum class Kind { Label, Picture, GroupBox, Button, CheckBox, Radio, Edit, List, Slider, UpDown, Other };

struct Control {
    std::string text;       // caption, "" when the statement has none
    std::string className;  // "Button", "Static", "Edit", "ComboBox", ... as written
    int id = 0;
    int x = 0, y = 0, cx = 0, cy = 0;
    unsigned long style = 0;  // with the statement's default style applied
    Kind kind = Kind::Other;
};

struct Dialog {
    std::string name;
    int id = 0;
    std::vector<Control> controls;  // in template order
};

struct Script {
    std::vector<Dialog> dialogs;
    std::vector<std::string> errors;  // what could not be read
};

// text: the script; folder: where its quoted #includes are found ("" for none).
Script ParseScript(const std::string& text, const std::string& folder);
Script ReadScript(const std::string& path);
// Every script (*.rc) of a folder: their dialogs sorted by name, and what could not be
// read, each line starting with its script's path.
Script ReadFolder(const std::string& folder);

// The rule violations of one dialog, one line each, starting with the dialog's name:
// - a visible edit, list, combo or slider comes right after the label or group box that
//   names it (a list may follow the check box on its row that switches it on; a slider
//   may follow the number box it is set from, or that box's up-down control); a group
//   box names it only when no label stands for it on screen;
// - a label comes right before the edit, list or slider it stands for on screen: the one
//   right of it on its row, else the one right below it;
// - an up-down control comes right after its number box;
// - controls that take input are tab stops (a radio button after the first of its group
//   may be left out), labels, pictures and group boxes are not;
// - a radio group starts with WS_GROUP, and so does the control after it;
// - the controls in a group box follow it; tab stops go left to right along a row and
//   rows top to bottom, going up only to start a column further right.
// Controls created hidden are checked like the others, except for their names.
std::vector<std::string> CheckDialog(const Dialog& dialog);

// Access keys shared by controls created visible: "DIALOG &X: caption | caption".
std::vector<std::string> MnemonicCollisions(const Dialog& dialog);

}  // namespace ozdklint
