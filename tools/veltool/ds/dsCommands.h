// The commands of `veltool ds`. A new one gets a line here and in the table of dsCommand.cpp,
// and its name in the words and details there.
#pragma once

#include "tools/veltool/support/command.h"

namespace veltool {

extern const Command dsListCommand;
extern const Command dsLocateCommand;
extern const Command dsReadCommand;
extern const Command dsWriteCommand;
extern const Command dsDeleteCommand;
extern const Command dsCopyCommand;
extern const Command dsVerifyCommand;
extern const Command dsRebuildCommand;
extern const Command dsUnlockCommand;

} // namespace veltool
