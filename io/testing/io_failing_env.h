// An environment that passes every call to another one, and lets calls fail: the
// n-th one, or the n-th and all after it.
#pragma once

#include "io/Src/Main/io_env.h"

class io_failing_env : public io_env
{
public:
    /// `base` outlives this object and its files.
    explicit io_failing_env(io_env &base) : base_(base) {}

    /// The `call`-th call from now on fails (1 is the next) with `number` as
    /// errno; with `for_good` all later ones too. A write that fails has written
    /// half of its bytes.
    void fail(int call, int number, bool for_good);

    /// Whether only writes are counted and fail.
    void writes_only(bool only) { writes_only_ = only; }

    /// Calls since fail(), or since the beginning.
    int calls() const { return calls_; }

    std::unique_ptr<io_file> open(const char *name, io_open how) override;
    bool remove(const char *name) override;
    void sleep(int milliseconds) override { base_.sleep(milliseconds); }
    const char *variable(const char *name) override { return base_.variable(name); }
    void put_trace(std::string_view line) override { base_.put_trace(line); }
    void put_error(std::string_view line) override { base_.put_error(line); }
    void break_into_debugger() override { base_.break_into_debugger(); }

    /// Counts a call; true, with errno set, if it must fail.
    bool next_fails(bool is_write = false);

private:
    io_env &base_;
    int calls_ = 0;
    int failing_ = 0; ///< 0: none
    int number_ = 0;
    bool for_good_ = false;
    bool writes_only_ = false;
};
