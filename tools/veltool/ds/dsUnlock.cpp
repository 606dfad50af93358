// veltool ds unlock: removes a lock file that a dead process has left.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/ds/dsContainer.h"
#include "tools/veltool/ds/fileHolders.h"
#include "tools/veltool/support/output.h"

#include "io/Src/Main/lock_file.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace veltool {

namespace {

/// Identifies a lock file, to notice if another process creates a new one.
struct LockIdentity
{
    struct stat status = {};
    lock_state state;

    [[nodiscard]] bool same(const LockIdentity &other) const
    {
        return status.st_dev == other.status.st_dev && status.st_ino == other.status.st_ino &&
               state.level == other.state.level;
    }
};

LockIdentity identify(const std::string &lock)
{
    LockIdentity identity;
    identity.state = read_lock_file(io_real_env(), lock.c_str());
    if (lstat(lock.c_str(), &identity.status) == 0) {
        identity.state.exists = true;
    }
    return identity;
}

std::string describe(const lock_state &state)
{
    if (!state.level) {
        return "locked; the lock file has no level";
    }
    const std::string level = std::to_string(*state.level);
    if (*state.level < 0) {
        return "locked for writing (level " + level + ")";
    }
    return "locked for reading (level " + level + ")";
}

std::string describe(const FileHolder &holder)
{
    return "process " + std::to_string(holder.process) +
           (holder.program.empty() ? "" : " (" + holder.program + ")");
}

class UnlockTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--force", force_, "Remove the lock even if a process holds it");
    }

    int run(const Words &words) override
    {
        requireFile(words[0]);
        file_ = words[0];
        const std::string lock = lock_file_name(file_);
        const LockIdentity before = identify(lock);
        if (!before.state.exists) {
            requireContainer();
            out() << file_ << ": not locked\n";
            return statusGood;
        }
        out() << file_ << ": " << describe(before.state) << '\n';
        report(findHolders(file_), before.status.st_uid);
        if (!force_ && !identify(lock).same(before)) {
            refuse("another process has just locked it");
        }
        if (unlink(lock.c_str()) != 0 && errno != ENOENT) {
            throw ContainerFailure::sentence(systemError(lock, errno).message(), IO_LOCKED);
        }
        out() << file_ << ": lock removed\n";
        return statusGood;
    }

private:
    void requireContainer() const
    {
        struct stat ignored = {};
        if (stat(file_.c_str(), &ignored) != 0) {
            throw ContainerFailure::sentence(file_ + ": the file does not exist", IO_ABSENT);
        }
    }

    /// Prints which processes have the file open. Without --force, throws if one
    /// has it open or may have.
    void report(const FileHolders &found, unsigned owner) const
    {
        for (const FileHolder &holder : found.holders) {
            out() << file_ << ": open in " << describe(holder) << '\n';
        }
        const bool hidden = std::find(found.hiddenUsers.begin(), found.hiddenUsers.end(), owner) !=
                            found.hiddenUsers.end();
        if (!found.known) {
            out() << file_ << ": this system does not show which processes have it open\n";
        } else if (hidden) {
            out() << file_ << ": the processes of the user who made the lock cannot be seen\n";
        } else if (found.holders.empty() && found.hiddenUsers.empty()) {
            out() << file_ << ": no process on this machine has it open\n";
        } else if (found.holders.empty()) {
            out() << file_ << ": no process that this user can see has it open\n";
        }
        if (force_) {
            return;
        }
        if (!found.holders.empty()) {
            refuse(describe(found.holders.front()) + " holds the file");
        }
        if (!found.known || hidden) {
            refuse("a process may hold the file");
        }
    }

    [[noreturn]] void refuse(const std::string &why) const
    {
        throw ContainerFailure::sentence(file_ + ": not unlocked, because " + why +
                                             "; use --force to remove the lock anyway",
                                         IO_LOCKED);
    }

    bool force_ = false;
    std::string file_;
};

} // namespace

const Command dsUnlockCommand = {
    .name = "ds unlock",
    .words = "FILE",
    .fewest = 1,
    .most = 1,
    .passesOn = false,
    .purpose = "Remove the lock of a process that has ended",
    .details =
        "Prints how FILE is locked and which processes on this machine have it open. Removes "
        "the lock file if there are none, or with --force. Status 21 if the lock stays. It "
        "cannot see processes on other machines.",
    .make = makeTask<UnlockTask>,
};

} // namespace veltool
