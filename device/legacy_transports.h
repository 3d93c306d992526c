// The two ways the embosser's stored settings reach the plug-in.
//
// Spooler-side path (any port): GetLegacyData asks the driver's spooler-side component
// through the printer-data value "LegacyDataAvailable" and waits for its answer; the
// component leaves the settings as printer data (read by GetQuorlSettings).
// Network path (Standard TCP/IP ports): GetLegacyDataNetwork sends one HTTP request to
// the embosser and returns its reply, which carries the "@PJL INFO LEGACY" block.
//
// Both block the calling thread: the spooler-side path for up to kLegacyPollCount polls
// of kLegacyPollIntervalMs, the network path for up to kLegacyConnectWaitSeconds to
// connect and then kLegacyReceiveBudget one-second waits of silence in a row. Given a
// cancel signal, each wait ends within kCancelCheckMs of the signal, and the transport
// gives up: nothing read counts.
#pragma once

#include <windows.h>

#include <cstdint>

#include "config/ui_config.h"

class CancelSignal;

// The request of the network path: 31 bytes, no Host line and no other header.
inline constexpr char kLegacyInfoRequest[] = "GET /PJLINFOLEGACY HTTP/1.1\r\n\r\n";
inline constexpr int kLegacyInfoTcpPort = 80;

inline constexpr DWORD kLegacyPollCount = 9;
inline constexpr DWORD kLegacyPollIntervalMs = 1000;
inline constexpr int kLegacyReceiveBudget = 10;  // one-second select() waits without data
inline constexpr long kLegacyReceiveWaitSeconds = 1;
// The connection attempt gets the same time as a silent embosser.
inline constexpr long kLegacyConnectWaitSeconds = kLegacyReceiveBudget * kLegacyReceiveWaitSeconds;
// How often a cancellable socket wait looks at its cancel signal.
inline constexpr long kCancelCheckMs = 100;

// Spooler-side path. Writes "LegacyDataAvailable" = 0 through a fresh full-access handle
// of the printer and polls the value until the component sets it to the number of
// parameters it stored. Returns 0 with that number in *count; 0 with *count 0 when the
// printer cannot be opened again; ERROR_TIMEOUT (1460) after the last poll found 0; or
// the spooler's error; ERROR_CANCELLED when `cancel` was raised during the polls.
DWORD GetLegacyData(HANDLE printer, DWORD* count, const CancelSignal* cancel = nullptr);

// True when `portName` (a port list is cut at its last ',') is a Standard TCP/IP port
// whose IPv4 address could be found from its "HostName" (resolved, or read as dotted
// text) or its "IPAddress". The address is stored in network byte order: the first
// octet in the lowest byte.
bool IsNetworkPort(const wchar_t* portName, uint32_t* address);

// Network path. On entry *length holds the TCP port; on return -1 when the port is not a
// network port, 0 when it is but nothing came back, else the number of bytes received
// (at most kLegacyReplyCapacity - 1). Returns the reply, NUL-terminated, or null.
// The reply lives in the calling thread's receive buffer, which the thread's next call
// overwrites. A raised `cancel` ends the exchange at its next wait with nothing returned
// (*length 0).
const char* GetLegacyDataNetwork(const wchar_t* portName, const char* request, int* length,
                                 const CancelSignal* cancel = nullptr);

