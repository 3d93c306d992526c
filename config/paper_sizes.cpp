#include "config/paper_sizes.h"

#include <cstdint>

#include "base/spooler.h"
#include "base/heap_memory.h"
#include "base/text_format.h"
#include "base/trace_log.h"

namespace {

constexpr DWORD kUnbounded = MAXDWORD;

// `value` within one unit of `target`, both bounds inclusive, compared as signed numbers.
bool IsWithinOne(int32_t value, int32_t target) {
    const int64_t v = value;
    const int64_t t = target;
    return t - 1 <= v && v <= t + 1;
}

}  // namespace

int EnumPrinterPaperSizes(HANDLE printer, wchar_t* names, DWORD* byteSize, DWORD* dmFields) {
    return EnumPrinterPaperSizes(printer, names, kUnbounded, byteSize, dmFields);
}

int EnumPrinterPaperSizes(HANDLE printer, wchar_t* names, DWORD capacityBytes, DWORD* byteSize, DWORD* dmFields) {
    if (byteSize != nullptr) {
        *byteSize = 0;
    }
    const HeapBuffer info = FetchPrinterInfo(printer, 2);
    if (info.size() < sizeof(PRINTER_INFO_2W)) {
        return 0;
    }
    const PRINTER_INFO_2W* printerInfo = info.as<PRINTER_INFO_2W>();
    if (printerInfo->pDevMode == nullptr) {
        return 0;
    }
    if (dmFields != nullptr) {
        *dmFields = printerInfo->pDevMode->dmFields;
    }
    int count = Spool().DeviceCapabilitiesW(printerInfo->pPrinterName, printerInfo->pPortName, DC_PAPERNAMES,
                                            nullptr, printerInfo->pDevMode);
    if (byteSize != nullptr) {
        *byteSize = count >= 1 ? static_cast<DWORD>(count) * kPaperNameBytes : 0;
    }
    Trace(L"EnumPrinterPaperSizes(): DeviceCapabilities(DC_PAPERNAMES) returns %d forms\n", count);
    if (count >= 1 && names != nullptr) {
        if (capacityBytes != kUnbounded && static_cast<DWORD>(count) > capacityBytes / kPaperNameBytes) {
            return 0;
        }
        count = Spool().DeviceCapabilitiesW(printerInfo->pPrinterName, printerInfo->pPortName, DC_PAPERNAMES,
                                            names, printerInfo->pDevMode);
    }
    return count >= 1 ? count : 0;
}

void CopyPaperName(const wchar_t* names, int index, wchar_t* destination, size_t capacity) {
    if (destination == nullptr || capacity == 0) {
        return;
    }
    const wchar_t* slot = names + static_cast<size_t>(index) * kPaperNameCharacters;
    size_t i = 0;
    for (; i + 1 < capacity && i < kPaperNameCharacters && slot[i] != L'\0'; ++i) {
        destination[i] = slot[i];
    }
    destination[i] = L'\0';
}

PaperDimensions GetFormSize(HANDLE printer, const wchar_t* formName) {
    PaperDimensions size = {0, 0};
    DWORD needed = 0;
    Spool().GetFormW(printer, formName, 2, nullptr, 0, &needed);
    HeapBuffer form(needed);
    if (form && needed >= sizeof(FORM_INFO_2W) && Spool().GetFormW(printer, formName, 2, form.bytes(), needed, &needed)) {
        size.cx = form.as<FORM_INFO_2W>()->Size.cx;
        size.cy = form.as<FORM_INFO_2W>()->Size.cy;
    }
    return size;
}

HeapBuffer FetchPrinterPaperNames(HANDLE printer, int* count, DWORD* dmFields) {
    *count = 0;
    DWORD byteSize = 0;
    if (EnumPrinterPaperSizes(printer, nullptr, &byteSize, dmFields) < 1 || byteSize == 0) {
        return HeapBuffer();
    }
    HeapBuffer names(byteSize);
    if (!names) {
        return names;
    }
    DWORD filledSize = 0;
    const int fetched = EnumPrinterPaperSizes(printer, names.as<wchar_t>(), byteSize, &filledSize, dmFields);
    const int fitting = static_cast<int>(byteSize / kPaperNameBytes);
    *count = fetched < 0 ? 0 : (fetched > fitting ? fitting : fetched);
    return names;
}

int GetPrinterCurrentFormName(HANDLE printer, PaperDimensions size, wchar_t* destination) {
    DWORD bytes = 0;
    const int count = EnumPrinterPaperSizes(printer, nullptr, &bytes, nullptr);
    Trace(L"GetPrinterCurrentFormName(): %d=EnumPrinterPaperSizes()\n", count);
    if (count < 1) {
        return count;
    }
    HeapBuffer names(bytes);
    Trace(L"GetPrinterCurrentFormName(): paperNames=0x%p, size=%u\n", names.bytes(), bytes);
    bool matched = false;
    if (names) {
        const int fetched = EnumPrinterPaperSizes(printer, names.as<wchar_t>(), bytes, nullptr, nullptr);
        for (int i = 0; i < fetched; ++i) {
            wchar_t name[kPaperNameCharacters + 1];
            CopyPaperName(names.as<wchar_t>(), i, name, kPaperNameCharacters + 1);
            if (name[0] == L'\0') {
                continue;
            }
            const PaperDimensions form = GetFormSize(printer, name);
            if (ToTenthMillimetre(form.cx) == size.cx && ToTenthMillimetre(form.cy) == size.cy) {
                if (destination != nullptr) {
                    CopyWide(destination, kFormNameCapacity, name);
                }
                matched = true;  // no early exit: the last matching name wins
            }
        }
    }
    if (!matched && destination != nullptr) {
        CopyWide(destination, kFormNameCapacity, L"Letter");
    }
    return count;
}

bool IsFormAboutSize(PaperDimensions sf, PaperDimensions df) {
    Trace(L"IsFormAboutSize(): sf=(%u, %u), df=(%u, %u)\n", sf.cx, sf.cy, df.cx, df.cy);
    const bool asItStands = IsWithinOne(sf.cx, df.cx) && IsWithinOne(sf.cy, df.cy);
    const bool turned = IsWithinOne(sf.cx, df.cy) && IsWithinOne(sf.cy, df.cx);
    return asItStands || turned;
}

bool IsFormOfDeviceSize(PaperDimensions form, const UIConfig& config) {
    constexpr int32_t kMicrometresPerTwentieth = 1270;
    return IsFormAboutSize({form.cx / kMicrometresPerTwentieth, form.cy / kMicrometresPerTwentieth},
                           {config.EmbsrPaperWidth, config.EmbsrPaperLength});
}
