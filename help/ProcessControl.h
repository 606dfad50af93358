// Starts a child program with one of its standard streams joined to a pipe.
//
// The caller owns the parent's end of the pipe (`closePipe`) and looks after
// the child: one that is no longer of interest is handed to `release`, so that
// it leaves no zombie behind. GUI thread only. Failures are written to the
// error stream; the names of system calls in those messages are the ones that
// users of all platforms know them by.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace velEditor {

class ProcessControl
{
public:
    /// Starts `arguments` (the program first, looked up in the search path).
    /// `stream` is the child's standard stream that becomes its end of the
    /// pipe, 0 for input or 1 for output. An argument that reads "filedesc" is
    /// replaced by the descriptor number of the child's end, at which the child
    /// has the pipe too unless `noInherit` is set.
    /// Gives the child's process identifier and writes the parent's end to
    /// `p_fd`; 0 after a failure, `p_fd` is then left alone.
    static int startProcess(const std::vector<std::string> &arguments, int *p_fd, int stream,
                            bool noInherit);

    /// What one read of at most `size` bytes gives: empty at the end of the
    /// stream, on failure, or when nothing has come for `limit`.
    static std::string readOnce(int fd, std::size_t size, std::chrono::milliseconds limit);

    static void closePipe(int fd);

    /// Asks a child to end. It still has to be released.
    static void terminate(int process);

    /// Leaves a child to itself. The system keeps what is left of it until it
    /// has been waited for: that is done here, now or with a later call of
    /// `startProcess` or `release`, without ever blocking.
    static void release(int process);
};

} // namespace velEditor
