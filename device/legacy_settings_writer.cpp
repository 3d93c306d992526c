#include "device/legacy_settings_writer.h"

#include <winspool.h>

#include <new>
#include <string>

#include "base/spooler.h"
#include "device/protocol/legacy_setting_rules.h"
#include "device/protocol/pjl_commands.h"
#include "base/text_format.h"
#include "base/trace_log.h"

namespace {

// Sends `command` as one raw job: on the UIConfig's printer handle, or on a handle of its
// own opened by the printer's name when no job can be started on that one. No page is
// started; write errors are ignored.
void SendRawJob(UIConfig& config, const wchar_t* routine, const std::string& command, bool clearsChanged) {
    wchar_t dataType[] = L"RAW";
    DOC_INFO_1W document = {nullptr, nullptr, dataType};
    HANDLE printer = config.PrinterHandle;
    UniquePrinter ownPrinter;
    if (Spool().StartDocPrinterW(printer, 1, reinterpret_cast<BYTE*>(&document)) == 0) {
        if (!Spool().OpenPrinterW(config.PrinterName, ownPrinter.put(), nullptr)) {
            Trace(L"%s(): %d=OpenPrinter(%s), nothing sent\n", routine, static_cast<int>(GetLastError()),
                  config.PrinterName);
            return;
        }
        printer = ownPrinter.get();
        if (Spool().StartDocPrinterW(printer, 1, reinterpret_cast<BYTE*>(&document)) == 0) {
            Trace(L"%s(): %d=StartDocPrinter(), nothing sent\n", routine, static_cast<int>(GetLastError()));
            return;
        }
    }
    DWORD written = 0;
    Spool().WritePrinter(printer, command.data(), static_cast<DWORD>(command.size()), &written);
    if (clearsChanged) {
        config.LegacyChanged = 0;
    }
    Spool().EndDocPrinter(printer);
}

bool DeviceSettingsKnown(const UIConfig& config) { return config.LegacyParmCount > 0; }

void SendDefault(UIConfig& config, const PjlDefault& command) {
    switch (command.form) {
        case PjlValueForm::Number:
            UpdateLegacyConfig(config, command.key, command.number);
            break;
        case PjlValueForm::Switch:
            UpdateLegacyConfigBool(config, command.key, command.number != 0);
            break;
        case PjlValueForm::Word:
            UpdateLegacyConfigString(config, command.key, command.word);
            break;
    }
}

}  // namespace

void UpdateLegacyConfig(UIConfig& config, const wchar_t* key, uint32_t value) {
    if (!DeviceSettingsKnown(config) || key == nullptr) {
        return;
    }
    Trace(L"UpdateLegacyConfig(): updating %s\n", config.PrinterName);
    Trace(L"UpdateLegacyConfig(): @PJL DEFAULT %ws=%u\n", key, value);
    try {
        SendRawJob(config, L"UpdateLegacyConfig", FormatPjlDefaultNumber(key, value), true);
    } catch (const std::bad_alloc&) {
        Trace(L"UpdateLegacyConfig(): out of memory, nothing sent\n");
    }
}

void UpdateLegacyConfigBool(UIConfig& config, const wchar_t* key, bool on) {
    if (!DeviceSettingsKnown(config) || key == nullptr) {
        return;
    }
    Trace(L"UpdateLegacyConfigBool(): updating %s\n", config.PrinterName);
    Trace(L"UpdateLegacyConfigBool(): @PJL DEFAULT %ws=%s\r\n", key, on ? L"ON" : L"OFF");
    try {
        SendRawJob(config, L"UpdateLegacyConfigBool", FormatPjlDefaultSwitch(key, on), true);
    } catch (const std::bad_alloc&) {
        Trace(L"UpdateLegacyConfigBool(): out of memory, nothing sent\n");
    }
}

void UpdateLegacyConfigString(UIConfig& config, const wchar_t* key, const char* word) {
    if (!DeviceSettingsKnown(config) || key == nullptr) {
        return;
    }
    if (word == nullptr) {
        word = "";
    }
    Trace(L"UpdateLegacyConfigString(): updating %s\n", config.PrinterName);
    Trace(L"UpdateLegacyConfigString(): @PJL DEFAULT %s=%S\n", key, word);
    try {
        SendRawJob(config, L"UpdateLegacyConfigString", FormatPjlDefaultWord(key, word), true);
    } catch (const std::bad_alloc&) {
        Trace(L"UpdateLegacyConfigString(): out of memory, nothing sent\n");
    }
}

void UpdateNvRamData(UIConfig& config) {
    if (!DeviceSettingsKnown(config)) {
        return;
    }
    Trace(L"UpdateNvRamData(): validate\n");
    const NvRamLayoutCheck check = CheckNvRamLayout(config);
    if (check.correctCharsWidth) {
        SendDefault(config, check.charsWidth);
    }
    Trace(L"UpdateNvRamData(): widthgood=%d, heightgood=%d\n", check.widthGood, check.heightGood);
    Trace(L"UpdateNvRamData(): widthgood=%d, heightgood=%d\n", config.EmbsrCharsWidth, config.EmbsrPaperWidth);
    if (check.correctLinesLength) {
        SendDefault(config, check.linesLength);
    }
    Trace(L"UpdateNvRamData(): updating %s\n", config.PrinterName);
    try {
        SendRawJob(config, L"UpdateNvRamData", FormatPjlServiceUpdate(), false);
    } catch (const std::bad_alloc&) {
        Trace(L"UpdateNvRamData(): out of memory, nothing sent\n");
    }
}

bool ApplyLegacyChanges(CPSUICBPARAM* param, UIConfig& config) {
    bool changed = false;
    if (param != nullptr && param->pOptItem != nullptr) {
        for (WORD i = 0; i < param->cOptItem; ++i) {
            OPTITEM& item = param->pOptItem[i];
            if (item.pOptType == nullptr) {
                continue;  // without its option type an item's value cannot be told apart
            }
            const bool edit = item.pOptType->Type == TVOT_EDITBOX;
            const LegacyItemUpdate update =
                ApplyLegacyItem(config, item.UserItemID, edit ? 0 : item.Sel, edit ? item.pSel : nullptr);
            if (!update.known) {
                continue;
            }
            if (update.rewriteText && edit && item.pSel != nullptr) {
                CopyWide(item.pSel, kMeasureTextCapacity, update.text);
                item.Flags |= OPTIF_CHANGED;
            }
            if (update.changed) {
                SendDefault(config, update.command);
                changed = true;
            }
        }
    }
    if (changed) {
        UpdateNvRamData(config);
    } else {
        Trace(L"ApplyLegacyChanges(): no changes, not calling UpdateNvRamData()\n");
    }
    return changed;
}

DWORD SendPrinterCommand(const wchar_t* printerName, const void* bytes, DWORD length) {
    if (printerName == nullptr || (bytes == nullptr && length != 0)) {
        Trace(L"SendPrinterCommand(): no printer or no command\n");
        return ERROR_INVALID_PARAMETER;
    }
    Trace(L"SendPrinterCommand(): %s, %u bytes\n", printerName, static_cast<unsigned>(length));
    auto lastError = []() -> DWORD {
        const DWORD error = GetLastError();
        return error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
    };
    UniquePrinter printer;
    if (!Spool().OpenPrinterW(printerName, printer.put(), nullptr)) {
        PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
        if (!Spool().OpenPrinterW(printerName, printer.put(), &defaults)) {
            const DWORD error = lastError();
            Trace(L"SendPrinterCommand(): %d=OpenPrinter()\n", static_cast<int>(error));
            return error;
        }
    }
    DOC_INFO_1W document = {};
    if (Spool().StartDocPrinterW(printer.get(), 1, reinterpret_cast<BYTE*>(&document)) == 0) {
        const DWORD error = lastError();
        Trace(L"SendPrinterCommand(): %d=StartDocPrinter()\n", static_cast<int>(error));
        return error;
    }
    DWORD written = 0;
    const BOOL wrote = Spool().WritePrinter(printer.get(), bytes, length, &written);
    const DWORD writeError = wrote ? ERROR_SUCCESS : lastError();
    Spool().EndDocPrinter(printer.get());
    printer.reset();
    if (!wrote) {
        Trace(L"SendPrinterCommand(): %d=WritePrinter()\n", static_cast<int>(writeError));
        return writeError;
    }
    return written == length ? ERROR_SUCCESS : written;
}
