// raw_job_sender: sends one print job from standard input to a raw print port, the way
// a Standard TCP/IP port sends it: one connection per job, the bytes as they stand,
// then the sending side is closed and the sender waits until the device has taken the
// job and closed the connection.
//
//   raw_job_sender ADDRESS:PORT [--copy FILE]
//
// --copy appends the job's bytes to FILE as well (also when the device cannot be
// reached), to read what was sent. Under Wine a printer whose port is the pipe
// "|raw_job_sender 127.0.0.2:9100 --copy /path/jobs.prn" prints this way; the spooler
// waits for the program, so a job has reached the device when EndDocPrinter returns.
// Only loopback addresses are reached. Exit code 0 when the device took the job.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "socket_shim.h"

namespace {

constexpr int kTakenWaitMs = 30000;  // the device reads and acts on the job meanwhile

int Usage() {
    std::fputs("usage: raw_job_sender ADDRESS:PORT [--copy FILE]\n", stderr);
    return 2;
}

// Loopback only: a refused connection fails at once there.
simsock::Socket Connect(const std::string& address, unsigned port) {
    sockaddr_in peer = {};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(static_cast<uint16_t>(port));
    if (inet_pton(AF_INET, address.c_str(), &peer.sin_addr) != 1 || (ntohl(peer.sin_addr.s_addr) >> 24) != 127) {
        return simsock::kInvalid;
    }
    simsock::Socket s = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (s == simsock::kInvalid) return s;
    if (connect(s, reinterpret_cast<const sockaddr*>(&peer), sizeof(peer)) != 0) {
        simsock::Close(s);
        return simsock::kInvalid;
    }
    return s;
}

bool SendAll(simsock::Socket s, const char* data, size_t length) {
    while (length > 0) {
        const int sent = simsock::Send(s, data, length);
        if (sent <= 0) return false;
        data += sent;
        length -= static_cast<size_t>(sent);
    }
    return true;
}

// Waits for the device to close the connection: the job has been taken then.
bool WaitUntilTaken(simsock::Socket s) {
    char sink[256];
    for (int waited = 0; waited < kTakenWaitMs; waited += 100) {
        const int ready = simsock::WaitReadable(s, 100);
        if (ready < 0) return false;
        if (ready == 1) {
            const int received = simsock::Receive(s, sink, sizeof(sink));
            if (received == 0) return true;
            if (received < 0) return false;
        }
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 && argc != 4) return Usage();
    const std::string target = argv[1];
    const size_t colon = target.rfind(':');
    if (colon == std::string::npos) return Usage();
    const std::string address = target.substr(0, colon);
    const unsigned port = static_cast<unsigned>(std::strtoul(target.c_str() + colon + 1, nullptr, 10));
    if (port == 0 || port > 65535) return Usage();
    FILE* copy = nullptr;
    if (argc == 4) {
        if (std::string(argv[2]) != "--copy") return Usage();
        copy = std::fopen(argv[3], "ab");
        if (copy == nullptr) std::fprintf(stderr, "raw_job_sender: cannot append to %s\n", argv[3]);
    }

    simsock::Socket device = Connect(address, port);
    if (device == simsock::kInvalid) {
        std::fprintf(stderr, "raw_job_sender: %s (loopback only) does not take the job\n", target.c_str());
    }
    bool sent = device != simsock::kInvalid;
    char chunk[4096];
    size_t length = 0;
    while ((length = std::fread(chunk, 1, sizeof(chunk), stdin)) > 0) {
        if (copy != nullptr) std::fwrite(chunk, 1, length, copy);
        if (sent) sent = SendAll(device, chunk, length);
    }
    if (copy != nullptr) std::fclose(copy);
    if (device == simsock::kInvalid) return 1;
    shutdown(device, simsock::kShutdownSend);
    const bool taken = sent && WaitUntilTaken(device);
    simsock::Close(device);
    if (!taken) std::fprintf(stderr, "raw_job_sender: %s did not take the whole job\n", target.c_str());
    return taken ? 0 : 1;
}
