// The few socket calls the simulator needs, over Winsock on Windows and over POSIX
// sockets elsewhere, so that one server core builds in both worlds.
#pragma once

#if defined(_WIN32)
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
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
inline void SetNonBlocking(Socket s) {
    u_long on = 1;
    ioctlsocket(s, FIONBIO, &on);
}
#else
using Socket = int;
inline constexpr Socket kInvalid = -1;
inline constexpr int kSendFlags = MSG_NOSIGNAL;  // a peer that went away must not raise SIGPIPE
inline constexpr int kShutdownSend = SHUT_WR;

inline bool Startup() { return true; }
inline void Cleanup() {}
inline void Close(Socket s) { ::close(s); }
inline int LastError() { return errno; }
inline void SetNonBlocking(Socket s) { fcntl(s, F_SETFL, fcntl(s, F_GETFL, 0) | O_NONBLOCK); }
#endif

// Waits up to `milliseconds` for `s` to become readable (or, with `writable`, for a
// connection under way on it to be made): 1 ready, 0 not yet, -1 error.
inline int Wait(Socket s, int milliseconds, bool writable) {
    fd_set ready;
    FD_ZERO(&ready);
    FD_SET(s, &ready);
    timeval wait;
    wait.tv_sec = milliseconds / 1000;
    wait.tv_usec = (milliseconds % 1000) * 1000;
    const int count = select(static_cast<int>(s) + 1, writable ? nullptr : &ready, writable ? &ready : nullptr,
                             nullptr, &wait);
    return count < 0 ? -1 : count;
}
inline int WaitReadable(Socket s, int milliseconds) { return Wait(s, milliseconds, false); }
inline int WaitWritable(Socket s, int milliseconds) { return Wait(s, milliseconds, true); }

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
