// Pieces of POSIX that several files of the layer use.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace layer {

// A file descriptor that closes itself.
class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    void Close();
    // Gives the descriptor away.
    int Release() { return std::exchange(number_, -1); }
    int Number() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }

  private:
    int number_;
};

// Locks an open file against other programs (`kind` LOCK_SH or LOCK_EX), trying again for so long. That is
// real time on every clock: the other side is another process. False, with errno, when it was not to be had.
bool LockFile(int file, int kind, std::chrono::milliseconds longest = {});

// The names in a folder, in no order; as many as can be read. `problem` gets what kept others away, ENOENT
// where there is no such folder, or 0.
std::vector<std::string> NamesIn(const std::string& folder, int* problem = nullptr);
// Removes what programs that are gone have left in a folder under the name `beginning`, their process id and
// whatever follows that.
void RemoveLeftovers(const std::string& folder, std::string_view beginning);

// Ends another thread's poll(): its descriptor is readable from Wake to Clear.
class Waker {
  public:
    Waker();
    // -1 when the system has no descriptor left.
    int Number() const { return bell_.Number(); }
    void Wake() const;
    void Clear() const;

  private:
    Descriptor bell_;
};

}  // namespace layer
