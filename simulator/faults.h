// Faults that the user wants on one port: which, how often, and after how many good occasions.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace readers {

struct FaultKind {
    std::string_view Name;
    std::string_view Port;    // "com1", "com2", or "" when it fits either port and must be said
    std::string_view Values;  // names of the values it takes, blank-separated; a last "..." takes the rest
    std::string_view Meaning;
};

// Every fault there is.
std::span<const FaultKind> FaultKinds();
const FaultKind* FindFault(std::string_view name);

using FaultValues = std::vector<std::string>;

class FaultSet {
  public:
    // `words`: the values of the fault, then any of "xN" (N times), "always", "afterN" (N good occasions
    // first), "off". Without these the fault happens once. False, with `problem` set, when they do not fit.
    bool Arm(const FaultKind& kind, std::span<const std::string> words, std::string& problem);

    // An occasion for the fault: its values when it is to happen now. Counts the occasion.
    std::optional<FaultValues> Take(std::string_view name);

    void Clear() { Armed.clear(); }

    // One line per armed fault.
    std::vector<std::string> Describe() const;

  private:
    struct Entry {
        FaultValues Values;
        unsigned Left = 1;
        unsigned Skip = 0;
        bool Always = false;
    };
    std::map<std::string, Entry, std::less<>> Armed;
};

}  // namespace readers
