// ozdk_dialog_lint FILE.rc...: lists what the dialog templates of the scripts break and
// the access keys their visible controls share. Exit code 1 when something is broken.
#include <cstdio>

#include "tools/dialog_lint/dialog_lint.h"

int main(int argc, char** argv) {
    int status = 0;
    for (int i = 1; i < argc; ++i) {
        const ozdklint::Script script = ozdklint::ReadScript(argv[i]);
        std::vector<std::string> broken = script.errors;
        for (const ozdklint::Dialog& dialog : script.dialogs) {
            for (const std::string& line : ozdklint::CheckDialog(dialog)) {
                broken.push_back(line);
            }
            for (const std::string& line : ozdklint::MnemonicCollisions(dialog)) {
                std::printf("%s: shared access key: %s\n", argv[i], line.c_str());
            }
        }
        for (const std::string& line : broken) {
            std::printf("%s: %s\n", argv[i], line.c_str());
        }
        status = broken.empty() ? status : 1;
    }
    return status;
}
