// A reading is what a reader reads between being switched on and being switched off. From the moment that it
// is switched off nothing more of its reading may reach anybody, so whoever delivers asks before each step.
#pragma once

#include "platform/base.h"

// Makes what `lasts` says the answer to ReadingLasts on the calling thread; null: its reading has no end.
void JoinReading(bool (*lasts)());

// Whether the reading that the calling receive thread works for has not ended; any other thread's work is
// never ended. Where a step must not happen after the end, use ReadingStep.
bool ReadingLasts();

// One step of a delivery, for as long as this lives: if it says true the reading lasts. Steps are short (a
// few keys, a record; a 1D read that is started anew takes 100 ms), follow each other one at a time, do not
// nest, and do nothing that waits for the main thread, which is the one that ends readings.
class ReadingStep {
  public:
    ReadingStep();
    ~ReadingStep();
    ReadingStep(const ReadingStep&) = delete;
    ReadingStep& operator=(const ReadingStep&) = delete;
    explicit operator bool() const { return lasts_; }

  private:
    const bool lasts_;
};

// Waits until a step that was under way is over: whoever has ended a reading calls it, and has seen the last
// of that reading then. A step that hangs (a display that does not answer) is waited for 500 ms at most.
void FinishReadingStep();

// Where the receive threads hand over what they have received; set once at start-up, before the threads run.
struct MessageHandlers {
    // One message of the barcode reader, called on the barcode receive thread: a 1D reader's bytes as read,
    // or the code identifier and the joined data of a scan engine's decode. Zero bytes follow the message.
    int (*Barcode)(const BYTE* message, DWORD length);
    // One tag line of 3 to 23 characters, zero-terminated, without CR LF; called on the RFID receive thread.
    int (*Rfid)(const char* line, DWORD length);
};

inline MessageHandlers ReceiveHandlers{};
