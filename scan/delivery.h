// Handing a scan to the applications: record in the message queue, event, broadcasts, key strokes.
#pragma once

#include "scan/scan_data.h"

// Delivers a barcode scan (family Decoder1D or Packet) or a tag by every channel that the data output setting
// switches on, and returns when the last key has been sent and every window has taken the broadcasts. No
// result: a channel that fails is skipped without notice. Receive threads; both may deliver at once, and the
// keys of two scans never mix. A barcode scan also ends `TransferBusy`: at once without key strokes, else by
// timer IDT_DELIVERY_BUSY. A tag leaves that flag to the barcode reader, whose transfer it may otherwise cut
// into. What is left of a delivery when the reader is switched off does not happen, the end of `TransferBusy`
// included: that flag is cleared when the reader is switched on.
void DeliverScan(ReaderFamily family, const ScanData& scan);
void DeliverScan(const RfidScanData& scan);
