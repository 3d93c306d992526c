#include "embosser_simulator.h"

#include <chrono>
#include <cstring>
#include <utility>

namespace embosser_sim {

namespace {

constexpr char kRequestLine[] = "GET /PJLINFOLEGACY HTTP/1.1";
constexpr size_t kRequestLimit = 8192;
constexpr int kRequestWaitMs = 3000;
constexpr int kPollMs = 20;
constexpr int kMaxBacklogFillers = 8;
constexpr int kFillerWaitMs = 300;  // a loopback connection the queue has room for is taken by then
constexpr int kJobIdleMs = 5000;    // a job whose sender sends nothing for this long has ended

bool ParseIpv4(const std::string& dotted, uint32_t* hostOrder) {
    in_addr address;
    if (inet_pton(AF_INET, dotted.c_str(), &address) != 1) {
        return false;
    }
    *hostOrder = ntohl(address.s_addr);
    return true;
}

}  // namespace

std::string SampleLegacyBlock() {
    return "@PJL INFO LEGACY [23 ENTRIES]\r\n"
           "TOPMARGIN=10\r\n"
           "LEFTMARGIN=5\r\n"
           "RIGHTMARGIN=5\r\n"
           "BRAILLEDOTS=6\r\n"
           "CHARSWIDTH=40\r\n"
           "LINESLENGTH=25\r\n"
           "EXTRALINESPACE=0\r\n"
           "BRAILLETABLE=\"EN_US\"\r\n"
           "AUTOCR=ON\r\n"
           "GRAPHICS=OFF\r\n"
           "SPACING=USLIBCONGRESS\r\n"
           "MEDIATYPE=PLAIN\r\n"
           "PAPERLENGTH=7920\r\n"
           "PAPERWIDTH=6120\r\n"
           "BRAILLEFORCE=NORMAL\r\n"
           "QUALITY=STANDARD\r\n"
           "DUPLEXMODE=SIMPLEX\r\n"
           "OUTPUTFACE=1\r\n"
           "FWPRIMARY=1.2.3\r\n"
           "SERIALNUMBER=\"SIM-000001\"\r\n"
           "MODEL=\"Quorl Simulator\"\r\n";
}

std::string HttpReply(const std::string& body) {
    return "HTTP/1.1 200 OK\r\n"
           "Content-Type: text/plain\r\n"
           "Content-Length: " +
           std::to_string(body.size()) +
           "\r\n"
           "Connection: close\r\n"
           "\r\n" +
           body;
}

std::string SampleReply() { return HttpReply(SampleLegacyBlock()); }

std::string PaddedReply(const std::string& reply, size_t bytes) {
    std::string padded = reply;
    while (padded.size() < bytes) {
        padded += "# padding #############################################################\r\n";
    }
    padded.resize(bytes);
    return padded;
}

bool IsLoopbackAddress(const std::string& dotted) {
    uint32_t address = 0;
    return ParseIpv4(dotted, &address) && (address >> 24) == 127;
}

bool ParseBehaviour(const std::string& name, Behaviour* behaviour) {
    static const std::pair<const char*, Behaviour> kNames[] = {
        {"answer", Behaviour::Answer}, {"silent", Behaviour::Silent},  {"trickle", Behaviour::Trickle},
        {"flood", Behaviour::Flood},   {"hold", Behaviour::HoldOpen}, {"refuse", Behaviour::Refuse},
        {"unreachable", Behaviour::Unreachable},
    };
    for (const auto& each : kNames) {
        if (name == each.first) {
            *behaviour = each.second;
            return true;
        }
    }
    return false;
}

const char* BehaviourName(Behaviour behaviour) {
    switch (behaviour) {
        case Behaviour::Answer: return "answer";
        case Behaviour::Silent: return "silent";
        case Behaviour::Trickle: return "trickle";
        case Behaviour::Flood: return "flood";
        case Behaviour::HoldOpen: return "hold";
        case Behaviour::Refuse: return "refuse";
        case Behaviour::Unreachable: return "unreachable";
    }
    return "?";
}

Simulator::Simulator(Options options) : options_(std::move(options)) {
    startingReply_ = options_.reply.empty() ? SampleReply() : options_.reply;
}

Simulator::~Simulator() { Stop(); }

bool Simulator::Listen(uint32_t address, uint16_t port, int backlog, simsock::Socket* listener,
                       std::string* error) {
    *listener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (*listener == simsock::kInvalid) {
        *error = "socket() failed, error " + std::to_string(simsock::LastError());
        return false;
    }
    simsock::SetReuseAddress(*listener);
    sockaddr_in local = {};
    local.sin_family = AF_INET;
    local.sin_port = htons(port);
    local.sin_addr.s_addr = htonl(address);
    if (bind(*listener, reinterpret_cast<const sockaddr*>(&local), sizeof(local)) != 0) {
        *error = "bind(" + options_.address + ":" + std::to_string(port) + ") failed, error " +
                 std::to_string(simsock::LastError());
        return false;
    }
    // A refusing device keeps its address but never listens: connects are turned away.
    if (backlog >= 0 && listen(*listener, backlog) != 0) {
        *error = "listen() failed, error " + std::to_string(simsock::LastError());
        return false;
    }
    return true;
}

bool Simulator::Start(std::string* error) {
    std::string reason;
    auto fail = [&](const std::string& why) {
        if (error != nullptr) *error = why;
        for (simsock::Socket* listener : {&listener_, &rawListener_}) {
            if (*listener != simsock::kInvalid) simsock::Close(*listener);
            *listener = simsock::kInvalid;
        }
        return false;
    };
    if (started_) return fail("already started");
    uint32_t address = 0;
    if (!ParseIpv4(options_.address, &address)) return fail("not an IPv4 address: " + options_.address);
    if ((address >> 24) != 127) return fail("refusing to bind outside 127.0.0.0/8: " + options_.address);
    if (!socketsStarted_) {
        if (!simsock::Startup()) return fail("sockets could not be started");
        socketsStarted_ = true;
    }

    // An unreachable device listens with the smallest queue, which FillBacklog keeps full.
    const bool unreachable = options_.behaviour == Behaviour::Unreachable;
    const bool refusing = options_.behaviour == Behaviour::Refuse;
    if (!Listen(address, options_.port, refusing ? -1 : unreachable ? 0 : 8, &listener_, &reason)) return fail(reason);
    const bool printing = options_.rawPort != 0 && !unreachable && !refusing;
    if (printing && !Listen(address, options_.rawPort, 8, &rawListener_, &reason)) return fail(reason);
    {
        // A restart is a power cycle: the device comes back with its starting settings.
        std::lock_guard<std::mutex> lock(stateLock_);
        settings_ = StoredSettings(startingReply_);
    }
    stopping_ = false;
    started_ = true;
    if (unreachable) {
        FillBacklog(address);
    } else if (!refusing) {
        thread_ = std::thread([this] { Serve(); });
    }
    if (printing) rawThread_ = std::thread([this] { ServeJobs(); });
    return true;
}

void Simulator::Stop() {
    stopping_ = true;
    if (thread_.joinable()) thread_.join();
    if (rawThread_.joinable()) rawThread_.join();
    for (simsock::Socket filler : fillers_) simsock::Close(filler);
    fillers_.clear();
    for (simsock::Socket* listener : {&listener_, &rawListener_}) {
        if (*listener != simsock::kInvalid) simsock::Close(*listener);
        *listener = simsock::kInvalid;
    }
    started_ = false;
    if (socketsStarted_) {
        simsock::Cleanup();
        socketsStarted_ = false;
    }
}

// Connects to the listener, which never accepts, until a connection is left waiting: the
// queue is full then, and the system drops further connection requests unanswered, the
// way packets to a powered-off embosser behind a router are lost.
void Simulator::FillBacklog(uint32_t address) {
    sockaddr_in peer = {};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(options_.port);
    peer.sin_addr.s_addr = htonl(address);
    for (int i = 0; i < kMaxBacklogFillers; ++i) {
        simsock::Socket filler = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        if (filler == simsock::kInvalid) return;
        fillers_.push_back(filler);
        simsock::SetNonBlocking(filler);
        connect(filler, reinterpret_cast<const sockaddr*>(&peer), sizeof(peer));
        if (simsock::WaitWritable(filler, kFillerWaitMs) != 1) return;
    }
}

std::string Simulator::LastRequest() const {
    std::lock_guard<std::mutex> lock(stateLock_);
    return lastRequest_;
}

std::vector<std::string> Simulator::Events() const {
    std::lock_guard<std::mutex> lock(stateLock_);
    return events_;
}

std::string Simulator::CurrentReply() const {
    std::lock_guard<std::mutex> lock(stateLock_);
    return settings_.Reply();
}

void Simulator::ServeJobs() {
    while (!stopping_) {
        if (simsock::WaitReadable(rawListener_, kPollMs) != 1) continue;
        simsock::Socket connection = accept(rawListener_, nullptr, nullptr);
        if (connection == simsock::kInvalid) continue;
        TakeJob(connection);
        simsock::Close(connection);
    }
}

// Reads one job until the sender closes its side (or goes quiet, or the job reaches
// the bound), acts on it, and closes: the sender knows then that the job was taken.
void Simulator::TakeJob(simsock::Socket connection) {
    std::string job;
    size_t cutAt = 0;
    char chunk[4096];
    auto lastData = std::chrono::steady_clock::now();
    while (!stopping_) {
        if (std::chrono::steady_clock::now() - lastData >= std::chrono::milliseconds(kJobIdleMs)) break;
        const int ready = simsock::WaitReadable(connection, kPollMs);
        if (ready < 0) break;
        if (ready == 0) continue;
        const int received = simsock::Receive(connection, chunk, sizeof(chunk));
        if (received <= 0) break;
        lastData = std::chrono::steady_clock::now();
        job.append(chunk, static_cast<size_t>(received));
        if (job.size() >= options_.jobLimit) {
            cutAt = options_.jobLimit;
            job.resize(cutAt);
            break;
        }
    }
    const int number = ++jobs_;
    std::lock_guard<std::mutex> lock(stateLock_);
    events_.push_back("job " + std::to_string(number) + ": " + std::to_string(job.size()) + " bytes" +
                      (cutAt != 0 ? ", cut off at the limit of " + std::to_string(cutAt) + " bytes" : ""));
    for (const std::string& line : settings_.TakeJob(job, cutAt)) events_.push_back("  " + line);
}

void Simulator::Serve() {
    while (!stopping_) {
        if (simsock::WaitReadable(listener_, kPollMs) != 1) continue;
        simsock::Socket connection = accept(listener_, nullptr, nullptr);
        if (connection == simsock::kInvalid) continue;
        ++connections_;
        HandleConnection(connection);
        simsock::Close(connection);
    }
}

bool Simulator::Sleep(unsigned milliseconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!stopping_) {
        const auto now = std::chrono::steady_clock::now();
        if (now >= end) return true;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - now).count();
        std::this_thread::sleep_for(std::chrono::milliseconds(left < kPollMs ? left : kPollMs));
    }
    return false;
}

bool Simulator::ReadRequest(simsock::Socket connection, std::string* request) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kRequestWaitMs);
    char chunk[1024];
    while (!stopping_ && request->size() < kRequestLimit && request->find("\r\n\r\n") == std::string::npos) {
        if (std::chrono::steady_clock::now() >= deadline) break;
        const int ready = simsock::WaitReadable(connection, kPollMs);
        if (ready < 0) break;
        if (ready == 0) continue;
        const int received = simsock::Receive(connection, chunk, sizeof(chunk));
        if (received <= 0) break;
        request->append(chunk, static_cast<size_t>(received));
    }
    return !request->empty();
}

bool Simulator::SendAll(simsock::Socket connection, const char* data, size_t length) {
    while (length > 0 && !stopping_) {
        const int sent = simsock::Send(connection, data, length);
        if (sent <= 0) return false;
        data += sent;
        length -= static_cast<size_t>(sent);
    }
    return length == 0;
}

void Simulator::WaitForPeerToClose(simsock::Socket connection) {
    char sink[256];
    while (!stopping_) {
        const int ready = simsock::WaitReadable(connection, kPollMs);
        if (ready < 0) return;
        if (ready == 1 && simsock::Receive(connection, sink, sizeof(sink)) <= 0) return;
    }
}

void Simulator::Answer(simsock::Socket connection) {
    std::string reply = CurrentReply();
    if (options_.behaviour == Behaviour::Flood) reply = PaddedReply(reply, options_.floodBytes);
    switch (options_.behaviour) {
        case Behaviour::Silent:
            WaitForPeerToClose(connection);
            return;
        case Behaviour::Trickle: {
            const size_t chunk = options_.trickleChunk == 0 ? 1 : options_.trickleChunk;
            for (size_t sent = 0; sent < reply.size(); sent += chunk) {
                if (sent > 0 && !Sleep(options_.trickleDelayMs)) return;
                const size_t length = reply.size() - sent < chunk ? reply.size() - sent : chunk;
                if (!SendAll(connection, reply.data() + sent, length)) return;
            }
            break;
        }
        case Behaviour::HoldOpen:
            SendAll(connection, reply.data(), reply.size());
            ++answered_;
            WaitForPeerToClose(connection);
            return;
        case Behaviour::Answer:
        case Behaviour::Flood:
        case Behaviour::Refuse:
        case Behaviour::Unreachable:
            if (!SendAll(connection, reply.data(), reply.size())) return;
            break;
    }
    ++answered_;
    shutdown(connection, simsock::kShutdownSend);
}

void Simulator::HandleConnection(simsock::Socket connection) {
    std::string request;
    if (!ReadRequest(connection, &request)) return;
    {
        std::lock_guard<std::mutex> lock(stateLock_);
        lastRequest_ = request;  // before the count, which tells that it is there
        const int number = ++requests_;
        events_.push_back("request " + std::to_string(number) + ": " + std::to_string(request.size()) + " bytes, \"" +
                          request.substr(0, request.find("\r\n")) + "\"");
    }
    if (request.compare(0, sizeof(kRequestLine) - 1, kRequestLine) != 0) {
        static const char kNotFound[] = "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
        SendAll(connection, kNotFound, sizeof(kNotFound) - 1);
        shutdown(connection, simsock::kShutdownSend);
        return;
    }
    Answer(connection);
}

}  // namespace embosser_sim
