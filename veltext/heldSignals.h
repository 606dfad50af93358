// Delays an interrupt while a file is being changed.
//
// A program that ends in the middle of a change leaves a temporary file or a
// lock file that somebody has to remove. So an interrupt takes effect as soon as
// the change is complete. Only the signals of the calling thread are blocked:
// it is the only thread while files are changed.
#pragma once

#include <csignal>

namespace veltext {

/// Delays signals. Objects may be nested; the end of the outermost delivers them.
class HeldSignals
{
public:
    /// Blocks SIGINT, SIGTERM and SIGHUP as long as the object lives.
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals &) = delete;
    HeldSignals &operator=(const HeldSignals &) = delete;

private:
    sigset_t before_;
};

} // namespace veltext
