// Helpers of the database's tests: input as text, results as text.
//
// A message is a text, empty for success. A list is lines, each with a line feed at
// its end.
#pragma once

#include "velapilt/src/velapilt.h"

#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// The message; empty for success.
[[nodiscard]] std::string said(const char *message);

[[nodiscard]] std::string asLines(const velStringList &list);
[[nodiscard]] std::string asLines(const velArray &strings);
[[nodiscard]] std::vector<std::string> linesOf(std::string_view text);

/// Parses the lines of `text` in one call.
std::string parse(const velHandlePtr &handle, std::string_view text, std::uint32_t flags = 0);

/// A new handle with the nodes of `text`.
[[nodiscard]] velHandlePtr parsed(std::string_view text);

/// The stored form below a path, or the message.
[[nodiscard]] std::string stored(const velHandlePtr &handle, const char *path = "/",
                                 bool includeLibrary = true);
/// The saved form below a path, or the message.
[[nodiscard]] std::string saved(const velHandlePtr &handle, const char *path = "/",
                                std::int32_t width = 0);

/// The value at a path, or the message.
[[nodiscard]] std::string valueAt(const velHandlePtr &handle, const char *path);

/// Every node in stored order, one line "path kind flags" each: "/A/x Param 0x100".
[[nodiscard]] std::string flagsOf(const velHandlePtr &handle);

/// Records the changes that a handler receives, one per line:
/// "/A: created", "/A/x: new <- old" ("-" for no value), "/A: deleted".
class ChangeLog
{
public:
    explicit ChangeLog(const velHandlePtr &handle);
    ChangeLog(const ChangeLog &) = delete;
    ChangeLog &operator=(const ChangeLog &) = delete;

    /// The records since the last call.
    [[nodiscard]] std::string take();

private:
    static int note(const char *path, std::int32_t code, const char *newValue, const char *oldValue,
                    void *userData);

    std::string text_;
};

/// Sets an environment variable for the life of the object; without a value, unsets
/// it.
class Environment
{
public:
    Environment(const char *name, std::optional<std::string> value);
    ~Environment();
    Environment(const Environment &) = delete;
    Environment &operator=(const Environment &) = delete;

private:
    std::string name_;
    std::optional<std::string> before_;
};

/// A folder of the test; the destructor deletes it with its content.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    [[nodiscard]] std::string path(std::string_view name = {}) const;
    /// The path of a new file with this content.
    std::string write(std::string_view name, std::string_view content) const;

private:
    std::filesystem::path folder_;
};

/// Numbers and texts that are the same in every run.
class Random
{
public:
    explicit Random(unsigned seed) : engine_(seed) {}

    /// From 0 to `limit` − 1.
    std::size_t below(std::size_t limit) { return engine_() % limit; }
    bool once(std::size_t in) { return below(in) == 0; }

    /// `length` characters out of `alphabet`.
    std::string text(std::size_t length, std::string_view alphabet);

    template <typename List>
    auto &oneOf(List &list)
    {
        return list[below(list.size())];
    }

private:
    std::mt19937 engine_;
};

/// A random set-up: up to `objects` blocks, some of them nested.
[[nodiscard]] std::string randomSetup(Random &random, std::size_t objects);
