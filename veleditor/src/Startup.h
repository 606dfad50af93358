// The whole run of the program.
#pragma once

namespace velEditor {

/// Runs the editor on the file that the last argument names. Returns the status of the
/// event loop, or 0 after an error, which is reported on the console. If that is not a
/// terminal, an error before the event loop is also shown in a box. After an error of
/// the editor, a copy of the command data is saved as `argv[1]` + ".emergency".
///
/// If the only argument is "--help" or "--version", prints the answer without a
/// display; the status is 1 if the answer could not be written.
int runEditor(int argc, char **argv);

} // namespace velEditor
