// Files that tell how far they have been read, on a terminal.
#pragma once

#include "io/Src/Main/io_env.h"
#include "tools/veltool/support/progressLine.h"

namespace veltool {

/// The system's own files, with a progress line for those that take long.
/// Outlives the files that it opens.
class ProgressEnv : public io_env
{
public:
    std::unique_ptr<io_file> open(const char *name, io_open how) override;
    bool remove(const char *name) override { return base_.remove(name); }
    void sleep(int milliseconds) override { base_.sleep(milliseconds); }
    const char *variable(const char *name) override { return base_.variable(name); }
    void put_trace(std::string_view line) override { base_.put_trace(line); }
    void put_error(std::string_view line) override { base_.put_error(line); }
    void break_into_debugger() override { base_.break_into_debugger(); }

private:
    io_env &base_ = io_real_env(); ///< not owned
    ProgressLine line_;
};

} // namespace veltool
