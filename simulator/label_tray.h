// The labels in front of the reader's window: they wait for a read, in the order in which they were
// presented.
#pragma once

#include <deque>
#include <functional>

#include "simulator/wire.h"

namespace readers {

struct Label {
    std::uint8_t Type;  // code identifier of a packet reader, letter of the 1D reader
    Bytes Data;
};

class LabelTray {
  public:
    using TypeParser = std::function<std::optional<std::uint8_t>(std::string_view)>;

    explicit LabelTray(TypeParser type) : TypeOf(std::move(type)) {}

    bool Empty() const { return Waiting.empty(); }
    const Label& Front() const { return Waiting.front(); }
    // The first label was read: it goes, unless labels are held in place.
    void Consume();

    // "label TYPE DATA", "clear" and "hold on|off"; as Reader::Command. `added` tells of a new label.
    bool Command(std::string_view word, std::string_view rest, std::string& problem, bool& added);
    std::string State() const;

  private:
    TypeParser TypeOf;
    std::deque<Label> Waiting;
    bool Hold = false;
};

}  // namespace readers
