#include "document_ui/device_mode_setters.h"

#include <winspool.h>

#include <algorithm>

#include "base/spooler.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "config/paper_sizes.h"
#include "config/printer_data.h"

namespace {

constexpr DWORD kMerge = DM_IN_BUFFER | DM_OUT_BUFFER;

LONG MergeDevMode(const UIConfig* config, DEVMODEW* devMode) {
    return Spool().DocumentPropertiesW(nullptr, config->hPrinter, config->PrinterName, devMode, devMode, kMerge);
}

// The printer's device mode copied into a buffer the driver's full size can be merged
// into: the printer's own, else the driver's default. Empty when neither can be had.
HeapBuffer CopyPrinterDevMode(const UIConfig* config, const DEVMODEW* stored) {
    const LONG driverSize =
        Spool().DocumentPropertiesW(nullptr, config->hPrinter, config->PrinterName, nullptr, nullptr, 0);
    if (stored == nullptr && driverSize <= 0) {
        return HeapBuffer();
    }
    const size_t storedSize = stored != nullptr ? size_t{stored->dmSize} + stored->dmDriverExtra : 0;
    HeapBuffer copy(std::max({storedSize, static_cast<size_t>(std::max(driverSize, LONG{0})), sizeof(DEVMODEW)}));
    if (!copy) {
        return copy;
    }
    if (stored != nullptr) {
        memcpy(copy.bytes(), stored, storedSize);
    } else if (Spool().DocumentPropertiesW(nullptr, config->hPrinter, config->PrinterName, copy.as<DEVMODEW>(),
                                           nullptr, DM_OUT_BUFFER) != IDOK) {
        return HeapBuffer();
    }
    return copy;
}

void BroadcastDevModeChange(const UIConfig* config) {
    DWORD_PTR answer = 0;
    SendMessageTimeoutW(HWND_BROADCAST, WM_DEVMODECHANGE, 0, reinterpret_cast<LPARAM>(config->PrinterName),
                        SMTO_NORMAL, 1000, &answer);
}

// A setter that does nothing when the record already holds `value`; else it takes it and
// writes `edit` through both device modes (`trace` sees the printer's before the edit).
// 1 when something was written through, 0 when nothing changed.
int SetChoice(UIConfig* config, uint32_t* field, uint32_t value, const DevModeEdit& edit,
              const DevModeEdit& trace = nullptr, DevModeMerge* merge = nullptr) {
    if (*field == value) {
        return 0;
    }
    *field = value;
    WriteDevModeThrough(config, edit, edit, trace, merge);
    return 1;
}

}  // namespace

int WriteDevModeThrough(UIConfig* config, const DevModeEdit& edit, const DevModeEdit& reapply,
                        const DevModeEdit& beforePrinter, DevModeMerge* printerMerge) {
    if (config->pDevMode != nullptr) {
        DEVMODEW* document = config->pDevMode;
        const size_t size = size_t{document->dmSize} + document->dmDriverExtra;
        const HeapBuffer kept(size);
        if (kept) {
            memcpy(kept.bytes(), document, size);
        }
        edit(*document);
        if (MergeDevMode(config, document) < 0 && kept) {
            Trace(L"WriteDevModeThrough(): the driver refused the document's device mode, err=%d\n",
                  static_cast<int>(GetLastError()));
            memcpy(document, kept.bytes(), size);
        }
    }
    HeapBuffer info = FetchPrinterInfo(config->hPrinter, 2);
    if (!info) {
        return 1;
    }
    auto* printer = info.as<PRINTER_INFO_2W>();
    HeapBuffer devMode = CopyPrinterDevMode(config, printer->pDevMode);
    if (!devMode) {
        return 0;
    }
    DEVMODEW& printerDevMode = *devMode.as<DEVMODEW>();
    if (beforePrinter) {
        beforePrinter(printerDevMode);
    }
    edit(printerDevMode);
    const LONG merged = MergeDevMode(config, &printerDevMode);
    if (printerMerge != nullptr) {
        *printerMerge = DevModeMerge{merged, GetLastError()};
    }
    if (merged < 0) {
        Trace(L"WriteDevModeThrough(): the driver refused the printer's device mode, err=%d\n",
              static_cast<int>(GetLastError()));
        return 1;
    }
    reapply(printerDevMode);

    printer->pDevMode = &printerDevMode;
    printer->pSecurityDescriptor = nullptr;  // the rights stay as they are
    bool written = Spool().SetPrinterW(config->hPrinter, 2, info.bytes(), 0) != FALSE;
    if (!written) {
        written = SetPrinterAsAdmin(config->hPrinter, 2, printer) != FALSE;
    }
    if (written) {
        BroadcastDevModeChange(config);
    }
    return 1;
}

int SetPrinterOrientation(UIConfig* config, uint32_t orientation) {
    return SetChoice(config, &config->Orientation, orientation, [orientation](DEVMODEW& dm) {
        dm.dmFields |= DM_ORIENTATION;
        dm.dmOrientation = static_cast<short>(orientation);
    });
}

int SetPrinterInterpoint(UIConfig* config, uint32_t interpoint, uint32_t bindingEdge) {
    if (config->InterPoint == interpoint && config->BindingEdge == bindingEdge) {
        return 0;
    }
    config->LoadedInterPoint = interpoint;
    config->InterPoint = interpoint;
    config->BindingEdge = bindingEdge;
    const short duplex = interpoint == 0 ? DMDUP_SIMPLEX : bindingEdge == 2 ? DMDUP_VERTICAL : DMDUP_HORIZONTAL;
    const DevModeEdit edit = [duplex](DEVMODEW& dm) {
        dm.dmFields |= DM_DUPLEX;
        dm.dmDuplex = duplex;
    };
    WriteDevModeThrough(config, edit, edit);
    return 1;
}

int SetPrinterCollate(UIConfig* config, uint32_t collate) {
    return SetChoice(config, &config->Collate, collate, [collate](DEVMODEW& dm) {
        dm.dmFields |= DM_COLLATE;
        dm.dmCollate = static_cast<short>(collate);
    });
}

int SetPrinterPaperSize(UIConfig* config, const wchar_t* formName, DWORD keepMask, DWORD setMask) {
    const PaperDimensions form = GetFormSize(config->hPrinter, formName);
    const short width = static_cast<short>(form.cx / 100);
    const short length = static_cast<short>(form.cy / 100);
    const DevModeEdit edit = [&](DEVMODEW& dm) {
        CopyWide(dm.dmFormName, CCHFORMNAME, formName);
        dm.dmPaperSize = 0;
        dm.dmPaperWidth = width;
        dm.dmPaperLength = length;
        dm.dmFields = (dm.dmFields & keepMask) | setMask;
    };
    const DevModeEdit reapply = [&](DEVMODEW& dm) {
        dm.dmPaperWidth = width;
        dm.dmPaperLength = length;
        dm.dmFields = (dm.dmFields & keepMask) | setMask;
        Trace(L"SetPrinterPaperSize(): dmFields=%p\n", reinterpret_cast<void*>(static_cast<ULONG_PTR>(dm.dmFields)));
        Trace(L"SetPrinterPaperSize(): dmFormName=%ws\n", dm.dmFormName);
    };
    return WriteDevModeThrough(config, edit, reapply);
}

int SetPrinterMediaType(UIConfig* config, uint32_t code) {
    const DevModeEdit edit = [code](DEVMODEW& dm) {
        dm.dmFields |= DM_MEDIATYPE;
        dm.dmMediaType = code;
    };
    return SetChoice(config, &config->MediaType, code, edit, [code](DEVMODEW& dm) {
        Trace(L"SetPrinterMediaType(): dmFields & DM_MEDIATYPE=%d, old=%d, new=%d\n",
              (dm.dmFields & DM_MEDIATYPE) != 0, static_cast<int>(dm.dmMediaType), static_cast<int>(code));
    });
}

int SetPrinterPaperSource(UIConfig* config, uint32_t source) {
    const DevModeEdit edit = [source](DEVMODEW& dm) {
        dm.dmFields |= DM_DEFAULTSOURCE;
        dm.dmDefaultSource = static_cast<short>(source);
    };
    const DevModeEdit trace = [source](DEVMODEW& dm) {
        Trace(L"SetPrinterPaperSource(): dmFields & DM_DEFAULTSOURCE=%d, old=%d, new=%d\n",
              (dm.dmFields & DM_DEFAULTSOURCE) != 0, static_cast<int>(dm.dmDefaultSource), static_cast<int>(source));
    };
    DevModeMerge merge = {};
    if (SetChoice(config, &config->PaperSource, source, edit, trace, &merge) == 0) {
        return 0;
    }
    Trace(L"SetPrinterPaperSource(): %lu=DocumentProperties(), err=%d\n", static_cast<unsigned long>(merge.result),
          static_cast<int>(merge.error));
    return 1;
}

int SetPrinterColor(UIConfig* config, uint32_t color) {
    if (config->RenderMode == color) {
        return 0;
    }
    config->RenderMode = color;
    const DevModeEdit edit = [color](DEVMODEW& dm) {
        dm.dmFields |= DM_COLOR;
        dm.dmColor = static_cast<short>(color);
    };
    const DevModeEdit trace = [color](DEVMODEW& dm) {
        Trace(L"SetPrinterColor(): dmFields & DM_COLOR=%d, old=%d, new=%d\n", (dm.dmFields & DM_COLOR) != 0,
              static_cast<int>(dm.dmColor), static_cast<int>(color));
    };
    return WriteDevModeThrough(config, edit, edit, trace);  // 0 when no device mode could be had
}
