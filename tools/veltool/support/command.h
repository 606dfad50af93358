// Defines a command of veltool, and the table of all commands.
#pragma once

#include "tools/veltool/support/failure.h"
#include "tools/veltool/support/options.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace veltool {

/// Words of a command line.
using Words = std::vector<std::string>;

/// One run of a command. The command line creates it, sets its options, runs it
/// once and destroys it.
class Task
{
public:
    virtual ~Task() = default;

    /// Declares the options of the command; their values are members of the task.
    virtual void addOptions(Options &options) { static_cast<void>(options); }

    /// `words` are the arguments without options; their number is already checked.
    /// Returns the exit status.
    [[nodiscard]] virtual int run(const Words &words) = 0;
};

/// A `most` without a limit.
inline constexpr std::size_t anyNumber = static_cast<std::size_t>(-1);

/// An entry of the table. The texts are string literals.
struct Command
{
    const char *name;
    const char *words;   ///< the arguments, as the usage line shows them
    std::size_t fewest;  ///< the smallest number of arguments
    std::size_t most;    ///< the largest number of arguments
    bool passesOn;       ///< all words after the first belong to that word's own command
    const char *purpose; ///< the phrase in the list of commands
    const char *details; ///< the text of the command's --help
    std::unique_ptr<Task> (*make)();
};

/// All commands, in the order in which --help lists them.
[[nodiscard]] std::span<const Command *const> allCommands();

/// The command that `word` names in a table of commands. `group` is the command
/// that the table belongs to ("ds"), or empty. Throws a Failure for an unknown
/// word; its message suggests the closest name.
[[nodiscard]] const Command &requireCommand(std::span<const Command *const> table,
                                            const std::string &group, const std::string &word);

/// A value for `make`: creates a task of type T.
template <typename T>
std::unique_ptr<Task> makeTask()
{
    return std::make_unique<T>();
}

// Each is defined in its own file.
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
extern const Command historyCommand;
extern const Command recoverCommand;
extern const Command gitSetupCommand;
extern const Command gitDiffCommand;
extern const Command explainCommand;
extern const Command rulesCommand;
extern const Command extractCommand;
extern const Command embedCommand;
extern const Command perlCommand;
extern const Command dsCommand;

} // namespace veltool
