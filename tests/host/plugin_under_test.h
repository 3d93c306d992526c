// The plug-in DLL the end-to-end tests load through the host: the one just built (in the
// build folder CTest names), else the one installed with the test driver.
#pragma once

#include <gtest/gtest.h>

#include "support/host_fixtures.h"
#include "tools/host/host_library.h"

namespace hosttest {

inline std::wstring PluginUnderTest() {
    const std::wstring built = testenv::BuildFilePath(L"ozdkrnui.dll");
    return GetFileAttributesW(built.c_str()) != INVALID_FILE_ATTRIBUTES ? built : ozdkhost::InstalledPluginPath();
}

}  // namespace hosttest
