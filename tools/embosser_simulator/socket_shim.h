// The few socket calls the simulator needs, over Winsock on Windows and over POSIX
// sockets elsewhere, so that one server core builds in both worlds.
#pragma once

#if defined(_WIN32)
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace simsock {

#if defined(_WIN32)
using Socket = SOCKET;
inline constexpr Socket kInvalid = INVALID_SOCKET;
inline constexpr int kSendFlags = 0;
inline constexpr int kShutdownSend = SD_SEND;

inline bool Startup() {
    WSADATA data;
    return WSAStartup(MAKEWORD(2, 2), &data) == 0;
}
inline void Cleanup() { WSACleanup(); }
inline void Close(Socket s) { closesocket(s); }
inline int LastError() { return WSAGetLastError(); }
#else
using Socket = int;
inline constexpr Socket kInvalid = -1;
inline constexpr int kSendFlags = MSG_NOSIGNAL;  // a peer that went away must not raise SIGPIPE
inline constexpr int kShutdownSend = SHUT_WR;

inline bool Startup() { return true; }
inline void Cleanup() {}
inline void Close(Socket s) { ::close(s); }
inline int LastError() { return errno; }
#endif

// Waits up to `milliseconds` for `s` to become readable: 1 readable, 0 not, -1 error.
inline int WaitReadable(Socket s, int milliseconds) {
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(s, &readable);
    timeval wait;
    wait.tv_sec = milliseconds / 1000;
    wait.tv_usec = (milliseconds % 1000) * 1000;
    const int ready = select(static_cast<int>(s) + 1, &readable, nullptr, nullptr, &wait);
    return ready < 0 ? -1 : ready;
}

inline int Send(Socket s, const char* data, size_t length) {
    return static_cast<int>(::send(s, data, static_cast<int>(length), kSendFlags));
}

inline int Receive(Socket s, char* data, size_t length) {
    return static_cast<int>(::recv(s, data, static_cast<int>(length), 0));
}

inline void SetReuseAddress(Socket s) {
    int on = 1;
    setsockopt(s, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&on), sizeof(on));
}

}  // namespace simsock
