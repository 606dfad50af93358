// The table of commands, in the order of the help; each command defines its own entry.
#include "tools/veltool/support/command.h"

#include "tools/veltool/support/closestWord.h"

namespace veltool {

namespace {

constexpr const Command *commands[] = {
    &checkCommand,   &formatCommand,  &treeCommand,    &getCommand,      &findTextCommand,
    &setCommand,     &addCommand,     &deleteCommand,  &upgradeCommand,  &diffCommand,
    &mergeCommand,   &historyCommand, &recoverCommand, &gitSetupCommand, &gitDiffCommand,
    &explainCommand, &rulesCommand,   &extractCommand, &embedCommand,    &perlCommand,
    &dsCommand,
};

} // namespace

std::span<const Command *const> allCommands()
{
    return commands;
}

const Command &requireCommand(std::span<const Command *const> table, const std::string &group,
                              const std::string &word)
{
    const std::string prefix = group.empty() ? "" : group + ' ';
    std::vector<std::string> known;
    for (const Command *command : table) {
        if (prefix + word == command->name) {
            return *command;
        }
        known.push_back(std::string(command->name).substr(prefix.size()));
    }
    const std::string meant = closestWord(word, known);
    throw Failure("unknown command \"" + prefix + word + '"' +
                  (meant.empty() ? "; see veltool " + prefix + "--help"
                                 : "; did you mean \"" + prefix + meant + "\"?"));
}

} // namespace veltool
