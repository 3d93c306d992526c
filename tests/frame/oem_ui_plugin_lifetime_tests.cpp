// The plug-in object's ownership of the configuration record and the driver interface:
// the record the pages attach through the object's config slot is destroyed exactly
// once, by the final Release.
#include <gtest/gtest.h>

#include <string>

#include "config/config_lifecycle.h"
#include "frame/class_factory.h"
#include "frame/oem_ui_plugin.h"
#include "frame/text_format.h"
#include "support/wine_environment.h"

namespace {

// The call block a page hands to CreateConfig, built from a real printer.
OEMCUIPPARAM MakeParam(const testenv::TestPrinter& printer, HANDLE heap) {
    OEMCUIPPARAM param = {};
    param.cbSize = sizeof(param);
    param.hPrinter = printer.handle();
    param.pPrinterName = const_cast<wchar_t*>(printer.name().c_str());
    param.hModule = GetModuleHandleW(nullptr);
    param.hOEMHeap = heap;
    return param;
}

std::string FreeingLine(const UIConfig* config) {
    char line[128];
    FormatNarrow(line, sizeof(line), "DestroyConfig(): freeing pConfig=0x%p", static_cast<const void*>(config));
    return line;
}

// Counts the references a plug-in object holds on it.
class CountingDriverUI final : public IPrintOemDriverUI {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IPrintOemDriverUI)) {
            *object = static_cast<IPrintOemDriverUI*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }
    HRESULT STDMETHODCALLTYPE DrvGetDriverSetting(PVOID, PCSTR, PVOID, DWORD, PDWORD, PDWORD) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE DrvUpgradeRegistrySetting(HANDLE, PCSTR, PCSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DrvUpdateUISetting(PVOID, PVOID, DWORD, DWORD) override { return E_NOTIMPL; }
    long references = 1;
};

class PluginLifetime : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(printer.handle(), nullptr);
        ASSERT_NE(heap, nullptr);
    }
    void TearDown() override { HeapDestroy(heap); }

    // A new object as the class factory makes it, with the caller's one reference.
    static OemUIPlugin* NewPlugin() {
        IClassFactory* factory = new OemUIClassFactory();
        void* created = nullptr;
        factory->CreateInstance(nullptr, IID_IPrintOemUI2, &created);
        factory->Release();
        return static_cast<OemUIPlugin*>(static_cast<IPrintOemUI2*>(created));
    }

    testenv::TestPrinter printer;
    HANDLE heap = HeapCreate(0, 0, 0);
};

}  // namespace

TEST_F(PluginLifetime, FinalReleaseDestroysTheSharedConfigurationExactlyOnce) {
    struct Case {
        const char* what;
        int attachments;  // pages that attached the record through this object
        int extraReferences;
    } const cases[] = {
        {"one page", 1, 0},
        {"document and printer pages", 2, 0},
        {"three pages, object shared by the host", 3, 2},
    };
    for (const auto& c : cases) {
        OemUIPlugin* plugin = NewPlugin();
        ASSERT_NE(plugin, nullptr);
        testenv::TraceLog log;
        OEMCUIPPARAM param = MakeParam(printer, heap);
        for (int i = 1; i <= c.attachments; ++i) {
            EXPECT_EQ(CreateConfig(&param, plugin->ConfigSlot()), i) << c.what;
        }
        UIConfig* config = *plugin->ConfigSlot();
        ASSERT_NE(config, nullptr) << c.what;
        const std::string freeing = FreeingLine(config);

        for (int i = 0; i < c.extraReferences; ++i) plugin->AddRef();
        for (int i = 0; i < c.extraReferences; ++i) {
            EXPECT_GT(plugin->Release(), 0u) << c.what;
            EXPECT_EQ(log.Count(freeing), 0) << c.what << ": not before the final Release";
        }
        EXPECT_EQ(plugin->Release(), 0u) << c.what;
        EXPECT_EQ(log.Count(freeing), 1) << c.what;
        EXPECT_EQ(HeapValidate(heap, 0, nullptr), TRUE) << c.what;
    }
}

TEST_F(PluginLifetime, FinalReleaseGivesBackThePublishedDriverInterface) {
    OemUIPlugin* plugin = NewPlugin();
    ASSERT_NE(plugin, nullptr);
    CountingDriverUI driver;
    EXPECT_EQ(plugin->PublishDriverInterface(&driver), S_OK);
    EXPECT_EQ(driver.references, 2);
    EXPECT_EQ(plugin->DriverInterface(), &driver);
    plugin->AddRef();
    plugin->Release();
    EXPECT_EQ(driver.references, 2);
    EXPECT_EQ(plugin->Release(), 0u);
    EXPECT_EQ(driver.references, 1);
}
