// A history in a new folder, with a clock that the test sets.
#pragma once

#include "veltext/error.h"
#include "veltext/history.h"
#include "veltext/readFile.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace veltext::test {

/// A folder with a file and its history. The destructor removes it.
class HistoryFolder
{
public:
    HistoryFolder()
    {
        std::string name = std::filesystem::temp_directory_path() / "history-XXXXXX";
        folder_ = ::mkdtemp(name.data());
    }
    ~HistoryFolder() { std::filesystem::remove_all(folder_); }
    HistoryFolder(const HistoryFolder &) = delete;
    HistoryFolder &operator=(const HistoryFolder &) = delete;

    [[nodiscard]] std::filesystem::path path() const { return folder_; }
    [[nodiscard]] std::string file() const { return folder_ / "duct.vel"; }
    [[nodiscard]] std::string state() const { return folder_ / "state" / "history"; }

    [[nodiscard]] History history() const
    {
        return {file(), state(), [this] { return now; }};
    }

    /// A file in the folder of the history.
    [[nodiscard]] std::string stored(const std::string &name) const
    {
        return history().folder() + '/' + name;
    }

    void write(const std::string &bytes) const { write(file(), bytes); }
    static void write(const std::string &file, const std::string &bytes)
    {
        std::ofstream(file, std::ios::binary) << bytes;
    }

    /// The file contains `bytes` when it is replaced.
    std::string keep(const std::string &bytes, const std::string &program = "test") const
    {
        write(bytes);
        return history().keep(program);
    }

    /// The bytes of all versions, newest first; "damaged" for one that cannot be read.
    [[nodiscard]] std::vector<std::string> contents() const
    {
        std::vector<std::string> contents;
        for (const Version &version : history().list().versions) {
            contents.push_back(contentOf(version));
        }
        return contents;
    }

    std::int64_t now = 1'700'000'000;

private:
    [[nodiscard]] std::string contentOf(const Version &version) const
    {
        try {
            return history().read(version);
        } catch (const Error &) {
            return "damaged";
        }
    }

    std::filesystem::path folder_;
};

} // namespace veltext::test
