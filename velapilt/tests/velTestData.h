// What the tests of the database share: input as text, results as text.
//
// A message is given as text, the empty one for success. Lists are given as
// lines, each ended by a line feed.
#pragma once

#include "velapilt/src/velapilt.h"

#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// The message, or nothing for success.
[[nodiscard]] std::string said(const char *message);

[[nodiscard]] std::string asLines(const velStringList &list);
[[nodiscard]] std::string asLines(const velArray &strings);
[[nodiscard]] std::vector<std::string> linesOf(std::string_view text);

/// Parses the lines of `text` in one go.
std::string parse(const velHandlePtr &handle, std::string_view text, std::uint32_t flags = 0);

/// A new handle that holds `text`.
[[nodiscard]] velHandlePtr parsed(std::string_view text);

/// The stored form below a path, or the message.
[[nodiscard]] std::string stored(const velHandlePtr &handle, const char *path = "/",
                                 bool includeLibrary = true);
/// The saved form below a path, or the message.
[[nodiscard]] std::string saved(const velHandlePtr &handle, const char *path = "/",
                                std::int32_t width = 0);

/// The value at a path, or the message.
[[nodiscard]] std::string valueAt(const velHandlePtr &handle, const char *path);

/// Every node, one a line in stored order, as "path kind flags": "/A/x Param 0x100".
[[nodiscard]] std::string flagsOf(const velHandlePtr &handle);

/// Writes down what the change handlers are told, one change a line:
/// "/A: created", "/A/x: new <- old" ("-" for no value), "/A: deleted".
class ChangeLog
{
public:
    explicit ChangeLog(const velHandlePtr &handle);
    ChangeLog(const ChangeLog &) = delete;
    ChangeLog &operator=(const ChangeLog &) = delete;

    /// What has been written since the last call.
    [[nodiscard]] std::string take();

private:
    static int note(const char *path, std::int32_t code, const char *newValue, const char *oldValue,
                    void *userData);

    std::string text_;
};

/// An environment variable for the life of the object; without a value it is unset.
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

/// A folder of the test's own, removed with all in it.
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

/// A set-up of the random kind: up to `objects` blocks, some of them nested.
[[nodiscard]] std::string randomSetup(Random &random, std::size_t objects);
