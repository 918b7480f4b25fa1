#include "tools/publish/scan_store.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <memory>

namespace {

constexpr int BusyMilliseconds = 5000;  // somebody looks with another program
constexpr std::int64_t PageSize = 4096;

struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

Statement Prepare(sqlite3* file, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(file, sql, -1, &statement, nullptr);
    return Statement(statement);
}

}  // namespace

ScanStore::~ScanStore() {
    sqlite3_close(file_);
}

bool ScanStore::Run(const char* sql) {
    return sqlite3_exec(file_, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool ScanStore::RunWith(const char* sql, const std::vector<std::int64_t>& numbers, const std::string* text) {
    const Statement statement = Prepare(file_, sql);
    if (!statement) {
        return false;
    }
    int at = 0;
    for (const std::int64_t number : numbers) {
        sqlite3_bind_int64(statement.get(), ++at, number);
    }
    if (text != nullptr) {
        sqlite3_bind_text(statement.get(), ++at, text->data(), static_cast<int>(text->size()), SQLITE_STATIC);
    }
    return sqlite3_step(statement.get()) == SQLITE_DONE;
}

bool ScanStore::Commit(bool good) {
    if (good && Run("COMMIT")) {
        return true;
    }
    Run("ROLLBACK");
    return false;
}

std::string ScanStore::Open(const std::string& path, std::int64_t mostBytes) {
    const std::scoped_lock lock(mutex_);
    umask(0077);
    // Every commit is on the disk before its scan counts as taken: terminals lose their power.
    const std::string bounds = "PRAGMA max_page_count=" + std::to_string(mostBytes / PageSize);
    const bool good =
        sqlite3_open_v2(path.c_str(), &file_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) ==
            SQLITE_OK &&
        sqlite3_busy_timeout(file_, BusyMilliseconds) == SQLITE_OK && Run("PRAGMA page_size=4096") &&
        Run("PRAGMA journal_mode=WAL") && Run("PRAGMA synchronous=FULL") &&
        Run("PRAGMA journal_size_limit=0") && Run(bounds.c_str()) &&
        Run("CREATE TABLE IF NOT EXISTS waiting(sequence INTEGER PRIMARY KEY, payload TEXT NOT NULL)") &&
        Run("CREATE TABLE IF NOT EXISTS state(one INTEGER PRIMARY KEY CHECK(one = 1), sequence INTEGER NOT "
            "NULL, "
            "run INTEGER NOT NULL, scans INTEGER NOT NULL)") &&
        Run("INSERT OR IGNORE INTO state VALUES(1, 0, 0, 0)");
    return good ? std::string() : path + ": " + sqlite3_errmsg(file_);
}

std::string ScanStore::OpenToLook(const std::string& path) {
    const std::scoped_lock lock(mutex_);
    const bool good = sqlite3_open_v2(path.c_str(), &file_, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK &&
                      sqlite3_busy_timeout(file_, BusyMilliseconds) == SQLITE_OK &&
                      Run("SELECT 1 FROM waiting LIMIT 1");
    return good ? std::string() : path + ": " + sqlite3_errmsg(file_);
}

bool ScanStore::Append(const std::function<std::string(std::int64_t)>& payload, const Account& account) {
    const std::scoped_lock lock(mutex_);
    if (!Run("BEGIN IMMEDIATE")) {
        return false;
    }
    std::int64_t sequence = 0;
    {
        const Statement last = Prepare(file_, "SELECT sequence FROM state");
        if (!last || sqlite3_step(last.get()) != SQLITE_ROW) {
            return Commit(false);
        }
        sequence = sqlite3_column_int64(last.get(), 0) + 1;
    }
    const std::string text = payload(sequence);
    return Commit(
        RunWith("INSERT INTO waiting VALUES(?, ?)", {sequence}, &text) &&
        RunWith("UPDATE state SET sequence = ?, run = ?, scans = ?", {sequence, account.Run, account.Scans}));
}

bool ScanStore::SetAccount(const Account& account) {
    const std::scoped_lock lock(mutex_);
    return RunWith("UPDATE state SET run = ?, scans = ?", {account.Run, account.Scans});
}

Account ScanStore::ReadAccount() {
    const std::scoped_lock lock(mutex_);
    const Statement statement = Prepare(file_, "SELECT run, scans FROM state");
    if (!statement || sqlite3_step(statement.get()) != SQLITE_ROW) {
        return {};
    }
    return {sqlite3_column_int64(statement.get(), 0), sqlite3_column_int64(statement.get(), 1)};
}

std::vector<WaitingMessage> ScanStore::After(std::int64_t sequence, int count) {
    const std::scoped_lock lock(mutex_);
    const Statement statement =
        Prepare(file_, "SELECT sequence, payload FROM waiting WHERE sequence > ? ORDER BY sequence LIMIT ?");
    std::vector<WaitingMessage> messages;
    if (!statement) {
        return messages;
    }
    sqlite3_bind_int64(statement.get(), 1, sequence);
    sqlite3_bind_int(statement.get(), 2, count);
    while (sqlite3_step(statement.get()) == SQLITE_ROW) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 1));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 1));
        messages.push_back({sqlite3_column_int64(statement.get(), 0), std::string(text ? text : "", size)});
    }
    return messages;
}

bool ScanStore::Remove(const std::vector<std::int64_t>& sequences) {
    const std::scoped_lock lock(mutex_);
    if (!Run("BEGIN IMMEDIATE")) {
        return false;
    }
    bool good = true;
    for (const std::int64_t sequence : sequences) {
        good = good && RunWith("DELETE FROM waiting WHERE sequence = ?", {sequence});
    }
    return Commit(good);
}
