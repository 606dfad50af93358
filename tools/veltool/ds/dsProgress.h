// Files that show on a terminal how far they have been read.
#pragma once

#include "io/Src/Main/io_env.h"
#include "tools/veltool/support/progressLine.h"

namespace veltool {

/// The system's files, with a progress line for large ones. It must outlive the
/// files that it opens.
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
