// Standard output with error checks.
//
// All output of a command goes through this class. A full disk, a closed pipe or a
// closed standard output becomes a Failure, at the latest in `finish`.
#pragma once

#include <string>
#include <string_view>

namespace veltool {

/// A buffer for standard output. The process has one object: `out()`.
class Output
{
public:
    Output &operator<<(std::string_view text);
    Output &operator<<(char c);

    /// Writes the collected text. Throws a Failure.
    void flush();

    /// Flushes and closes standard output. Throws a Failure.
    void finish();

private:
    std::string pending_;
    bool failed_ = false; ///< reported once; later output is dropped
};

/// The one standard output of the process.
Output &out();

} // namespace veltool
