// How our programs start others with `posix_spawn`: with the default signal
// handling, even if we ignore or block signals.
#pragma once

#include "common/writeSignals.h"

#include <csignal>

#include <spawn.h>

namespace velEditor {

/// Attributes for `posix_spawn`: the child blocks no signal and gets the default
/// actions of the signals of failed writes.
class SpawnAttributes
{
public:
    SpawnAttributes()
    {
        sigset_t none;
        sigset_t defaults;
        sigemptyset(&none);
        sigemptyset(&defaults);
        addWriteSignals(defaults);
        ::posix_spawnattr_init(&attributes_);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setsigdefault(&attributes_, &defaults);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes &) = delete;
    SpawnAttributes &operator=(const SpawnAttributes &) = delete;

    /// Belongs to this object.
    [[nodiscard]] const posix_spawnattr_t *get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_;
};

} // namespace velEditor
