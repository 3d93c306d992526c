// Benchmark of the network read of the embosser's settings: GetQuorlSettings against the
// simulator on loopback, compared with fetching the same reply with a bare socket client
// in the same run. Run by hand (scripts/run-legacy-read-bench.sh) in a prefix where the
// test driver is installed; it is not a test.
//
//   legacy_read_bench [iterations] [loopback address]
//
// Prints the median and mean time of each, their ratio with the trace log on (the
// maker's folder present) and off, and the plug-in's read with the log on against off.
// The read's steps (name look-up, waits for readability, the log's open-write-close per
// line, two printer reads) set its cost, so no bound is held against the bare fetch:
// the figures are recorded so that the ratios do not grow unnoticed. With
// OZDK_BENCH_PROFILE set in the environment it also times the steps of the read one by
// one.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <shlobj.h>
#include <windows.h>
#include <winspool.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "device/device_settings_store.h"
#include "device/legacy_transports.h"
#include "base/trace_log.h"
#include "embosser_simulator.h"
#include "base/module_state.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr wchar_t kPortName[] = L"OZDK_BENCH_NET";

std::wstring PortKeyPath() {
    return std::wstring(L"SYSTEM\\CurrentControlSet\\Control\\Print\\Monitors\\Standard TCP/IP Port\\Ports\\") +
           kPortName;
}

bool RegisterNetworkPort(const std::string& address) {
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, PortKeyPath().c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr) != ERROR_SUCCESS) {
        return false;
    }
    const std::wstring host(address.begin(), address.end());
    RegSetValueExW(key, L"HostName", 0, REG_SZ, reinterpret_cast<const BYTE*>(host.c_str()),
                   static_cast<DWORD>((host.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(key);
    return true;
}

HANDLE AddBenchPrinter(const std::wstring& name) {
    PRINTER_INFO_2W info = {};
    info.pPrinterName = const_cast<wchar_t*>(name.c_str());
    info.pPortName = const_cast<wchar_t*>(kPortName);
    info.pDriverName = const_cast<wchar_t*>(L"Test Embosser");
    info.pPrintProcessor = const_cast<wchar_t*>(L"WinPrint");
    info.pDatatype = const_cast<wchar_t*>(L"RAW");
    HANDLE added = AddPrinterW(nullptr, 2, reinterpret_cast<BYTE*>(&info));
    if (added != nullptr) ClosePrinter(added);
    HANDLE printer = nullptr;
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
    OpenPrinterW(const_cast<wchar_t*>(name.c_str()), &printer, &defaults);
    return printer;
}

// The same exchange as the plug-in's, with nothing around it.
bool BareFetch(const sockaddr_in& peer, const std::string& expected) {
    static char buffer[8192];
    SOCKET link = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (link == INVALID_SOCKET) return false;
    bool ok = connect(link, reinterpret_cast<const sockaddr*>(&peer), sizeof(peer)) == 0;
    static const char kRequest[] = "GET /PJLINFOLEGACY HTTP/1.1\r\n\r\n";
    ok = ok && send(link, kRequest, static_cast<int>(sizeof(kRequest) - 1), 0) == static_cast<int>(sizeof(kRequest) - 1);
    size_t held = 0;
    while (ok) {
        const int received = recv(link, buffer + held, static_cast<int>(sizeof(buffer) - 1 - held), 0);
        if (received <= 0) break;
        held += static_cast<size_t>(received);
    }
    closesocket(link);
    return ok && expected.compare(0, std::string::npos, buffer, held) == 0;
}

struct Summary {
    double median;
    double mean;
};

Summary Summarise(std::vector<double> samples) {
    std::sort(samples.begin(), samples.end());
    const double mean = std::accumulate(samples.begin(), samples.end(), 0.0) / static_cast<double>(samples.size());
    return {samples[samples.size() / 2], mean};
}

double Microseconds(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

// Alternates the two reads so that both see the same machine load.
bool Measure(HANDLE printer, const sockaddr_in& peer, const std::string& reply, int iterations, Summary* plugin,
             Summary* bare) {
    auto config = std::make_unique<UIConfig>();
    std::vector<double> pluginTimes;
    std::vector<double> bareTimes;
    for (int i = 0; i < iterations + 5; ++i) {
        std::memset(config.get(), 0, sizeof(UIConfig));
        config->PrinterHandle = printer;
        auto start = Clock::now();
        const bool known = GetQuorlSettings(*config);
        const double pluginTime = Microseconds(start);
        start = Clock::now();
        const bool fetched = BareFetch(peer, reply);
        const double bareTime = Microseconds(start);
        if (!known || config->LegacyParmCount != 23 || !fetched) {
            std::printf("legacy_read_bench: read %d failed (plug-in %d, count %d, bare %d)\n", i, known ? 1 : 0,
                        static_cast<int>(config->LegacyParmCount), fetched ? 1 : 0);
            return false;
        }
        if (i >= 5) {  // the first rounds warm up caches and the loader
            pluginTimes.push_back(pluginTime);
            bareTimes.push_back(bareTime);
        }
    }
    *plugin = Summarise(pluginTimes);
    *bare = Summarise(bareTimes);
    return true;
}

// Where the time of one read goes: each step of GetQuorlSettings' network path alone.
void ProfileSteps(HANDLE printer, int iterations) {
    auto time = [&](const char* what, auto step) {
        std::vector<double> samples;
        for (int i = 0; i < iterations; ++i) {
            const auto start = Clock::now();
            step();
            samples.push_back(Microseconds(start));
        }
        const Summary summary = Summarise(samples);
        std::printf("    %-36s median %8.1f us (mean %8.1f)\n", what, summary.median, summary.mean);
    };
    static BYTE info[16384];
    DWORD needed = 0;
    time("GetPrinterW level 2 (sizing + read)", [&] {
        GetPrinterW(printer, 2, nullptr, 0, &needed);
        GetPrinterW(printer, 2, info, sizeof(info), &needed);
    });
    time("GetPrinterW level 2 (one call)", [&] { GetPrinterW(printer, 2, info, sizeof(info), &needed); });
    time("one trace line", [&] { Trace(L"legacy_read_bench(): %d\n", 1); });
    time("WSAStartup + WSACleanup", [&] {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
        WSACleanup();
    });
    time("getaddrinfo(dotted host)", [&] {
        addrinfo* results = nullptr;
        getaddrinfo("127.77.9.1", nullptr, nullptr, &results);
        if (results != nullptr) freeaddrinfo(results);
    });
    uint32_t address = 0;
    time("IsNetworkPort", [&] { IsNetworkPort(kPortName, &address); });
    int length = 0;
    time("GetLegacyDataNetwork", [&] {
        length = 80;
        GetLegacyDataNetwork(kPortName, kLegacyInfoRequest, &length);
    });
}

std::wstring MakerFolder() {
    wchar_t folder[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, folder);
    return std::wstring(folder) + L"\\Kestrova";
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    ghInstance = GetModuleHandleW(nullptr);
    const int iterations = argc > 1 ? std::max(10, _wtoi(argv[1])) : 300;
    std::string address = "127.77.9.1";
    if (argc > 2) {
        address.clear();
        for (const wchar_t* c = argv[2]; *c != L'\0'; ++c) address.push_back(static_cast<char>(*c));
    }

    embosser_sim::Options options;
    options.address = address;
    embosser_sim::Simulator simulator(options);
    std::string error;
    if (!simulator.Start(&error)) {
        std::printf("legacy_read_bench: %s\n", error.c_str());
        return 2;
    }
    const std::string reply = embosser_sim::SampleReply();

    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    sockaddr_in peer = {};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(80);
    inet_pton(AF_INET, address.c_str(), &peer.sin_addr);

    const std::wstring printerName = L"Ozdk Bench " + std::to_wstring(GetCurrentProcessId());
    if (!RegisterNetworkPort(address)) {
        std::printf("legacy_read_bench: the port key could not be written\n");
        return 2;
    }
    HANDLE printer = AddBenchPrinter(printerName);
    if (printer == nullptr) {
        std::printf("legacy_read_bench: the printer could not be added (is the test driver installed?)\n");
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, PortKeyPath().c_str());
        return 2;
    }

    Summary withLog = {};
    Summary bareWithLog = {};
    Summary withoutLog = {};
    Summary bareWithoutLog = {};
    const std::wstring maker = MakerFolder();
    const std::wstring hidden = maker + L".bench-hidden";
    bool ok = Measure(printer, peer, reply, iterations, &withLog, &bareWithLog);
    const bool movedAway = MoveFileW(maker.c_str(), hidden.c_str()) != 0;
    ok = ok && Measure(printer, peer, reply, iterations, &withoutLog, &bareWithoutLog);
    if (ok && _wgetenv(L"OZDK_BENCH_PROFILE") != nullptr) {
        std::printf("  steps with the trace log off:\n");
        ProfileSteps(printer, 100);
    }
    if (movedAway) MoveFileW(hidden.c_str(), maker.c_str());
    if (ok && _wgetenv(L"OZDK_BENCH_PROFILE") != nullptr) {
        std::printf("  steps with the trace log on:\n");
        ProfileSteps(printer, 100);
    }

    DeletePrinter(printer);
    ClosePrinter(printer);
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, PortKeyPath().c_str());
    simulator.Stop();
    WSACleanup();
    if (!ok) return 1;

    const double ratioWithLog = withLog.median / bareWithLog.median;
    const double ratioWithoutLog = withoutLog.median / bareWithoutLog.median;
    std::printf("legacy_read_bench: %d reads each from %s:80, %u requests served\n", iterations, address.c_str(),
                static_cast<unsigned>(simulator.RequestCount()));
    std::printf("  trace log on : GetQuorlSettings median %8.1f us (mean %8.1f), bare fetch median %8.1f us "
                "(mean %8.1f), ratio %.2f\n",
                withLog.median, withLog.mean, bareWithLog.median, bareWithLog.mean, ratioWithLog);
    std::printf("  trace log off: GetQuorlSettings median %8.1f us (mean %8.1f), bare fetch median %8.1f us "
                "(mean %8.1f), ratio %.2f\n",
                withoutLog.median, withoutLog.mean, bareWithoutLog.median, bareWithoutLog.mean, ratioWithoutLog);
    std::printf("  trace log on against off: GetQuorlSettings ratio %.2f (medians)\n", withLog.median / withoutLog.median);
    return 0;
}
