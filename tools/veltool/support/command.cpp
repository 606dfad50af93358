// The table of commands, in the order of the help; each command defines its own entry.
#include "tools/veltool/support/command.h"

namespace veltool {

namespace {

constexpr const Command *commands[] = {
    &checkCommand,   &formatCommand,   &treeCommand,    &getCommand,     &findTextCommand,
    &setCommand,     &addCommand,      &deleteCommand,  &upgradeCommand, &diffCommand,
    &mergeCommand,   &gitSetupCommand, &gitDiffCommand, &explainCommand, &rulesCommand,
    &extractCommand, &embedCommand,    &perlCommand,    &dsCommand,
};

} // namespace

std::span<const Command *const> allCommands()
{
    return commands;
}

const Command *findCommand(const std::string &name)
{
    for (const Command *command : commands) {
        if (name == command->name)
            return command;
    }
    return nullptr;
}

} // namespace veltool
