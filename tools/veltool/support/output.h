// Standard output that notices when it falls short.
//
// Everything that a command prints passes here. A full disk, a closed pipe or
// a missing standard output becomes a Failure, at the latest in `finish`.
#pragma once

#include <string>
#include <string_view>

namespace veltool {

/// A buffer before standard output; one for the process, `out`.
class Output
{
public:
    Output &operator<<(std::string_view text);
    Output &operator<<(char c);

    /// Hands what was collected to the system. Throws a Failure.
    void flush();

    /// Flushes and closes standard output. Throws a Failure.
    void finish();

private:
    std::string pending_;
    bool failed_ = false; ///< said once; what follows is dropped
};

/// The one standard output of the process.
Output &out();

} // namespace veltool
