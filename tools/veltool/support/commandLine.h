// From the words of the command line to a run command.
//
// The options of a command are declared with CLI11, which checks and converts
// them and writes their help. Which words are options at all is decided here,
// because values of set-ups begin with a minus sign, file names do too, and
// scripts have options of their own:
//
// - `--` ends the options;
// - a word is an option when it begins with `--`, or with `-` and a letter;
//   so "-5 [Pa]", "-.5", "-(a + b)" and "-" are plain words;
// - options may stand before, between and behind the plain words, except for a
//   command that passes its words on: there they end at the first plain word.
#pragma once

#include "tools/veltool/support/command.h"

namespace veltool {

/// Runs what `words` (without the program's name) ask for and gives the exit
/// status. Everything printed has been handed to the system on return.
[[nodiscard]] int runCommandLine(const Words &words);

/// Runs one command with the words behind its name. Throws a Failure for misuse.
[[nodiscard]] int runCommand(const Command &command, const Words &words);

/// The words of a command told apart; `options` each as one word, "--name" or
/// "--name=value". Throws a Failure for an unknown option or a missing value.
struct SplitWords
{
    Words options;
    Words plain;
};
[[nodiscard]] SplitWords splitWords(const CLI::App &app, const Words &words, bool passesOn);

} // namespace veltool
