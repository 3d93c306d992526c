// The library's exports, the class factory and the slots of the IPrintOemUI2 object,
// through the real DLL loaded like the driver's host loads it.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "support/host_fixtures.h"
#include "tools/host/host_library.h"

namespace {

constexpr DWORD kUnset = 0xDEADBEEF;
constexpr DWORD kSignature = 0x4F5A444B;

// The library just built, loaded the way the driver's host loads it, a factory and an
// object from it.
class LoadedPlugin : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(library.Load(testenv::BuildFilePath(L"ozdkrnui.dll"))) << "ozdkrnui.dll of OZDK_BUILD_DIR";
        ASSERT_EQ(library.GetClassObject(CLSID_OEMUI, IID_IClassFactory, factory.put()), S_OK);
        ASSERT_EQ(ozdkhost::CreatePluginObject(library, reinterpret_cast<IPrintOemUI2**>(object.put())), S_OK);
    }
    ozdkhost::PluginLibrary library;
    ozdkhost::ComRef<IClassFactory> factory;
    ozdkhost::ComRef<IPrintOemUI2> object;
};

}  // namespace

// What is granted (the factory, the object as IUnknown and as IPrintOemUI2) comes with one
// reference, the caller's: the set-up takes them and the counts of the next test pin
// that. Here: what is refused answers null and leaves nothing alive.
TEST_F(LoadedPlugin, FactoryAndObjectComeOnlyForTheirInterfacesAndRefusalsLeakNothing) {
    struct Case {
        const char* what;
        bool create, aggregated;  // create: through CreateInstance, else DllGetClassObject
        GUID clsid, iid;
        HRESULT expected;
    } const cases[] = {
        {"factory asked for IPrintOemUI2", false, false, CLSID_OEMUI, IID_IPrintOemUI2, E_NOINTERFACE},
        {"unknown class", false, false, IID_IPrintOemUI2, IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
        {"object as IPrintOemUI (first version)", true, false, GUID_NULL, IID_IPrintOemUI, E_NOINTERFACE},
        {"aggregated object", true, true, GUID_NULL, IID_IUnknown, CLASS_E_NOAGGREGATION},
    };
    for (const auto& c : cases) {
        const auto request = [&](void** out) {
            return c.create ? factory->CreateInstance(c.aggregated ? factory.get() : nullptr, c.iid, out)
                            : library.GetClassObject(c.clsid, c.iid, out);
        };
        void* answer = &answer;
        EXPECT_EQ(request(&answer), c.expected) << c.what;
        EXPECT_EQ(answer, nullptr) << c.what;
        // A factory or object left alive per call is a heap block of 16 bytes or more: over
        // 200 calls far above the noise of the runtime.
        const auto before = static_cast<long long>(ozdkhost::MeasureHeapUsage().busyBytes);
        for (int i = 0; i < 200; ++i) request(&answer);
        EXPECT_LT(static_cast<long long>(ozdkhost::MeasureHeapUsage().busyBytes) - before, 1600) << c.what;
    }
    EXPECT_EQ(library.GetClassObject(CLSID_OEMUI, IID_IClassFactory, nullptr), E_POINTER);
    void* answer = &answer;
    EXPECT_EQ(object->QueryInterface(IID_IPrintOemUI, &answer), E_NOINTERFACE) << "the first version";
    EXPECT_EQ(answer, nullptr);
}

// References and server locks taken and given back from several threads at once; only
// an outstanding server lock keeps the library loaded.
TEST_F(LoadedPlugin, ReferencesAndServerLocksCountRightFromManyThreadsAndOnlyALockKeepsTheLibrary) {
    EXPECT_EQ(library.CanUnloadNow(), S_OK) << "live objects and factories are not counted";
    // Lost updates of a counter that is not interlocked need the threads to overlap, which
    // a loaded machine grants only now and then: fewer rounds than these often miss them.
    constexpr unsigned kThreads = 4, kRounds = 4000000;
    const auto onAllThreads = [](auto work) {
        std::atomic<unsigned> waiting{kThreads};
        const auto run = [&] {
            for (waiting.fetch_sub(1); waiting.load() > 0;) continue;  // start together
            for (unsigned i = 0; i < kRounds; ++i) work();
        };
        std::thread threads[kThreads] = {std::thread(run), std::thread(run), std::thread(run), std::thread(run)};
        for (auto& thread : threads) thread.join();
    };
    onAllThreads([&] { object->AddRef(); });
    onAllThreads([&] { factory->AddRef(); });
    onAllThreads([&] { factory->LockServer(TRUE); });
    ASSERT_EQ(object->AddRef(), 2u + kThreads * kRounds);  // fatal: fewer would free them below
    ASSERT_EQ(factory->AddRef(), 2u + kThreads * kRounds);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK) << "one lock more than the threads give back";
    onAllThreads([&] { object->Release(); });
    onAllThreads([&] { factory->Release(); });
    onAllThreads([&] { factory->LockServer(FALSE); });
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(factory->Release(), 1u);
    ASSERT_EQ(library.GetClassObject(CLSID_OEMUI, IID_IClassFactory, factory.put()), S_OK);  // the first one freed
    EXPECT_EQ(library.CanUnloadNow(), S_FALSE) << "one lock outstanding, and it outlives the factory that took it";
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(library.CanUnloadNow(), S_OK);
}

// GetInfo reports the signature and version that head the private part, which DevMode
// sizes, defaults, converts and merges.
TEST_F(LoadedPlugin, GetInfoAndDevModeDescribeAndManageThePrivatePart) {
    struct Case {
        const char* what;
        bool buffer, sizeOut;
        DWORD mode, size, lastError, needed, value;  // kUnset: not set; S_OK exactly when no error
    } const cases[] = {
        {"signature", true, true, OEMGI_GETSIGNATURE, 4, kUnset, 4, kSignature},
        {"version", true, true, OEMGI_GETVERSION, 8, kUnset, 4, 13},
        {"interface", true, true, OEMGI_GETINTERFACEVERSION, 4, ERROR_INVALID_PARAMETER, kUnset, kUnset},
        {"publisher info", true, true, OEMGI_GETPUBLISHERINFO, 4, ERROR_NOT_SUPPORTED, 0, kUnset},
        {"3-byte buffer", true, true, OEMGI_GETSIGNATURE, 3, ERROR_INSUFFICIENT_BUFFER, 4, kUnset},
        {"no buffer", false, true, OEMGI_GETVERSION, 4, ERROR_INSUFFICIENT_BUFFER, 4, kUnset},
        {"no size out", true, false, OEMGI_GETSIGNATURE, 4, ERROR_INVALID_PARAMETER, kUnset, kUnset},
        {"mode 5", true, true, 5, 4, ERROR_INVALID_PARAMETER, kUnset, kUnset},
    };
    for (const auto& c : cases) {
        DWORD buffer[2] = {kUnset, kUnset}, needed = kUnset;
        SetLastError(kUnset);
        const HRESULT hr = object->GetInfo(c.mode, c.buffer ? buffer : nullptr, c.size, c.sizeOut ? &needed : nullptr);
        EXPECT_EQ(std::make_tuple(hr, GetLastError(), needed, buffer[0], buffer[1]),
                  std::make_tuple(c.lastError == kUnset ? S_OK : E_FAIL, c.lastError, c.needed, c.value, kUnset))
            << c.what << ": result, last error, size needed, buffer";
    }

    // The 724-byte private part: its size, its default (header, zeros, nothing written
    // past it), and converting or merging another part into it.
    OEMDMPARAM param = {sizeof(param)};
    EXPECT_EQ(object->DevMode(OEMDM_SIZE, &param), S_OK);
    EXPECT_EQ(param.cbBufSize, 724u);
    EXPECT_EQ(object->DevMode(5, &param), E_FAIL) << "unknown mode";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    param.pOEMDMIn = &param;  // readable, and not a private part of the plug-in
    EXPECT_EQ(object->DevMode(OEMDM_MERGE, &param), S_OK) << "merge without output";
    EXPECT_EQ(object->DevMode(OEMDM_DEFAULT, &param), E_FAIL) << "default without output";
    EXPECT_EQ(object->DevMode(OEMDM_SIZE, nullptr), E_FAIL);
    struct DevModeCase {
        const char* what;
        // The input's header (size 0: no input) and the output's; then the bytes of the output
        // taken from the input, and set to zero, and its version afterwards (under size 724
        // and the plug-in's signature).
        DWORD mode, inSize, inSignature, outSize, outSignature, outVersion, copied, zeroed, version;
    } const devModeCases[] = {
        {"default", OEMDM_DEFAULT, 0, 0, 0, 0, 0, 0, 724, 13},
        {"merge, foreign signature", OEMDM_MERGE, 724, 0x12345678, 724, kSignature, 9, 0, 0, 13},
        {"merge into a foreign output", OEMDM_MERGE, 724, kSignature, 724, 0x12345678, 2, 0, 0, 13},
        {"merge without input", OEMDM_MERGE, 0, 0, 724, kSignature, 4, 0, 0, 13},
        {"convert without input", OEMDM_CONVERT, 0, 0, 724, kSignature, 4, 0, 0, 4},
        {"convert, input of 100 bytes", OEMDM_CONVERT, 100, kSignature, 724, kSignature, 13, 100, 0, 13},
        {"convert, output of 200 bytes", OEMDM_CONVERT, 724, kSignature, 200, kSignature, 13, 200, 0, 13},
        {"convert, both claim more than the part", OEMDM_CONVERT, 5000, kSignature, 4000, kSignature, 13, 724, 0, 13},
    };
    for (const auto& c : devModeCases) {
        std::vector<BYTE> in(724 + 64, 0x11), out(724 + 64, 0xCC);  // a guard area after each
        *reinterpret_cast<OEM_DMEXTRAHEADER*>(in.data()) = {c.inSize, c.inSignature, 7};
        *reinterpret_cast<OEM_DMEXTRAHEADER*>(out.data()) = {c.outSize, c.outSignature, c.outVersion};
        const std::vector<BYTE> inBefore = in;
        param.pOEMDMIn = c.inSize != 0 ? in.data() : nullptr;
        param.pOEMDMOut = out.data();
        EXPECT_EQ(object->DevMode(c.mode, &param), S_OK) << c.what;
        const BYTE header[12] = {0xD4, 0x02, 0, 0, 0x4B, 0x44, 0x5A, 0x4F, BYTE(c.version), 0, 0, 0};  // 724, "KDZO"
        for (size_t i = 0; i < out.size(); ++i) {
            ASSERT_EQ(out[i], i < sizeof(header) ? header[i] : i < c.copied ? inBefore[i] : i < c.zeroed ? 0 : 0xCC)
                << c.what << ", byte " << i;
        }
        EXPECT_EQ(in, inBefore) << c.what << ": the input is not changed";
    }
}

// DeviceCapabilities answers one private capability, QueryColorProfile names the device
// profile; every other slot is left to the host, and none of them traces. Then the driver
// interface the object keeps.
TEST_F(LoadedPlugin, SlotsAnswerTheirOwnCasesLeaveTheRestToTheHostAndKeepTheFirstDriverInterface) {
    testenv::TraceLog log;
    std::wstring text(40, L'#');
    DWORD size = kUnset;
    EXPECT_EQ(object->DeviceCapabilities(nullptr, nullptr, nullptr, 256, &text[0], nullptr, nullptr, 0, &size),
              E_NOTIMPL);
    EXPECT_EQ(size, kUnset) << "another capability";
    EXPECT_EQ(object->DeviceCapabilities(nullptr, nullptr, nullptr, 257, &text[0], nullptr, nullptr, 0, &size), S_OK);
    EXPECT_EQ(size, 46u) << "the answer's size with its terminator";
    EXPECT_EQ(text.substr(0, 24), std::wstring(L"EmbossMode=1,InkMode=1\0#", 24)) << "nothing beyond the terminator";
    size = kUnset;
    EXPECT_EQ(object->DeviceCapabilities(nullptr, nullptr, nullptr, 257, nullptr, nullptr, nullptr, 0, &size), S_OK);
    EXPECT_EQ(size, 46u) << "without a buffer";

    struct Case {
        const char* what;
        bool buffer, named;  // named: S_OK with the name and flags, else E_FAIL
        ULONG mode, size, lastError, reported;
    } const cases[] = {
        {"32 bytes", true, true, QCP_DEVICEPROFILE, 32, kUnset, 32},
        {"30 bytes, enough for the name", true, false, QCP_DEVICEPROFILE, 30, ERROR_INSUFFICIENT_BUFFER, 32},
        {"no buffer", false, false, QCP_DEVICEPROFILE, 64, ERROR_INSUFFICIENT_BUFFER, 32},
        {"source profile", true, false, QCP_SOURCEPROFILE, 64, kUnset, 64},
    };
    for (const auto& c : cases) {
        std::wstring name(40, L'#');
        ULONG profileSize = c.size, flags = kUnset;
        SetLastError(kUnset);
        const HRESULT hr = object->QueryColorProfile(nullptr, nullptr, nullptr, nullptr, c.mode,
                                                     c.buffer ? &name[0] : nullptr, &profileSize, &flags);
        EXPECT_EQ(std::make_tuple(hr, GetLastError(), profileSize, flags, name.substr(0, 15)),
                  std::make_tuple(c.named ? S_OK : E_FAIL, c.lastError, c.reported, c.named ? QCP_PROFILEDISK : kUnset,
                                  c.named ? std::wstring(L"OEMPROFILE.icm", 15) : std::wstring(15, L'#')))
            << c.what << ": result, last error, size, flags, name";
    }

    SetLastError(kUnset);
    EXPECT_EQ(object->HideStandardUI(OEMCUIP_PRNPROP), E_NOTIMPL) << "only the document UI is hidden";
    EXPECT_EQ(object->DevQueryPrintEx(nullptr, nullptr, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(object->UpgradePrinter(1, nullptr), E_NOTIMPL);
    EXPECT_EQ(object->PrinterEvent(nullptr, 1, 0, 0), E_NOTIMPL);
    EXPECT_EQ(object->DriverEvent(1, 1, nullptr, 0), E_NOTIMPL);
    EXPECT_EQ(object->FontInstallerDlgProc(nullptr, WM_INITDIALOG, 0, 0), E_NOTIMPL);
    EXPECT_EQ(object->UpdateExternalFonts(nullptr, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(object->QueryJobAttributes(nullptr, nullptr, 1, nullptr), E_NOTIMPL);
    EXPECT_EQ(object->DocumentEvent(nullptr, nullptr, 1, 0, nullptr, 0, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(GetLastError(), kUnset);

    // The document option tree gets no items of the plug-in: its pages replace it.
    OEMCUIPPARAM param = {sizeof(param)};
    param.cDrvOptItems = 3;
    param.cOEMOptItems = 7;
    EXPECT_EQ(object->CommonUIProp(OEMCUIP_DOCPROP, &param), S_OK) << "sizing call";
    EXPECT_EQ(param.cOEMOptItems, 0u);
    EXPECT_EQ(object->CommonUIProp(3, &param), E_FAIL);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(log.Lines(), std::vector<std::string>{"hrOEMPropertyPage(): dwMode=1, cDrvOptItems=3, cOEMOptItems=7"})
        << "the one trace of all these calls";

    // The first driver interface is kept until the final Release; what is not one is not kept.
    ozdkhost::HostDriverUI* first = ozdkhost::HostDriverUI::Create();
    ozdkhost::HostDriverUI* second = ozdkhost::HostDriverUI::Create();
    EXPECT_EQ(object->PublishDriverInterface(factory.get()), E_FAIL) << "no IPrintOemDriverUI behind it";
    EXPECT_EQ(factory.reset(), 0u) << "not kept";
    EXPECT_EQ(object->PublishDriverInterface(first), S_OK);
    EXPECT_EQ(first->references(), 2);
    EXPECT_EQ(object->PublishDriverInterface(second), S_OK) << "already held";
    EXPECT_EQ(second->references(), 1) << "not asked again";
    EXPECT_EQ(object.reset(), 0u);
    EXPECT_EQ(first->references(), 1) << "released with the object";
    first->Release();
    second->Release();
}
