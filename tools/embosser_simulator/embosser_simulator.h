// A stand-in for a network embosser on a loopback address. Its settings service (port
// 80) answers "GET /PJLINFOLEGACY HTTP/1.1" with an "HTTP/1.1 200 OK" head and an
// "@PJL INFO LEGACY [23" block, then closes the connection; it can also misbehave on
// purpose (stay silent, trickle, flood, keep the connection open, refuse connections)
// and counts what it was asked. Its raw print port (9100) takes jobs the way a Standard
// TCP/IP port sends them: a connection carries one job, which ends when the sender
// closes its side; the PJL in it changes the settings the embosser keeps
// (stored_settings.h), and later queries report them. Each job and each change is
// logged (Events()).
//
// The same core runs as a native Linux program (main.cpp) and as a thread inside the
// Windows test programs. It binds loopback addresses (127.0.0.0/8) only.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "socket_shim.h"
#include "stored_settings.h"

namespace embosser_sim {

enum class Behaviour {
    Answer,    // the reply, then close
    Silent,    // read the request, answer nothing, keep the connection until the peer closes
    Trickle,   // the reply in chunks of `trickleChunk` bytes, `trickleDelayMs` apart, then close
    Flood,     // the reply padded to `floodBytes` bytes, then close
    HoldOpen,  // the reply, then keep the connection until the peer closes
    Refuse,    // the address is taken but nothing listens: connections are refused
    Unreachable,  // connections are neither taken nor refused: they go unanswered
};

struct Options {
    std::string address = "127.0.0.2";
    uint16_t port = 80;
    Behaviour behaviour = Behaviour::Answer;
    std::string reply;  // sent as it stands; empty: SampleReply()
    size_t trickleChunk = 64;
    unsigned trickleDelayMs = 100;
    size_t floodBytes = 5000;
    uint16_t rawPort = 9100;  // the raw print port; 0: none
    size_t jobLimit = 65536;  // a longer job is cut off here
};

// The block a typical embosser sends (CR LF line ends).
std::string SampleLegacyBlock();
// An "HTTP/1.1 200 OK" head with a Content-Length, followed by `body`.
std::string HttpReply(const std::string& body);
// HttpReply(SampleLegacyBlock()).
std::string SampleReply();
// `reply` followed by filler lines, cut to exactly `bytes`: what a flooding device sends.
std::string PaddedReply(const std::string& reply, size_t bytes);

// True when `dotted` is an IPv4 address in 127.0.0.0/8.
bool IsLoopbackAddress(const std::string& dotted);

// Behaviour names as the command line spells them: answer, silent, trickle, flood, hold,
// refuse, unreachable.
bool ParseBehaviour(const std::string& name, Behaviour* behaviour);
const char* BehaviourName(Behaviour behaviour);

class Simulator {
public:
    explicit Simulator(Options options);
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    // Binds the address and starts serving on threads of its own, with the starting
    // settings (the reply of the options, or the sample). False, with the reason in
    // *error, when the address is not loopback or cannot be bound.
    bool Start(std::string* error = nullptr);
    void Stop();

    const Options& options() const { return options_; }
    int ConnectionCount() const { return connections_.load(); }
    // Requests received whole (up to their blank line) or cut short by the peer.
    int RequestCount() const { return requests_.load(); }
    // Requests answered with the legacy settings reply.
    int AnsweredCount() const { return answered_.load(); }
    std::string LastRequest() const;
    // Jobs received on the raw print port.
    int JobCount() const { return jobs_.load(); }
    // What the embosser did, one line per event: each request, each job, each change.
    std::vector<std::string> Events() const;
    // The reply the settings query gives now.
    std::string CurrentReply() const;

private:
    void Serve();
    void HandleConnection(simsock::Socket connection);
    bool ReadRequest(simsock::Socket connection, std::string* request);
    void Answer(simsock::Socket connection);
    void WaitForPeerToClose(simsock::Socket connection);
    bool SendAll(simsock::Socket connection, const char* data, size_t length);
    bool Sleep(unsigned milliseconds);  // false when stopped meanwhile
    void FillBacklog(uint32_t address);
    bool Listen(uint32_t address, uint16_t port, int backlog, simsock::Socket* listener, std::string* error);
    void ServeJobs();
    void TakeJob(simsock::Socket connection);

    Options options_;
    std::string startingReply_;
    simsock::Socket listener_ = simsock::kInvalid;
    simsock::Socket rawListener_ = simsock::kInvalid;
    bool started_ = false;
    bool socketsStarted_ = false;
    std::vector<simsock::Socket> fillers_;  // the connections that keep an unreachable listener full
    std::thread thread_;
    std::thread rawThread_;
    std::atomic<bool> stopping_{false};
    std::atomic<int> connections_{0};
    std::atomic<int> requests_{0};
    std::atomic<int> answered_{0};
    std::atomic<int> jobs_{0};
    mutable std::mutex stateLock_;  // the settings, the last request and the events
    StoredSettings settings_{std::string()};
    std::string lastRequest_;
    std::vector<std::string> events_;
};

}  // namespace embosser_sim
