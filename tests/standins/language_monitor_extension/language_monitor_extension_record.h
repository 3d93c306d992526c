// Where the language-monitor extension stand-in records what it was asked, and where the
// tests tell it what to answer: values of one key under HKEY_CURRENT_USER.
//
// Recorded by DllExportPrinterService:
//   ServiceCalls     REG_DWORD   number of calls so far
//   ServiceOwner     REG_QWORD   the owner window handle received
//   ServicePrinter   REG_SZ      the printer name received
//   ServiceRequest   REG_BINARY  the request's fields as received: the service code, then
//                                the fields that code defines (14: the table index,
//                                15: 20 bytes of settings, others: nothing more)
// Recorded by DllExportGetPrinterError:
//   ErrorCalls       REG_DWORD, ErrorPrinter REG_SZ, ErrorFieldCount REG_DWORD
// Recorded by DllExportGetPrinterErrorText:
//   ErrorTextCalls   REG_DWORD, ErrorTextCode REG_DWORD
// Answers, read at each call (absent: the default in brackets):
//   AnswerErrorCode  REG_DWORD   the code put into the error record's first field [0]
//   AnswerErrorResult REG_DWORD  what DllExportGetPrinterError returns [0]
//   AnswerErrorText  REG_SZ      the text DllExportGetPrinterErrorText writes ["Stand-in error"]
#pragma once

#define OZDK_EXTENSION_RECORD_KEY L"Software\\Kestrova Stand-ins\\Language Monitor Extension"
