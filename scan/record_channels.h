// Handing a scan's record to other programs.
#pragma once

#include "scan/decode_record.h"

// Puts the record into the message queue in place of one that nobody has read, then sets the event and
// broadcasts, as asked for. When the queue does not take the record (within 30 ms), there is no event and no
// broadcast. What is left when the reader is switched off does not happen. Returns when every window has
// taken the broadcasts. Any thread.
void SendRecord(const DecodeRecord& record, bool withEvent, bool withMessages);
