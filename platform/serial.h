// Serial ports: line state, time-outs, events, break. Ports are opened with CreateFileW ("COM1:").
#pragma once

#include "platform/files.h"

#ifdef _WIN32

#define SetupComm TerminalSetupComm
#define GetCommState TerminalGetCommState
#define SetCommState TerminalSetCommState
#define GetCommTimeouts TerminalGetCommTimeouts
#define SetCommTimeouts TerminalSetCommTimeouts
#define PurgeComm TerminalPurgeComm
#define SetCommMask TerminalSetCommMask
#define WaitCommEvent TerminalWaitCommEvent
#define ClearCommError TerminalClearCommError
#define SetCommBreak TerminalSetCommBreak
#define ClearCommBreak TerminalClearCommBreak

#else

#define NOPARITY 0
#define ONESTOPBIT 0
#define DTR_CONTROL_DISABLE 0
#define DTR_CONTROL_ENABLE 1
#define RTS_CONTROL_DISABLE 0
#define RTS_CONTROL_ENABLE 1

#define PURGE_RXABORT 0x0002
#define PURGE_TXCLEAR 0x0004
#define PURGE_RXCLEAR 0x0008

#define EV_RXCHAR 0x0001
#define EV_BREAK 0x0040

struct DCB {
    DWORD DCBlength;
    DWORD BaudRate;
    DWORD fBinary : 1;
    DWORD fParity : 1;
    DWORD fOutxCtsFlow : 1;
    DWORD fOutxDsrFlow : 1;
    DWORD fDtrControl : 2;
    DWORD fDsrSensitivity : 1;
    DWORD fTXContinueOnXoff : 1;
    DWORD fOutX : 1;
    DWORD fInX : 1;
    DWORD fErrorChar : 1;
    DWORD fNull : 1;
    DWORD fRtsControl : 2;
    DWORD fAbortOnError : 1;
    DWORD fDummy2 : 17;
    WORD wReserved;
    WORD XonLim;
    WORD XoffLim;
    BYTE ByteSize;
    BYTE Parity;
    BYTE StopBits;
    char XonChar;
    char XoffChar;
    char ErrorChar;
    char EofChar;
    char EvtChar;
    WORD wReserved1;
};

struct COMMTIMEOUTS {
    DWORD ReadIntervalTimeout;
    DWORD ReadTotalTimeoutMultiplier;
    DWORD ReadTotalTimeoutConstant;
    DWORD WriteTotalTimeoutMultiplier;
    DWORD WriteTotalTimeoutConstant;
};

struct COMSTAT {
    DWORD flags;
    DWORD cbInQue;
    DWORD cbOutQue;
};

BOOL SetupComm(HANDLE port, DWORD inputQueue, DWORD outputQueue);
BOOL GetCommState(HANDLE port, DCB* state);
BOOL SetCommState(HANDLE port, DCB* state);
BOOL GetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts);
BOOL SetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts);
BOOL PurgeComm(HANDLE port, DWORD flags);
// Sets which events WaitCommEvent reports; a wait that is going on in another thread returns with no event.
BOOL SetCommMask(HANDLE port, DWORD mask);
// Waits for an event of the mask. Level-triggered: bytes that are already there count.
BOOL WaitCommEvent(HANDLE port, LPDWORD events, LPOVERLAPPED overlapped);
BOOL ClearCommError(HANDLE port, LPDWORD errors, COMSTAT* status);
BOOL SetCommBreak(HANDLE port);
BOOL ClearCommBreak(HANDLE port);

#endif
