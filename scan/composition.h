// The line of text that keyboard emulation types for a scan. Pure; any thread.
#pragma once

#include <array>
#include <span>

#include "scan/scan_data.h"

inline constexpr std::size_t MaximumLineLength = 4096;

enum class EnterPlace { None, AfterScan, BeforeScan };

// What the user's settings say about the line.
struct LineOptions {
    EnterPlace Enter = EnterPlace::None;
    BYTE EnterCharacter = 0;  // 0: none. A Tab is pressed on its own and never part of the line
    std::array<WCHAR, 11> Prefix{}, Suffix{};
    bool IncludeCodeType = false, IncludeCodeLength = false;
    bool ReadRfidUid = false, ReadRfidData = false, UseDelimiter = false;
    WCHAR Delimiter = 0;

    bool TabBefore() const { return Enter == EnterPlace::BeforeScan && EnterCharacter == '\t'; }
    bool TabAfter() const { return Enter == EnterPlace::AfterScan && EnterCharacter == '\t'; }
};

struct OutputLine {
    BYTE Bytes[MaximumLineLength + 1];
    DWORD Count;

    std::span<const BYTE> Used() const { return {Bytes, Count}; }
};

// Compose the line. A line that would be too long loses the end of the scan's data, never what stands around
// them: a line that lost its ENTER character would run into the next scan.
void ComposeLine(ReaderFamily family, const ScanData& scan, const LineOptions& options, OutputLine& line);
void ComposeLine(const RfidScanData& scan, const LineOptions& options, OutputLine& line);
