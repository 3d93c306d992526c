// The "Legacy Settings" tree as the driver's host drives it: a real printer, a heap of
// the host's kind, the host's call block, the item array the host hands over, and the
// callback block the host builds for each callback.
#pragma once

#include <winsock2.h>  // before windows.h, for the simulator
#include <windows.h>
#include <compstui.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "config/ui_config.h"
#include "embosser_simulator.h"
#include "frame/printer_oem_ui.h"
#include "support/host_fixtures.h"
#include "support/wine_environment.h"

namespace printeruitest {

// "\x1b%-12345X@PJL DEFAULT " + setting + "\r\n", and the commit command.
std::string Default(const std::string& setting);
extern const char kServiceUpdate[];

// A device reply (inside an HTTP answer) whose every setting differs from the values the
// reset button restores.
std::string ReplyUnlikeTheDefaults();
// A reply the parser does not accept as a whole (its model line is missing).
std::string IncompleteReply();

// An embosser simulator on `address`:80, running when the constructor returns.
class Embosser {
public:
    Embosser(const char* address, const std::string& reply);
    embosser_sim::Simulator* operator->() { return simulator_.get(); }

private:
    std::unique_ptr<embosser_sim::Simulator> simulator_;
};

class LegacyTree {
public:
    // A printer of its own; with an address, its port is a Standard TCP/IP port whose
    // host is that address.
    explicit LegacyTree(const wchar_t* embosserAddress = nullptr);
    ~LegacyTree();
    LegacyTree(const LegacyTree&) = delete;
    LegacyTree& operator=(const LegacyTree&) = delete;

    const testenv::TestPrinter& printer() const { return printer_; }
    const testenv::HostHeap& heap() const { return heap_; }
    OEMCUIPPARAM& param() { return param_; }
    UIConfig** configSlot() { return &config_; }

    // The record, attached as the host's first building call would attach it; a test
    // may change its values before Build().
    UIConfig& Config();
    // The host's sizing call and building call. May be called again to rebuild.
    HRESULT Build();

    std::vector<OPTITEM>& items() { return items_; }
    OPTITEM& Item(BYTE id);  // by UserItemID
    std::wstring EntryText(BYTE id, LONG index);
    std::wstring SelectedText(BYTE id);

    // The item callback for `reason`, with `current` as the current item.
    LONG Callback(WORD reason, OPTITEM* current = nullptr, HWND dialog = nullptr);
    // The user picks entry `selection`, or types `text`, in an item: SEL_CHANGED follows.
    LONG Choose(BYTE id, LONG selection);
    LONG Type(BYTE id, const wchar_t* text);
    // The user presses a push button: its callback runs with the item as the current one.
    LONG Press(BYTE id, HWND dialog = nullptr);

private:
    CPSUICBPARAM Block(WORD reason, OPTITEM* current, HWND dialog);

    testenv::TestPrinter printer_;
    testenv::HostHeap heap_;
    OEMCUIPPARAM param_ = {};
    UIConfig* config_ = nullptr;
    std::vector<OPTITEM> items_;
};

}  // namespace printeruitest
