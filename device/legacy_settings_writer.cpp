#include "device/legacy_settings_writer.h"

#include <new>
#include <string>
#include <winspool.h>


#include "base/spooler.h"
#include "device/protocol/legacy_setting_rules.h"
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

}  // namespace

void SendLegacyDefault(UIConfig& config, const PjlDefault& command) {
    if (!DeviceSettingsKnown(config) || command.key == nullptr) {
        return;
    }
    const wchar_t* routine = L"UpdateLegacyConfigString";
    switch (command.form) {
        case PjlValueForm::Number:
            routine = L"UpdateLegacyConfig";
            Trace(L"UpdateLegacyConfig(): updating %s\n", config.PrinterName);
            Trace(L"UpdateLegacyConfig(): @PJL DEFAULT %ws=%u\n", command.key, command.number);
            break;
        case PjlValueForm::Switch:
            routine = L"UpdateLegacyConfigBool";
            Trace(L"UpdateLegacyConfigBool(): updating %s\n", config.PrinterName);
            Trace(L"UpdateLegacyConfigBool(): @PJL DEFAULT %ws=%s\r\n", command.key, command.number != 0 ? L"ON" : L"OFF");
            break;
        case PjlValueForm::Word:
            Trace(L"UpdateLegacyConfigString(): updating %s\n", config.PrinterName);
            Trace(L"UpdateLegacyConfigString(): @PJL DEFAULT %s=%S\n", command.key, PjlWordText(command).c_str());
            break;
    }
    try {
        SendRawJob(config, routine, FormatPjlDefault(command), true);
    } catch (const std::bad_alloc&) {
        Trace(L"%s(): out of memory, nothing sent\n", routine);
    }
}

void UpdateNvRamData(UIConfig& config) {
    if (!DeviceSettingsKnown(config)) {
        return;
    }
    Trace(L"UpdateNvRamData(): validate\n");
    const NvRamLayoutCheck check = CheckNvRamLayout(config);
    if (check.correctCharsWidth) {
        SendLegacyDefault(config, check.charsWidth);
    }
    Trace(L"UpdateNvRamData(): widthgood=%d, heightgood=%d\n", check.widthGood, check.heightGood);
    Trace(L"UpdateNvRamData(): widthgood=%d, heightgood=%d\n", config.EmbsrCharsWidth, config.EmbsrPaperWidth);
    if (check.correctLinesLength) {
        SendLegacyDefault(config, check.linesLength);
    }
    Trace(L"UpdateNvRamData(): updating %s\n", config.PrinterName);
    try {
        SendRawJob(config, L"UpdateNvRamData", FormatPjlServiceUpdate(), false);
    } catch (const std::bad_alloc&) {
        Trace(L"UpdateNvRamData(): out of memory, nothing sent\n");
    }
}

bool ApplyLegacyChanges(UIConfig& config, LegacyItemEdit* edits, size_t count) {
    bool changed = false;
    for (size_t i = 0; edits != nullptr && i < count; ++i) {
        LegacyItemEdit& edit = edits[i];
        const LegacyItemUpdate update = ApplyLegacyItem(config, edit.id, edit.selection, edit.text);
        if (update.rewriteText && edit.text != nullptr) {
            CopyWide(edit.rewrittenText, kMeasureTextCapacity, update.text);
            edit.rewritten = true;
        }
        if (update.changed) {
            SendLegacyDefault(config, update.command);
            changed = true;
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
    if (!Spool().OpenPrinterW(printerName, printer.put(), nullptr) &&
        !(printer = OpenPrinterWithFullAccess(printerName))) {
        const DWORD error = lastError();
        Trace(L"SendPrinterCommand(): %d=OpenPrinter()\n", static_cast<int>(error));
        return error;
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
