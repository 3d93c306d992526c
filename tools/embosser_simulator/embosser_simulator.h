// A stand-in for a network embosser's legacy settings service: a TCP server on a
// loopback address that answers "GET /PJLINFOLEGACY HTTP/1.1" with an "HTTP/1.1 200 OK"
// head and an "@PJL INFO LEGACY [23" block, then closes the connection. It can also
// misbehave on purpose (stay silent, trickle, flood, keep the connection open, refuse
// connections) and counts what it was asked.
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

    // Binds the address and starts serving on a thread of its own. False, with the
    // reason in *error, when the address is not loopback or cannot be bound.
    bool Start(std::string* error = nullptr);
    void Stop();

    const Options& options() const { return options_; }
    int ConnectionCount() const { return connections_.load(); }
    // Requests received whole (up to their blank line) or cut short by the peer.
    int RequestCount() const { return requests_.load(); }
    // Requests answered with the legacy settings reply.
    int AnsweredCount() const { return answered_.load(); }
    std::string LastRequest() const;

private:
    void Serve();
    void HandleConnection(simsock::Socket connection);
    bool ReadRequest(simsock::Socket connection, std::string* request);
    void Answer(simsock::Socket connection);
    void WaitForPeerToClose(simsock::Socket connection);
    bool SendAll(simsock::Socket connection, const char* data, size_t length);
    bool Sleep(unsigned milliseconds);  // false when stopped meanwhile
    void FillBacklog(uint32_t address);


    Options options_;
    std::string reply_;
    simsock::Socket listener_ = simsock::kInvalid;
    bool started_ = false;
    bool socketsStarted_ = false;
    std::vector<simsock::Socket> fillers_;  // the connections that keep an unreachable listener full
    std::thread thread_;
    std::atomic<bool> stopping_{false};
    std::atomic<int> connections_{0};
    std::atomic<int> requests_{0};
    std::atomic<int> answered_{0};
    mutable std::mutex lastRequestLock_;
    std::string lastRequest_;
};

}  // namespace embosser_sim
