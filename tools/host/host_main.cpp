// ozdk_host.exe: shows a printer's document and printer property sheets with the pages
// of ozdkrnui.dll, the way the printer driver's user-interface host does.
//
//   ozdk_host.exe --printer NAME [--dll PATH] [--sheet document|printer|both] [--apply]
//                 [--show-ms N] [--screenshot UNIX-PATH.png] [--no-call-log] [--interactive]
//                 [--show-device-settings] [--no-device-settings] [--set-device-item ID=VALUE]...
//                 [--high-contrast black|white]
//   ozdk_host.exe --add-printer NAME --driver DRIVER --port PORT [--network-host HOST]
//
// Without --interactive each sheet is opened without waiting, kept open for --show-ms
// milliseconds (1500 by default), optionally photographed and applied, and closed; what
// the host did and what the plug-in answered is printed line by line. With
// --interactive the sheets are shown one after the other until the person closes them.
// --screenshot X.png photographs the document sheet once per page of the plug-in
// (X-layout.png, X-paper-media.png, ...: the tab titles; X.png when it has none) and the
// printer sheet (X-printer.png; X.png when it is the only sheet shown).
//
// The printer sheet carries the host's "Device Settings" page with the option items of
// the plug-in (unless --no-device-settings); --show-device-settings opens the sheet with
// that page in front, which makes the plug-in read the device's settings at once.
// --set-device-item changes an item of that page once the sheet is open, as a person
// does: ID is the item's UserItemID, VALUE the text of the list entry to pick, or the
// text or number to type (with --apply, the change is sent to the embosser).
// --high-contrast shows the sheets in Windows' "High Contrast Black" or "White" theme.
// --network-host registers the new printer's port as a Standard TCP/IP port of HOST.
#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <string>

#include "tools/host/host_library.h"

namespace {

int Usage() {
    std::fputs("usage: ozdk_host --printer NAME [--dll PATH] [--sheet document|printer|both] [--apply]\n"
               "                 [--show-ms N] [--screenshot UNIX-PATH.png] [--no-call-log] [--interactive]\n"
               "                 [--show-device-settings] [--no-device-settings] [--set-device-item ID=VALUE]...\n"
               "                 [--high-contrast black|white]\n"
               "       ozdk_host --add-printer NAME --driver DRIVER --port PORT [--network-host HOST]\n",
               stderr);
    return 2;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    ozdkhost::HostOptions options;
    std::wstring addPrinter, driver, port, networkHost;
    for (int i = 1; i < argc; ++i) {
        const std::wstring arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == L"--printer" && hasValue) {
            options.printerName = argv[++i];
        } else if (arg == L"--dll" && hasValue) {
            options.dllPath = argv[++i];
        } else if (arg == L"--sheet" && hasValue) {
            const std::wstring which = argv[++i];
            options.documentSheet = which == L"document" || which == L"both";
            options.printerSheet = which == L"printer" || which == L"both";
            if (!options.documentSheet && !options.printerSheet) {
                return Usage();
            }
        } else if (arg == L"--apply") {
            options.apply = true;
        } else if (arg == L"--show-ms" && hasValue) {
            options.showMilliseconds = static_cast<DWORD>(std::wcstoul(argv[++i], nullptr, 10));
        } else if (arg == L"--screenshot" && hasValue) {
            options.screenshotPath = argv[++i];
        } else if (arg == L"--no-call-log") {
            options.callLogPage = false;
        } else if (arg == L"--add-printer" && hasValue) {
            addPrinter = argv[++i];
        } else if (arg == L"--driver" && hasValue) {
            driver = argv[++i];
        } else if (arg == L"--port" && hasValue) {
            port = argv[++i];
        } else if (arg == L"--interactive") {
            options.interactive = true;
        } else if (arg == L"--show-device-settings") {
            options.showDeviceSettings = true;
        } else if (arg == L"--no-device-settings") {
            options.deviceSettingsPage = false;
        } else if (arg == L"--set-device-item" && hasValue) {
            const std::wstring change = argv[++i];
            const size_t equals = change.find(L'=');
            const unsigned long id = std::wcstoul(change.c_str(), nullptr, 10);
            if (equals == std::wstring::npos || id == 0 || id > 255) {
                return Usage();
            }
            options.deviceItemChanges.emplace_back(static_cast<BYTE>(id), change.substr(equals + 1));
        } else if (arg == L"--high-contrast" && hasValue) {
            const std::wstring theme = argv[++i];
            if (theme != L"black" && theme != L"white") {
                return Usage();
            }
            options.highContrast = theme;
        } else if (arg == L"--network-host" && hasValue) {
            networkHost = argv[++i];
        } else {
            return Usage();
        }
    }
    ozdkhost::HostLog log;
    log.EchoToStandardOutput(true);
    if (!addPrinter.empty()) {
        if (driver.empty() || port.empty()) {
            return Usage();
        }
        if (!ozdkhost::AddPrinterOfDriver(addPrinter, driver, port, &log)) {
            return 1;
        }
        return networkHost.empty() || ozdkhost::RegisterStandardTcpIpPort(port, networkHost, &log) ? 0 : 1;
    }
    if (options.printerName.empty()) {
        return Usage();
    }
    const int status = ozdkhost::RunHost(options, log);
    std::printf("host: done, exit code %d\n", status);
    return status;
}
