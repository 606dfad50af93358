// Starts a child program with one of its standard streams connected to a pipe.
//
// The caller owns the parent's end of the pipe (`closePipe`) and the child. A
// child that is no longer needed is passed to `release`, so that no zombie is
// left. GUI thread only. Failures are written to the error stream; the messages
// name the same system calls on all platforms.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace velEditor {

class ProcessControl
{
public:
    /// Starts the program `arguments[0]`, looked up in the search path.
    /// `stream` is the child's standard stream that becomes its end of the
    /// pipe, 0 for input or 1 for output. Each argument "filedesc" is replaced by
    /// the descriptor number of the child's end; unless `noInherit` is set, the
    /// pipe is open at that number in the child, too.
    /// Returns the child's process identifier and writes the parent's end to
    /// `p_fd`. Returns 0 on failure; `p_fd` does not change then.
    static int startProcess(const std::vector<std::string> &arguments, int *p_fd, int stream,
                            bool noInherit);

    /// The result of one read of at most `size` bytes: empty at the end of the
    /// stream, on failure, or if nothing arrives within `limit`.
    static std::string readOnce(int fd, std::size_t size, std::chrono::milliseconds limit);

    static void closePipe(int fd);

    /// Asks a child to end. The caller must still release it.
    static void terminate(int process);

    /// Gives up a child. After it has ended, the system keeps its entry until it
    /// is waited for: this call or a later call of `startProcess` or `release`
    /// does that, without blocking.
    static void release(int process);
};

} // namespace velEditor
