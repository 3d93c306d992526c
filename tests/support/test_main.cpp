// Test executables link the plug-in's code and resources: the module that holds the
// string table and dialogs is the executable itself.
#include <gtest/gtest.h>
#include <windows.h>

#include "base/module_state.h"

int main(int argc, char** argv) {
    ghInstance = GetModuleHandleW(nullptr);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
