// Scans that wait for the broker: an SQLite file that outlives the program, the power and a full disk. Any
// thread.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

struct sqlite3;

// How many of the terminal's scans are accounted for, taken or told as missed, and in which run of vantrel.
struct Account {
    std::int64_t Run = 0;  // 0: none yet
    std::int64_t Scans = 0;
};

struct WaitingMessage {
    std::int64_t Sequence;
    std::string Payload;
};

class ScanStore {
  public:
    ScanStore() = default;
    ~ScanStore();
    ScanStore(const ScanStore&) = delete;
    ScanStore& operator=(const ScanStore&) = delete;

    // Opens or makes the file. Empty, or what is wrong. Only one program writes.
    std::string Open(const std::string& path, std::int64_t mostBytes);
    // For looking: changes nothing.
    std::string OpenToLook(const std::string& path);

    // Puts a message behind the others, under the next sequence number (from 1, without gaps), and the
    // account with it: both are on the disk, or neither. False when there is no room or the disk refuses.
    bool Append(const std::function<std::string(std::int64_t sequence)>& payload, const Account& account);
    bool SetAccount(const Account& account);
    Account ReadAccount();

    // The oldest messages behind that number.
    std::vector<WaitingMessage> After(std::int64_t sequence, int count);
    // Forgets messages. False when the disk refuses; they are all still there then.
    bool Remove(const std::vector<std::int64_t>& sequences);

  private:
    bool Run(const char* sql);
    bool RunWith(const char* sql, const std::vector<std::int64_t>& numbers,
                 const std::string* text = nullptr);
    bool Commit(bool good);

    std::mutex mutex_;
    sqlite3* file_ = nullptr;
};
