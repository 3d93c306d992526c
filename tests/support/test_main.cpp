// Test executables link the plug-in's code and resources: the module that holds the
// string table and dialogs is the executable itself.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>

#include "base/module_state.h"

namespace {

// A crash on any thread fails the program at once, whatever the system's crash handling
// would make of it.
LONG WINAPI FailOnCrash(EXCEPTION_POINTERS* info) {
    std::fprintf(stderr, "unhandled exception 0x%08lX\n", info->ExceptionRecord->ExceptionCode);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 3);
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

int main(int argc, char** argv) {
    SetUnhandledExceptionFilter(FailOnCrash);
    ghInstance = GetModuleHandleW(nullptr);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
