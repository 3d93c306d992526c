// The slots of the IPrintOemUI2 object, through the real DLL loaded like the driver's
// host loads it.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

#include "host/plugin_under_test.h"

using hosttest::LoadedPlugin;
using ozdkhost::ComRef;

namespace {

constexpr DWORD kUntouched = 0xDEADBEEF;
constexpr DWORD kSignature = 0x4F5A444B;
constexpr DWORD kPrivateSize = 724;

class PluginObjectTest : public LoadedPlugin {
protected:
    void SetUp() override {
        LoadedPlugin::SetUp();
        object = NewObject();
        ASSERT_TRUE(object);
    }
    ComRef<IPrintOemUI2> object;
};

// A private part as the host keeps it: 724 bytes, followed by a guard area.
struct PrivatePart {
    explicit PrivatePart(BYTE fill) : bytes(kPrivateSize + 64, fill) {}
    OEM_DMEXTRAHEADER* header() { return reinterpret_cast<OEM_DMEXTRAHEADER*>(bytes.data()); }
    void SetHeader(DWORD size, DWORD signature, DWORD version) {
        header()->dwSize = size;
        header()->dwSignature = signature;
        header()->dwVersion = version;
    }
    std::vector<BYTE> bytes;
};

HRESULT DevMode(IPrintOemUI2* object, DWORD mode, PrivatePart* in, PrivatePart* out) {
    OEMDMPARAM param = {};
    param.cbSize = sizeof(param);
    param.pOEMDMIn = in != nullptr ? in->bytes.data() : nullptr;
    param.pOEMDMOut = out != nullptr ? out->bytes.data() : nullptr;
    return object->DevMode(mode, &param);
}

}  // namespace

TEST_F(PluginObjectTest, GetInfoReportsSignatureAndVersionAndRejectsEverythingElse) {
    struct Case {
        const char* what;
        DWORD mode;
        DWORD bufferSize;
        bool nullBuffer;
        bool nullNeeded;
        HRESULT result;
        DWORD lastError;  // kUntouched: none set
        DWORD needed;
        DWORD value;
    } const cases[] = {
        {"signature", OEMGI_GETSIGNATURE, 4, false, false, S_OK, kUntouched, 4, kSignature},
        {"version", OEMGI_GETVERSION, 8, false, false, S_OK, kUntouched, 4, 13},
        {"interface version is rejected", OEMGI_GETINTERFACEVERSION, 4, false, false, E_FAIL, ERROR_INVALID_PARAMETER,
         kUntouched, kUntouched},
        {"publisher info", OEMGI_GETPUBLISHERINFO, 4, false, false, E_FAIL, ERROR_NOT_SUPPORTED, 0, kUntouched},
        {"3-byte buffer", OEMGI_GETSIGNATURE, 3, false, false, E_FAIL, ERROR_INSUFFICIENT_BUFFER, 4, kUntouched},
        {"no buffer", OEMGI_GETVERSION, 4, true, false, E_FAIL, ERROR_INSUFFICIENT_BUFFER, 4, kUntouched},
        {"no size out", OEMGI_GETSIGNATURE, 4, false, true, E_FAIL, ERROR_INVALID_PARAMETER, kUntouched, kUntouched},
        {"mode 5", 5, 4, false, false, E_FAIL, ERROR_INVALID_PARAMETER, kUntouched, kUntouched},
    };
    for (const auto& c : cases) {
        DWORD buffer[2] = {kUntouched, kUntouched};
        DWORD needed = kUntouched;
        SetLastError(kUntouched);
        const HRESULT hr = object->GetInfo(c.mode, c.nullBuffer ? nullptr : buffer, c.bufferSize,
                                           c.nullNeeded ? nullptr : &needed);
        EXPECT_EQ(hr, c.result) << c.what;
        EXPECT_EQ(GetLastError(), c.lastError) << c.what;
        EXPECT_EQ(needed, c.needed) << c.what;
        EXPECT_EQ(buffer[0], c.value) << c.what;
        EXPECT_EQ(buffer[1], kUntouched) << c.what;
    }
}

TEST_F(PluginObjectTest, DevModeSizesAndDefaultsThe724BytePrivatePartAndRejectsBadCalls) {
    OEMDMPARAM param = {};
    param.cbSize = sizeof(param);
    EXPECT_EQ(object->DevMode(OEMDM_SIZE, &param), S_OK);
    EXPECT_EQ(param.cbBufSize, kPrivateSize);

    PrivatePart out(0xCC);
    EXPECT_EQ(DevMode(object.get(), OEMDM_DEFAULT, nullptr, &out), S_OK);
    const BYTE header[12] = {0xD4, 0x02, 0, 0, 0x4B, 0x44, 0x5A, 0x4F, 13, 0, 0, 0};  // 724, "KDZO", 13
    EXPECT_EQ(std::memcmp(out.bytes.data(), header, sizeof(header)), 0);
    for (size_t i = sizeof(header); i < kPrivateSize; ++i) {
        ASSERT_EQ(out.bytes[i], 0) << "byte " << i;
    }
    for (size_t i = kPrivateSize; i < out.bytes.size(); ++i) {
        ASSERT_EQ(out.bytes[i], 0xCC) << "written past the part at " << i;
    }

    SetLastError(0);
    EXPECT_EQ(object->DevMode(5, &param), E_FAIL) << "unknown mode";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(object->DevMode(OEMDM_SIZE, nullptr), E_FAIL);
    param.pOEMDMOut = nullptr;
    EXPECT_EQ(object->DevMode(OEMDM_DEFAULT, &param), E_FAIL) << "no output buffer";
}

TEST_F(PluginObjectTest, ConvertAndMergeCopyOnlyMatchingSignaturesAndStampTheHeader) {
    struct Case {
        const char* what;
        DWORD mode;
        DWORD inSize, inSignature, inVersion;
        DWORD outSize, outSignature, outVersion;
        size_t copied;        // bytes of the input that arrive in the output
        DWORD headerSize;     // the output's header afterwards
        DWORD headerSignature;
        DWORD headerVersion;
    } const cases[] = {
        {"merge, foreign signature", OEMDM_MERGE, 724, 0x12345678, 13, 724, kSignature, 9, 0, 724, kSignature, 13},
        {"merge into a foreign output", OEMDM_MERGE, 724, kSignature, 13, 724, 0x12345678, 2, 0, 724, kSignature, 13},
        {"convert, input of 100 bytes", OEMDM_CONVERT, 100, kSignature, 7, 724, kSignature, 13, 100, 724, kSignature,
         13},
        {"convert, output of 200 bytes", OEMDM_CONVERT, 724, kSignature, 13, 200, kSignature, 13, 200, 724,
         kSignature, 13},
        {"convert, both claim more than the part", OEMDM_CONVERT, 5000, kSignature, 13, 4000, kSignature, 13, 724,
         724, kSignature, 13},
    };
    for (const auto& c : cases) {
        PrivatePart in(0x11);
        PrivatePart out(0x22);
        in.SetHeader(c.inSize, c.inSignature, c.inVersion);
        out.SetHeader(c.outSize, c.outSignature, c.outVersion);
        const std::vector<BYTE> inBefore = in.bytes;
        const std::vector<BYTE> outBefore = out.bytes;

        EXPECT_EQ(DevMode(object.get(), c.mode, &in, &out), S_OK) << c.what;
        EXPECT_EQ(out.header()->dwSize, c.headerSize) << c.what;
        EXPECT_EQ(out.header()->dwSignature, c.headerSignature) << c.what;
        EXPECT_EQ(out.header()->dwVersion, c.headerVersion) << c.what;
        for (size_t i = sizeof(OEM_DMEXTRAHEADER); i < out.bytes.size(); ++i) {
            const BYTE expected = i < c.copied ? inBefore[i] : outBefore[i];
            ASSERT_EQ(out.bytes[i], expected) << c.what << ", byte " << i;
        }
        EXPECT_EQ(in.bytes, inBefore) << c.what << ": the input is not changed";
    }
}

TEST_F(PluginObjectTest, ConvertAndMergeWithAMissingSideChangeNothingButTheMergedHeader) {
    PrivatePart in(0x11);
    in.SetHeader(724, kSignature, 13);
    PrivatePart out(0x22);
    out.SetHeader(724, kSignature, 4);
    const std::vector<BYTE> outBefore = out.bytes;
    EXPECT_EQ(DevMode(object.get(), OEMDM_CONVERT, nullptr, &out), S_OK);
    EXPECT_EQ(out.bytes, outBefore) << "convert without input";
    EXPECT_EQ(DevMode(object.get(), OEMDM_MERGE, &in, nullptr), S_OK);
    EXPECT_EQ(DevMode(object.get(), OEMDM_MERGE, nullptr, &out), S_OK);
    EXPECT_EQ(out.header()->dwVersion, 13u) << "merge stamps the output's header even without input";
    EXPECT_TRUE(std::equal(out.bytes.begin() + 12, out.bytes.end(), outBefore.begin() + 12));
}

TEST_F(PluginObjectTest, PublishDriverInterfaceKeepsTheFirstDriverInterfaceUntilTheFinalRelease) {
    ozdkhost::HostDriverUI* first = ozdkhost::HostDriverUI::Create();
    ozdkhost::HostDriverUI* second = ozdkhost::HostDriverUI::Create();
    ComRef<IClassFactory> plain = NewFactory();  // an object without IPrintOemDriverUI

    EXPECT_EQ(object->PublishDriverInterface(plain.get()), E_FAIL) << "no IPrintOemDriverUI behind it";
    EXPECT_EQ(plain->AddRef(), 2u) << "not kept";
    plain->Release();
    EXPECT_EQ(object->PublishDriverInterface(first), S_OK);
    EXPECT_EQ(first->references(), 2);
    EXPECT_EQ(object->PublishDriverInterface(second), S_OK) << "already held";
    EXPECT_EQ(second->references(), 1) << "not asked again";

    EXPECT_EQ(object.reset(), 0u);
    EXPECT_EQ(first->references(), 1) << "released with the object";
    first->Release();
    second->Release();
}

TEST_F(PluginObjectTest, CommonUIPropAddsNoDocumentItemsAndTracesEachCall) {
    testenv::TraceLog log;
    OPTITEM hostItems[3] = {};
    OEMCUIPPARAM param = {};
    param.cbSize = sizeof(param);
    param.pDrvOptItems = hostItems;
    param.cDrvOptItems = 3;
    param.cOEMOptItems = 7;
    EXPECT_EQ(object->CommonUIProp(OEMCUIP_DOCPROP, &param), S_OK) << "sizing call";
    EXPECT_EQ(param.cOEMOptItems, 0u);
    EXPECT_TRUE(log.Contains("hrOEMPropertyPage(): dwMode=1, cDrvOptItems=3, cOEMOptItems=7")) << log.Text();
    SetLastError(0);
    EXPECT_EQ(object->CommonUIProp(3, &param), E_FAIL);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST_F(PluginObjectTest, DeviceCapabilitiesAnswersOnlyThePrivateCapability) {
    wchar_t output[40];
    std::fill(std::begin(output), std::end(output), L'#');
    DWORD size = kUntouched;
    EXPECT_EQ(object->DeviceCapabilities(nullptr, nullptr, nullptr, 257, output, nullptr, nullptr, 0, &size), S_OK);
    EXPECT_EQ(size, 46u) << "the answer's size with its terminator";
    EXPECT_STREQ(output, L"EmbossMode=1,InkMode=1");
    EXPECT_EQ(output[23], L'#') << "nothing beyond the terminator";
    size = kUntouched;
    EXPECT_EQ(object->DeviceCapabilities(nullptr, nullptr, nullptr, 257, nullptr, nullptr, nullptr, 0, &size), S_OK);
    EXPECT_EQ(size, 46u) << "without a buffer";
    size = kUntouched;
    EXPECT_EQ(object->DeviceCapabilities(nullptr, nullptr, nullptr, 256, output, nullptr, nullptr, 0, &size),
              E_NOTIMPL);
    EXPECT_EQ(size, kUntouched);
}

TEST_F(PluginObjectTest, QueryColorProfileNamesTheProfileAndAlwaysAsksFor32Bytes) {
    struct Case {
        const char* what;
        ULONG mode;
        bool buffer;
        ULONG size;
        HRESULT result;
        DWORD lastError;
        ULONG reportedSize;
    } const cases[] = {
        {"32 bytes", QCP_DEVICEPROFILE, true, 32, S_OK, kUntouched, 32},
        {"30 bytes, enough for the name", QCP_DEVICEPROFILE, true, 30, E_FAIL, ERROR_INSUFFICIENT_BUFFER, 32},
        {"no buffer", QCP_DEVICEPROFILE, false, 64, E_FAIL, ERROR_INSUFFICIENT_BUFFER, 32},
        {"source profile", QCP_SOURCEPROFILE, true, 64, E_FAIL, kUntouched, 64},
    };
    for (const auto& c : cases) {
        wchar_t buffer[40];
        std::fill(std::begin(buffer), std::end(buffer), L'#');
        ULONG size = c.size;
        FLONG flags = kUntouched;
        SetLastError(kUntouched);
        EXPECT_EQ(object->QueryColorProfile(nullptr, nullptr, nullptr, nullptr, c.mode, c.buffer ? buffer : nullptr,
                                            &size, &flags),
                  c.result)
            << c.what;
        EXPECT_EQ(GetLastError(), c.lastError) << c.what;
        EXPECT_EQ(size, c.reportedSize) << c.what;
        EXPECT_EQ(flags, c.result == S_OK ? QCP_PROFILEDISK : kUntouched) << c.what;
        if (c.result == S_OK) {
            EXPECT_STREQ(buffer, L"OEMPROFILE.icm") << c.what;
        } else {
            EXPECT_EQ(buffer[0], L'#') << c.what;
        }
    }
}

TEST_F(PluginObjectTest, OnlyTheDocumentUIIsHiddenAndSlotsLeftToTheHostAnswerNotImplemented) {
    EXPECT_EQ(object->HideStandardUI(OEMCUIP_DOCPROP), S_OK);
    EXPECT_EQ(object->HideStandardUI(OEMCUIP_PRNPROP), E_NOTIMPL);
    testenv::TraceLog log;
    BYTE scratch[64] = {};
    INT escapeResult = 0;
    SetLastError(kUntouched);
    EXPECT_EQ(object->DevQueryPrintEx(nullptr, nullptr, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(object->UpgradePrinter(1, scratch), E_NOTIMPL);
    EXPECT_EQ(object->PrinterEvent(nullptr, 1, 0, 0), E_NOTIMPL);
    EXPECT_EQ(object->DriverEvent(1, 1, scratch, 0), E_NOTIMPL);
    EXPECT_EQ(object->FontInstallerDlgProc(nullptr, WM_INITDIALOG, 0, 0), E_NOTIMPL);
    EXPECT_EQ(object->UpdateExternalFonts(nullptr, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(object->QueryJobAttributes(nullptr, nullptr, 1, scratch), E_NOTIMPL);
    EXPECT_EQ(object->DocumentEvent(nullptr, nullptr, 1, 0, scratch, 0, scratch, &escapeResult), E_NOTIMPL);
    EXPECT_EQ(GetLastError(), kUntouched);
    EXPECT_TRUE(log.Lines().empty()) << "nothing is traced";
}

TEST_F(PluginObjectTest, ReleaseWithoutAnyPageOpenedDestroysNoConfiguration) {
    testenv::TraceLog log;
    EXPECT_EQ(object->AddRef(), 2u);
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(object.reset(), 0u);
    for (const auto& line : log.Lines()) {
        EXPECT_EQ(line.find("DestroyConfig("), std::string::npos) << line;
    }
}
