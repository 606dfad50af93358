// What the program does from its first to its last instruction.
#pragma once

namespace velEditor {

/// Runs the editor on the last word of the command line and gives the exit
/// status: the event loop's, or 0 after an error, which is reported on the
/// console. If that is not a terminal, an error before the event loop is shown
/// in a box as well. An editor error also leaves a copy of the command data in
/// the second word of the command line with ".emergency" appended.
///
/// "--help" or "--version" as the only word is answered on standard output
/// without a display; the status is 1 if the answer could not be written.
int runEditor(int argc, char **argv);

} // namespace velEditor
