// The plug-in object's ownership of the configuration record: the record the pages
// attach through the object's config slot is destroyed exactly once, by the final
// Release.
#include <gtest/gtest.h>

#include <string>

#include "config/config_lifecycle.h"
#include "frame/class_factory.h"
#include "frame/oem_ui_plugin.h"
#include "base/text_format.h"
#include "support/host_fixtures.h"

TEST(PluginLifetime, FinalReleaseDestroysTheSharedConfigurationExactlyOnce) {
    testenv::TestPrinter printer;
    ASSERT_NE(printer.handle(), nullptr);
    const HANDLE heap = HeapCreate(0, 0, 0);
    ASSERT_NE(heap, nullptr);
    // A new object as the class factory makes it, with the caller's one reference.
    IClassFactory* factory = new OemUIClassFactory();
    void* created = nullptr;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IPrintOemUI2, &created), S_OK);
    factory->Release();
    auto* plugin = static_cast<OemUIPlugin*>(static_cast<IPrintOemUI2*>(created));

    // Three pages attach the record through the object; the host holds two more references.
    testenv::TraceLog log;
    OEMCUIPPARAM param = testenv::MakeParam(printer, heap);
    for (int i = 1; i <= 3; ++i) EXPECT_EQ(CreateConfig(&param, plugin->ConfigSlot()), i);
    ASSERT_NE(*plugin->ConfigSlot(), nullptr);
    char freeing[128];
    FormatNarrow(freeing, sizeof(freeing), "DestroyConfig(): freeing pConfig=0x%p",
                 static_cast<const void*>(*plugin->ConfigSlot()));

    plugin->AddRef();
    plugin->AddRef();
    for (int i = 0; i < 2; ++i) {
        EXPECT_GT(plugin->Release(), 0u);
        EXPECT_EQ(log.Count(freeing), 0) << "not before the final Release";
    }
    EXPECT_EQ(plugin->Release(), 0u);
    EXPECT_EQ(log.Count(freeing), 1);
    EXPECT_EQ(HeapValidate(heap, 0, nullptr), TRUE);
    HeapDestroy(heap);
}
