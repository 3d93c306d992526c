// The binding of the language-monitor extension library.
#include <gtest/gtest.h>

#include "config/extension_library.h"
#include "support/host_fixtures.h"

TEST(ExtDllLoadFunction, LoadsTheLibraryOnceAndRetriesAFailedLoad) {
    UIConfig config = {};
    {
        testenv::PlacedCompanion none(L"", testenv::ExtensionLibraryPath());
        EXPECT_EQ(ExtDllLoadFunction(config, "DllCanUnloadNow"), nullptr);
        EXPECT_EQ(config.ExtLibraryHandle, nullptr);
    }
    // Any library with exports stands for the extension here: the plug-in itself.
    testenv::PlacedCompanion plugIn(testenv::PrinterDriverDirectory() + L"\\3\\ozdkrnui.dll",
                                    testenv::ExtensionLibraryPath());
    const FARPROC found = ExtDllLoadFunction(config, "DllCanUnloadNow");
    const HMODULE loaded = static_cast<HMODULE>(config.ExtLibraryHandle);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(found, GetProcAddress(loaded, "DllCanUnloadNow"));
    config.ExtLibraryHandle = GetModuleHandleW(L"kernel32.dll");  // a loaded library is kept
    EXPECT_EQ(ExtDllLoadFunction(config, "DllCanUnloadNow"), nullptr);
    FreeLibrary(loaded);
}
