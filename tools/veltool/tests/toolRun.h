// Running the built veltool the way a shell does, and folders to run it in.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace veltool::test {

/// What a finished program left behind.
struct ToolRun
{
    int status = -1; ///< 128 + signal for one that a signal ended
    std::string out;
    std::string err;
};

/// A new folder, gone with the object.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    [[nodiscard]] std::string path(const std::string &name = {}) const;
    /// Writes a file and gives its path.
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

/// Runs a line in the shell, with $VELTOOL naming the program.
[[nodiscard]] ToolRun runShell(const std::string &line);

/// Whether this machine gives pseudo-terminals; a bare root may have none.
[[nodiscard]] bool hasTerminals();

} // namespace veltool::test
