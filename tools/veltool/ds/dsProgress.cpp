// Wraps the files that the library opens, and reports the position of each read.
#include "tools/veltool/ds/dsProgress.h"

#include <algorithm>

namespace veltool {

namespace {

/// Files below this size, in bytes, are read at once and need no progress line.
constexpr std::int64_t smallestSize = 1024 * 1024;

class ProgressFile : public io_file
{
public:
    ProgressFile(std::unique_ptr<io_file> base, std::int64_t size, ProgressLine &line)
        : base_(std::move(base)), size_(size), line_(line)
    {
    }

    std::int64_t read_at(std::int64_t position, void *to, std::size_t bytes) override
    {
        line_.update(std::min(position, size_), size_);
        return base_->read_at(position, to, bytes);
    }

    bool write_at(std::int64_t position, const void *from, std::size_t bytes) override
    {
        return base_->write_at(position, from, bytes);
    }

    std::int64_t size() override { return base_->size(); }
    bool truncate(std::int64_t size) override { return base_->truncate(size); }
    bool close() override { return base_->close(); }

private:
    std::unique_ptr<io_file> base_; ///< owned
    std::int64_t size_;             ///< in bytes, at the opening
    ProgressLine &line_;
};

} // namespace

std::unique_ptr<io_file> ProgressEnv::open(const char *name, io_open how)
{
    std::unique_ptr<io_file> file = base_.open(name, how);
    const std::int64_t size = file ? file->size() : 0;
    if (size < smallestSize) {
        return file;
    }
    return std::make_unique<ProgressFile>(std::move(file), size, line_);
}

} // namespace veltool
