#include "tools/veltool/command.h"

namespace veltool {

namespace {

constexpr const Command *commands[] = {
    &formatCommand, &treeCommand,  &getCommand,      &findTextCommand, &setCommand,
    &diffCommand,   &mergeCommand, &gitSetupCommand, &gitDiffCommand,  &extractCommand,
    &embedCommand,  &perlCommand,  &dsCommand,
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
