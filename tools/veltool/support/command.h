// What a command is, and the table of all of them.
#pragma once

#include "tools/veltool/support/failure.h"
#include "tools/veltool/support/options.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace veltool {

/// Words of the command line without options.
using Words = std::vector<std::string>;

/// One run of a command: made, told its options, run, thrown away.
class Task
{
public:
    virtual ~Task() = default;

    /// Declares the command's options; their values are members of the task.
    virtual void addOptions(Options &options) { (void)options; }

    /// `words` are the words that are no options, as many as the command takes.
    [[nodiscard]] virtual int run(const Words &words) = 0;
};

/// As `most`: there is no limit.
inline constexpr std::size_t anyNumber = static_cast<std::size_t>(-1);

/// An entry of the table; texts and functions are constants.
struct Command
{
    const char *name;
    const char *words; ///< as the usage shows them
    std::size_t fewest;
    std::size_t most;
    bool passesOn;       ///< every word behind the first belongs to what that names
    const char *purpose; ///< a phrase for the list of commands
    const char *details; ///< shown by the command's --help
    std::unique_ptr<Task> (*make)();
};

/// All commands, in the order in which --help lists them.
[[nodiscard]] std::span<const Command *const> allCommands();

/// Null for an unknown name.
[[nodiscard]] const Command *findCommand(const std::string &name);

/// For `make`: a new task of type T.
template <typename T>
std::unique_ptr<Task> makeTask()
{
    return std::make_unique<T>();
}

// One file each.
extern const Command checkCommand;
extern const Command formatCommand;
extern const Command treeCommand;
extern const Command getCommand;
extern const Command findTextCommand;
extern const Command setCommand;
extern const Command addCommand;
extern const Command deleteCommand;
extern const Command upgradeCommand;
extern const Command diffCommand;
extern const Command mergeCommand;
extern const Command gitSetupCommand;
extern const Command gitDiffCommand;
extern const Command explainCommand;
extern const Command rulesCommand;
extern const Command extractCommand;
extern const Command embedCommand;
extern const Command perlCommand;
extern const Command dsCommand;

} // namespace veltool
