// veltool ds: def and res files from the shell.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandLine.h"

namespace veltool {

namespace {

constexpr const Command *subCommands[] = {
    &dsListCommand, &dsLocateCommand, &dsReadCommand,    &dsWriteCommand,  &dsDeleteCommand,
    &dsCopyCommand, &dsVerifyCommand, &dsRebuildCommand, &dsUnlockCommand,
};

class DsTask : public Task
{
public:
    int run(const Words &words) override
    {
        const std::string name = "ds " + words[0];
        for (const Command *command : subCommands) {
            if (name == command->name)
                return runCommand(*command, Words(words.begin() + 1, words.end()));
        }
        throw Failure("unknown command \"" + name + "\"; see veltool ds --help");
    }
};

} // namespace

const Command dsCommand = {
    .name = "ds",
    .words = "list|locate|read|write|delete|copy|verify|rebuild|unlock ...",
    .fewest = 1,
    .most = anyNumber,
    .passesOn = true,
    .purpose = "Look into def and res files and change them",
    .details = "Each of list, locate, read, write, delete, copy, verify, rebuild and unlock shows "
               "its words and options with --help. The exit status is 0, 2 for misuse, or the "
               "code that the library gives what fails (1 to 31).",
    .make = makeTask<DsTask>,
};

} // namespace veltool
