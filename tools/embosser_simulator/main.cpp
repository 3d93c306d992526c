// embosser_simulator: a network embosser on a loopback address until interrupted: the
// legacy settings query on --port, raw print jobs on --raw-port (0: none).
//
//   embosser_simulator [--address 127.0.0.2] [--port 80] [--raw-port 9100] [--reply FILE]
//                      [--mode answer|silent|trickle|flood|hold|refuse|unreachable]
//                      [--chunk BYTES] [--delay-ms MS] [--flood-bytes BYTES]
//
// --reply: the embosser's starting settings. The file's bytes are sent as they stand
// when they begin with "HTTP/"; otherwise they are the body after an "HTTP/1.1 200 OK"
// head. Without it a built-in sample is the start. The settings that jobs commit are
// kept until the program ends. Each request, job and change is printed on standard
// output.
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "embosser_simulator.h"

namespace {

std::atomic<bool> gInterrupted{false};

void OnSignal(int) { gInterrupted = true; }

int Usage() {
    std::fprintf(stderr,
                 "usage: embosser_simulator [--address 127.0.0.2] [--port 80] [--raw-port 9100] [--reply FILE]\n"
                 "                          [--mode answer|silent|trickle|flood|hold|refuse|unreachable]\n"
                 "                          [--chunk BYTES] [--delay-ms MS] [--flood-bytes BYTES]\n");
    return 2;
}

bool ReadFile(const std::string& path, std::string* text) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return false;
    std::ostringstream content;
    content << file.rdbuf();
    *text = content.str();
    return true;
}

bool ParseNumber(const char* text, unsigned long max, unsigned long* value) {
    char* end = nullptr;
    const unsigned long number = std::strtoul(text, &end, 10);
    if (end == text || *end != '\0' || number > max) return false;
    *value = number;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    embosser_sim::Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (i + 1 >= argc) return Usage();
        const char* value = argv[++i];
        unsigned long number = 0;
        if (option == "--address") {
            options.address = value;
        } else if (option == "--port" && ParseNumber(value, 65535, &number) && number > 0) {
            options.port = static_cast<uint16_t>(number);
        } else if (option == "--raw-port" && ParseNumber(value, 65535, &number)) {
            options.rawPort = static_cast<uint16_t>(number);
        } else if (option == "--reply") {
            std::string text;
            if (!ReadFile(value, &text)) {
                std::fprintf(stderr, "embosser_simulator: cannot read %s\n", value);
                return 1;
            }
            options.reply = text.compare(0, 5, "HTTP/") == 0 ? text : embosser_sim::HttpReply(text);
        } else if (option == "--mode") {
            if (!embosser_sim::ParseBehaviour(value, &options.behaviour)) return Usage();
        } else if (option == "--chunk" && ParseNumber(value, 1u << 20, &number) && number > 0) {
            options.trickleChunk = number;
        } else if (option == "--delay-ms" && ParseNumber(value, 600000, &number)) {
            options.trickleDelayMs = static_cast<unsigned>(number);
        } else if (option == "--flood-bytes" && ParseNumber(value, 1u << 24, &number)) {
            options.floodBytes = number;
        } else {
            return Usage();
        }
    }

    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);

    embosser_sim::Simulator simulator(options);
    std::string error;
    if (!simulator.Start(&error)) {
        std::fprintf(stderr, "embosser_simulator: %s\n", error.c_str());
        return 1;
    }
    std::printf("embosser_simulator: %s on %s:%u, raw print port %u\n", embosser_sim::BehaviourName(options.behaviour),
                options.address.c_str(), static_cast<unsigned>(options.port), static_cast<unsigned>(options.rawPort));
    std::fflush(stdout);

    size_t reported = 0;
    auto report = [&] {
        const std::vector<std::string> events = simulator.Events();
        for (; reported < events.size(); ++reported) std::printf("%s\n", events[reported].c_str());
        std::fflush(stdout);
    };
    while (!gInterrupted) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        report();
    }
    simulator.Stop();
    report();
    std::printf("embosser_simulator: %d connections, %d requests, %d answered, %d jobs\n", simulator.ConnectionCount(),
                simulator.RequestCount(), simulator.AnsweredCount(), simulator.JobCount());
    return 0;
}
