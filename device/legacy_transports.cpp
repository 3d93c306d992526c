// Winsock first: <windows.h> must not bring in the old socket declarations.
#include <winsock2.h>
#include <ws2tcpip.h>

#include "device/legacy_transports.h"

#include <cstring>
#include <cwchar>

#include "config/registry.h"
#include "base/spooler.h"
#include "device/protocol/decimal_text.h"
#include "device/protocol/legacy_reply_parser.h"
#include "base/cancel_signal.h"
#include "base/heap_memory.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "base/unique_handle.h"

namespace {

constexpr wchar_t kLegacyDataAvailable[] = L"LegacyDataAvailable";
constexpr wchar_t kStandardTcpIpPorts[] =
    L"SYSTEM\\CurrentControlSet\\Control\\Print\\Monitors\\Standard TCP/IP Port\\Ports\\%s";
constexpr size_t kNameCapacity = 4096;      // characters of port names and registry paths
constexpr DWORD kHostNameBytes = 4096;      // "HostName" and "IPAddress" are read up to this size

// The receive buffer of the network path (the request is staged in it too): one per
// thread, so that reads of two sheets on their workers never share it.
thread_local char gReceiveBuffer[kLegacyReplyCapacity];

// "LegacyDataAvailable" as a 32-bit value; 0 when the read fails.
DWORD ReadLegacyDataAvailable(HANDLE printer, DWORD* value) {
    *value = 0;
    DWORD type = 0;
    DWORD needed = 0;
    DWORD data = 0;
    const DWORD status = Spool().GetPrinterDataW(printer, kLegacyDataAvailable, &type, reinterpret_cast<BYTE*>(&data),
                                                 sizeof(data), &needed);
    if (status == ERROR_SUCCESS) {
        *value = data;
    }
    return status;
}

// The address of four dotted numbers, first number in the lowest byte. Each number is
// taken modulo 256 as a byte would hold it.
uint32_t PackAddress(const uint32_t (&octets)[4]) {
    return (octets[0] & 0xFFu) | (octets[1] & 0xFFu) << 8 | (octets[2] & 0xFFu) << 16 | (octets[3] & 0xFFu) << 24;
}

bool ReadAddress(const char* text, uint32_t* address) {
    uint32_t octets[4] = {};
    if (ozdk::ReadDottedNumbers(text, octets, 4) != 4) {
        return false;
    }
    *address = PackAddress(octets);
    return true;
}

// 8-bit copy of a host name; an unconvertible name becomes empty.
void NarrowHostName(const wchar_t* wide, char* narrow, int capacity) {
    narrow[0] = '\0';
    const int written = WideCharToMultiByte(CP_ACP, 0, wide, -1, narrow, capacity, nullptr, nullptr);
    if (written <= 0) {
        narrow[0] = '\0';
    }
    narrow[capacity - 1] = '\0';
}

UniqueRegKey OpenPortKey(const wchar_t* path) {
    UniqueRegKey key;
    const LONG status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, key.put());
    if (status != ERROR_SUCCESS) {
        Trace(L"IsNetworkPort(): %d=RegOpenKeyEx()\n", static_cast<int>(status));
        return UniqueRegKey();
    }
    return key;
}

// Resolves `hostName` and reads the first IPv4 result as dotted text.
bool AddressByResolving(const char* hostName, uint32_t* address) {
    WSADATA data;
    const bool started = WSAStartup(MAKEWORD(2, 2), &data) == 0;
    addrinfo* results = nullptr;
    const int status = hostName[0] != '\0' ? getaddrinfo(hostName, nullptr, nullptr, &results) : EAI_NONAME;
    bool found = false;
    if (status == 0 && results != nullptr) {
        const addrinfo* first = results;
        while (first != nullptr && (first->ai_family != AF_INET || first->ai_addr == nullptr ||
                                    static_cast<size_t>(first->ai_addrlen) < sizeof(sockaddr_in))) {
            first = first->ai_next;
        }
        if (first != nullptr) {
            const auto* bytes =
                reinterpret_cast<const unsigned char*>(&reinterpret_cast<const sockaddr_in*>(first->ai_addr)->sin_addr);
            char dotted[32];
            FormatNarrow(dotted, sizeof(dotted), "%u.%u.%u.%u", bytes[0], bytes[1], bytes[2], bytes[3]);
            Trace(L"IsNetworkPort(): trying by hostname=%S, getaddrinfo()=%S\n", hostName, dotted);
            found = ReadAddress(dotted, address);
            if (found) {
                wchar_t wideDotted[32];
                FormatWide(wideDotted, 32, L"%S", dotted);
                Trace(L"IsNetworkPort(): found ip address=%s, bRet=1\n", wideDotted);
            }
        }
    } else if (status != 0) {
        Trace(L"IsNetworkPort(): %d=getaddrinfo(%S)\n", status, hostName);
    }
    if (results != nullptr) {
        freeaddrinfo(results);
    }
    if (started) {
        WSACleanup();
    }
    return found;
}

// select() on one socket, for readability or, while `connecting`, for the outcome of
// the connection, for at most `seconds`. With a cancel signal the wait is taken in
// slices of kCancelCheckMs and ends as soon as the signal is raised. Returns select()'s
// result: 0 when the time ran out or the read was cancelled.
int WaitOnSocket(SOCKET link, bool connecting, long seconds, const CancelSignal* cancel) {
    const long sliceMs = cancel != nullptr ? kCancelCheckMs : seconds * 1000;
    for (long waitedMs = 0; waitedMs < seconds * 1000; waitedMs += sliceMs) {
        fd_set watched;
        fd_set failed;
        FD_ZERO(&watched);
        FD_ZERO(&failed);
        FD_SET(link, &watched);
        FD_SET(link, &failed);
        timeval wait = {sliceMs / 1000, (sliceMs % 1000) * 1000};
        const int ready = connecting ? select(0, nullptr, &watched, &failed, &wait)
                                     : select(0, &watched, nullptr, nullptr, &wait);
        if (ready != 0 || IsCancelled(cancel)) {
            return ready;
        }
    }
    return 0;
}

// Connects `link` to `peer`, waiting at most `seconds` for the embosser to take the
// connection. An address that does not answer at all (a device switched off behind a
// router drops the packets) would otherwise hold the dialog for the system's own
// connection timeout. The socket is blocking again afterwards; on failure the socket
// error (WSAETIMEDOUT when the time ran out, WSAEINTR when the read was cancelled) is
// the last error.
bool ConnectWithin(SOCKET link, const sockaddr_in& peer, long seconds, const CancelSignal* cancel) {
    u_long nonBlocking = 1;
    if (ioctlsocket(link, FIONBIO, &nonBlocking) == SOCKET_ERROR) {
        return false;
    }
    bool connected = connect(link, reinterpret_cast<const sockaddr*>(&peer), sizeof(peer)) == 0;
    int error = connected ? 0 : WSAGetLastError();
    if (error == WSAEWOULDBLOCK) {
        const int ready = WaitOnSocket(link, true, seconds, cancel);
        if (ready == 0) {
            error = IsCancelled(cancel) ? WSAEINTR : WSAETIMEDOUT;
        } else if (ready == SOCKET_ERROR) {
            error = WSAGetLastError();
        } else {
            int size = sizeof(error);
            if (getsockopt(link, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size) == SOCKET_ERROR) {
                error = WSAGetLastError();
            }
            connected = error == 0;
        }
    }
    nonBlocking = 0;
    ioctlsocket(link, FIONBIO, &nonBlocking);
    WSASetLastError(error);
    return connected;
}

}  // namespace

DWORD GetLegacyData(HANDLE printer, DWORD* count, const CancelSignal* cancel) {
    DWORD ignoredCount = 0;
    if (count == nullptr) {
        count = &ignoredCount;
    }
    *count = 0;

    PrinterInfoOutcome outcome;
    const HeapBuffer info = FetchPrinterInfo(printer, 2, &outcome);
    const wchar_t* printerName = info ? info.as<PRINTER_INFO_2W>()->pPrinterName : nullptr;
    if (printerName == nullptr) {
        DWORD error = info ? GetLastError() : outcome.error;
        if (error == ERROR_SUCCESS) {
            error = outcome.needed == 0 ? ERROR_INVALID_HANDLE : ERROR_INVALID_PRINTER_NAME;
        }
        Trace(L"GetLegacyData(): err=%d\n", static_cast<int>(error));
        return error;
    }
    Trace(L"GetLegacyData(): %s\n", printerName);

    // A handle of our own with full access: the request is a write.
    UniquePrinter fullAccess = OpenPrinterWithFullAccess(printerName);
    if (!fullAccess) {
        Trace(L"GetLegacyData(): err=%d\n", 0);
        return ERROR_SUCCESS;
    }

    DWORD available = 0;
    ReadLegacyDataAvailable(fullAccess.get(), &available);
    Trace(L"GetLegacyData(): first try LegacyDataAvailable=%d\n", static_cast<int>(available));

    const DWORD request = 0;
    DWORD result = Spool().SetPrinterDataW(fullAccess.get(), kLegacyDataAvailable, REG_DWORD,
                                           reinterpret_cast<const BYTE*>(&request), sizeof(request));
    Trace(L"GetLegacyData(): %d=SetPrinterData()\n", static_cast<int>(result));
    if (result == ERROR_SUCCESS) {
        ReadLegacyDataAvailable(fullAccess.get(), &available);
        result = ERROR_TIMEOUT;
        for (DWORD poll = 0; poll < kLegacyPollCount; ++poll) {
            if (SleepUnlessCancelled(cancel, kLegacyPollIntervalMs)) {
                Trace(L"GetLegacyData(): cancelled\n");
                result = ERROR_CANCELLED;
                break;
            }
            const DWORD status = ReadLegacyDataAvailable(fullAccess.get(), &available);
            Trace(L"GetLegacyData(): second try LegacyDataAvailable=%d\n", static_cast<int>(available));
            if (status != ERROR_SUCCESS) {
                Trace(L"GetLegacyData(): %d=GetPrinterData(), err=%d\n", static_cast<int>(status),
                      static_cast<int>(status));
                result = status;
                break;
            }
            if (available != 0) {
                *count = available;
                result = ERROR_SUCCESS;
                break;
            }
        }
    }

    fullAccess.reset();
    Trace(L"GetLegacyData(): err=%d\n", static_cast<int>(result));
    return result;
}

bool IsNetworkPort(const wchar_t* portName, uint32_t* address) {
    if (portName == nullptr || address == nullptr) {
        Trace(L"IsNetworkPort(): no port name, bRet=0\n");
        return false;
    }
    wchar_t name[kNameCapacity];
    CopyWide(name, kNameCapacity, portName);
    if (wchar_t* lastComma = wcsrchr(name, L',')) {
        *lastComma = L'\0';
    }
    Trace(L"IsNetworkPort(): pszPortName=%s\n", name);

    wchar_t keyPath[kNameCapacity];
    if (FormatWide(keyPath, kNameCapacity, kStandardTcpIpPorts, name) < 0) {
        Trace(L"IsNetworkPort(): port name too long, bRet=0\n");
        return false;
    }
    Trace(L"IsNetworkPort(): %s\n", keyPath);

    UniqueRegKey key = OpenPortKey(keyPath);
    if (!key) {
        return false;
    }
    wchar_t text[kHostNameBytes / sizeof(wchar_t)];
    if (ReadRegistryString(L"HostName", text, kHostNameBytes, key.release()) == ERROR_SUCCESS) {
        char hostName[kHostNameBytes];
        NarrowHostName(text, hostName, static_cast<int>(sizeof(hostName)));
        if (AddressByResolving(hostName, address)) {
            return true;
        }
        uint32_t dotted = 0;
        if (ReadAddress(hostName, &dotted)) {
            *address = dotted;
            Trace(L"IsNetworkPort(): found ip in hostname=%S, bRet=1\n", hostName);
            if (dotted != 0) {
                return true;
            }
        }
    }

    key = OpenPortKey(keyPath);
    if (!key || ReadRegistryString(L"IPAddress", text, kHostNameBytes, key.release()) != ERROR_SUCCESS) {
        return false;
    }
    char ipAddress[kHostNameBytes];
    NarrowHostName(text, ipAddress, static_cast<int>(sizeof(ipAddress)));
    uint32_t dotted = 0;
    const bool read = ReadAddress(ipAddress, &dotted);
    const bool found = read && dotted != 0;
    Trace(L"IsNetworkPort(): found IPAddress=%s, bRet=%d\n", text, found ? 1 : 0);
    if (read) {
        *address = dotted;
    }
    return found;
}

const char* GetLegacyDataNetwork(const wchar_t* portName, const char* request, int* length,
                                 const CancelSignal* cancel) {
    if (length == nullptr) {
        return nullptr;
    }
    const int tcpPort = *length;
    *length = -1;

    WSADATA data;
    const bool started = WSAStartup(MAKEWORD(2, 2), &data) == 0;
    const char* reply = nullptr;
    uint32_t address = 0;
    if (IsNetworkPort(portName, &address)) {
        Trace(L"GetLegacyDataNetwork(): connection available\n");
        *length = 0;
        SOCKET link = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        if (link == INVALID_SOCKET) {
            Trace(L"GetLegacyDataNetwork(): %d=socket()\n", WSAGetLastError());
        } else {
            sockaddr_in peer = {};
            peer.sin_family = AF_INET;
            peer.sin_port = htons(static_cast<u_short>(tcpPort));
            peer.sin_addr.s_addr = address;
            if (!ConnectWithin(link, peer, kLegacyConnectWaitSeconds, cancel)) {
                // The exchange goes on regardless: on the closed socket the send, the
                // wait and the first receive fail, and nothing is returned.
                Trace(L"GetLegacyDataNetwork(): %d=connect()\n", WSAGetLastError());
                closesocket(link);
                link = INVALID_SOCKET;
            }

            const char* text = request != nullptr ? request : kLegacyInfoRequest;
            const size_t requestLength = strnlen(text, kLegacyReplyCapacity - 1);
            memcpy(gReceiveBuffer, text, requestLength);
            gReceiveBuffer[requestLength] = '\0';
            const int sent = send(link, gReceiveBuffer, static_cast<int>(requestLength), 0);
            if (sent != static_cast<int>(requestLength)) {
                Trace(L"GetLegacyDataNetwork(): %d=send()\n", sent);
            }

            int held = 0;
            int budget = kLegacyReceiveBudget;
            for (;;) {
                const int ready = WaitOnSocket(link, false, kLegacyReceiveWaitSeconds, cancel);
                if (ready == 0 && IsCancelled(cancel)) {
                    Trace(L"GetLegacyDataNetwork(): cancelled\n");
                    held = 0;  // a part of a reply is no reply
                    break;
                }
                if (ready != 0) {
                    Trace(L"GetLegacyDataNetwork(): %d=select()\n", ready);
                    Trace(L"GetLegacyDataNetwork(): 1=FD_ISSET()\n");
                    const int room = static_cast<int>(kLegacyReplyCapacity - 1) - held;
                    const int received = recv(link, gReceiveBuffer + held, room, 0);
                    Trace(L"GetLegacyDataNetwork(): %d=recv()\n", received);
                    if (received < 1) {
                        break;
                    }
                    held += received;
                    budget = kLegacyReceiveBudget;
                } else {
                    Trace(L"GetLegacyDataNetwork(): socket timeout 0=select()\n");
                    if (--budget == 0) {
                        break;
                    }
                }
            }

            Trace(L"GetLegacyDataNetwork(): %d=sockread\n", held);
            if (held > 0) {
                gReceiveBuffer[held] = '\0';
                *length = held;
                reply = gReceiveBuffer;
            }
            if (link != INVALID_SOCKET) {
                closesocket(link);
            }
        }
    }
    if (started) {
        WSACleanup();
    }
    return reply;
}
