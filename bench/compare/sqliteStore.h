// Stores blobs by name in an SQLite file, to compare with the container index.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace velBench {

class SqliteStore
{
public:
    /// Makes a new file with a blob of 16 bytes under each name. Throws a Failure.
    SqliteStore(const std::string &file, std::vector<std::string> names);
    ~SqliteStore();
    SqliteStore(const SqliteStore &) = delete;
    SqliteStore &operator=(const SqliteStore &) = delete;

    /// Looks up the blobs of these names with a prepared statement and a unique
    /// text key. Throws a Failure if one is missing.
    void lookUp(const std::vector<std::uint32_t> &numbers);

private:
    void check(bool good, const char *what) const;
    void run(const char *statement);
    sqlite3_stmt *prepare(const char *statement);
    void fill();

    sqlite3 *database_ = nullptr;    ///< owned
    sqlite3_stmt *lookUp_ = nullptr; ///< owned
    std::vector<std::string> names_;
};

} // namespace velBench
