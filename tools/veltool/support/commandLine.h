// Parses the command line and runs the command.
//
// CLI11 checks and converts the options of a command and writes their help. This
// file decides which words are options, because values of parameters and names of
// files may begin with a minus sign, and scripts have their own options:
//
// - `--` ends the options;
// - a word is an option if it begins with `--`, or with `-` and a letter; so
//   "-5 [Pa]", "-.5", "-(a + b)" and "-" are arguments;
// - options may come before, between and after the arguments; only for a command
//   that passes its words on, they end at the first argument.
#pragma once

#include "tools/veltool/support/command.h"

namespace veltool {

/// Runs the command line `words` (without the name of the program) and returns the
/// exit status. All output is written when it returns.
[[nodiscard]] int runCommandLine(const Words &words);

/// Runs one command with the words after its name. Throws a Failure for a usage
/// error.
[[nodiscard]] int runCommand(const Command &command, const Words &words);

/// The words of a command line, separated. Each of `options` is "--name" or
/// "--name=value"; `plain` are the arguments.
struct SplitWords
{
    Words options;
    Words plain;
};

/// Separates the words. Throws a Failure for an unknown option, whose message
/// suggests the closest one, and for a missing value.
[[nodiscard]] SplitWords splitWords(const CLI::App &app, const Words &words, bool passesOn);

} // namespace veltool
