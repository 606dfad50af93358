// Runs the built veltool as a shell does, and creates folders for it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace veltool::test {

/// The result of a finished program.
struct ToolRun
{
    int status = -1; ///< 128 + signal if a signal ended it
    std::string out;
    std::string err;
};

/// A new folder; the destructor removes it.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    [[nodiscard]] std::string path(const std::string &name = {}) const;
    /// Writes a file and returns its path.
    std::string write(const std::string &name, const std::string &bytes) const;
    [[nodiscard]] std::string read(const std::string &name) const;
    [[nodiscard]] bool has(const std::string &name) const;
    /// All names in it, sorted.
    [[nodiscard]] std::vector<std::string> names() const;

private:
    std::filesystem::path folder_;
};

/// Runs veltool with these words; `input` is its standard input.
[[nodiscard]] ToolRun runTool(const std::vector<std::string> &words, const std::string &input = {});

/// Runs a line in the shell; $VELTOOL is the path of the program.
[[nodiscard]] ToolRun runShell(const std::string &line);

/// Whether this machine has pseudo-terminals; a minimal root may not have them.
[[nodiscard]] bool hasTerminals();

} // namespace veltool::test
