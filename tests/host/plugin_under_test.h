// The plug-in DLL the end-to-end tests load through the host: the one just built (in the
// build folder CTest names), else the one installed with the test driver.
#pragma once

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/wine_environment.h"
#include "tools/host/host_library.h"

namespace hosttest {

inline std::wstring PluginUnderTest() {
    if (const char* build = std::getenv("OZDK_BUILD_DIR")) {
        std::wstring path = L"Z:" + testenv::Widen(build) + L"\\ozdkrnui.dll";
        for (auto& c : path) {
            if (c == L'/') c = L'\\';
        }
        if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
            return path;
        }
    }
    return ozdkhost::InstalledPluginPath();
}

// A test with the plug-in library loaded the way the driver's host loads it.
class LoadedPlugin : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(library.Load(PluginUnderTest())) << testenv::Narrow(PluginUnderTest()); }

    // A fresh plug-in object created in the host's order; fails the test when none.
    ozdkhost::ComRef<IPrintOemUI2> NewObject() {
        IPrintOemUI2* object = nullptr;
        EXPECT_EQ(ozdkhost::CreatePluginObject(library, &object), S_OK);
        return ozdkhost::ComRef<IPrintOemUI2>(object);
    }

    ozdkhost::ComRef<IClassFactory> NewFactory() {
        ozdkhost::ComRef<IClassFactory> factory;
        EXPECT_EQ(library.GetClassObject(CLSID_OEMUI, IID_IClassFactory, factory.put()), S_OK);
        return factory;
    }

    ozdkhost::PluginLibrary library;
};

// Heap growth in bytes over `rounds` runs of `action` (after a few warm-up runs).
template <typename Action>
long long HeapGrowth(int rounds, Action action) {
    for (int i = 0; i < 10; ++i) action();
    const auto before = ozdkhost::MeasureHeapUsage();
    for (int i = 0; i < rounds; ++i) action();
    const auto after = ozdkhost::MeasureHeapUsage();
    return static_cast<long long>(after.busyBytes) - static_cast<long long>(before.busyBytes);
}

}  // namespace hosttest
