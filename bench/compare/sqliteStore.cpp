// Fills and reads the SQLite table.
#include "bench/compare/sqliteStore.h"

#include "bench/velbench/measure.h"

#include <array>
#include <cstdio>
#include <sqlite3.h>

namespace velBench {

namespace {

using Blob = std::array<std::int32_t, 4>;

} // namespace

SqliteStore::SqliteStore(const std::string &file, std::vector<std::string> names)
    : names_(std::move(names))
{
    std::remove(file.c_str());
    check(sqlite3_open(file.c_str(), &database_) == SQLITE_OK, "open");
    fill();
    lookUp_ = prepare("SELECT data FROM store WHERE name = ?");
    run("BEGIN"); // otherwise each look-up would lock the file
}

SqliteStore::~SqliteStore()
{
    sqlite3_finalize(lookUp_);
    sqlite3_close(database_);
}

void SqliteStore::check(bool good, const char *what) const
{
    if (!good)
        throw Failure(std::string("SQLite: ") + what + ": " + sqlite3_errmsg(database_));
}

void SqliteStore::run(const char *statement)
{
    check(sqlite3_exec(database_, statement, nullptr, nullptr, nullptr) == SQLITE_OK, statement);
}

sqlite3_stmt *SqliteStore::prepare(const char *statement)
{
    sqlite3_stmt *prepared = nullptr;
    check(sqlite3_prepare_v2(database_, statement, -1, &prepared, nullptr) == SQLITE_OK, statement);
    return prepared;
}

void SqliteStore::fill()
{
    run("CREATE TABLE store(name TEXT PRIMARY KEY, data BLOB) WITHOUT ROWID");
    run("BEGIN");
    sqlite3_stmt *insert = prepare("INSERT INTO store VALUES(?, ?)");
    const Blob blob{0, 1, 2, 3};
    for (const std::string &name : names_) {
        sqlite3_bind_text(insert, 1, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
        sqlite3_bind_blob(insert, 2, blob.data(), sizeof blob, SQLITE_STATIC);
        check(sqlite3_step(insert) == SQLITE_DONE, "insert");
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    run("COMMIT");
}

void SqliteStore::lookUp(const std::vector<std::uint32_t> &numbers)
{
    for (const std::uint32_t number : numbers) {
        const std::string &name = names_[number];
        sqlite3_bind_text(lookUp_, 1, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
        check(sqlite3_step(lookUp_) == SQLITE_ROW, "look-up");
        check(sqlite3_column_bytes(lookUp_, 0) == sizeof(Blob), "blob");
        sqlite3_reset(lookUp_);
    }
}

} // namespace velBench
