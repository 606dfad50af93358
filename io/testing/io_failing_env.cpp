// Counts the calls to the environment, and lets those fail that a test names.
#include "io/testing/io_failing_env.h"

#include <cerrno>

namespace {

class failing_file : public io_file
{
public:
    failing_file(io_failing_env &env, std::unique_ptr<io_file> base)
        : env_(env), base_(std::move(base))
    {
    }

    std::int64_t read_at(std::int64_t position, void *to, std::size_t bytes) override
    {
        return env_.next_fails() ? -1 : base_->read_at(position, to, bytes);
    }

    bool write_at(std::int64_t position, const void *from, std::size_t bytes) override
    {
        if (env_.next_fails(true)) {
            int number = errno;
            base_->write_at(position, from, bytes / 2);
            errno = number;
            return false;
        }
        return base_->write_at(position, from, bytes);
    }

    std::int64_t size() override { return env_.next_fails() ? -1 : base_->size(); }

    bool truncate(std::int64_t size) override
    {
        return !env_.next_fails() && base_->truncate(size);
    }

    bool close() override
    {
        bool fails = env_.next_fails();
        int number = errno;
        bool closed = base_->close();
        errno = number;
        return closed && !fails;
    }

private:
    io_failing_env &env_;
    std::unique_ptr<io_file> base_; ///< owned
};

} // namespace

void io_failing_env::fail(int call, int number, bool for_good)
{
    calls_ = 0;
    failing_ = call;
    number_ = number;
    for_good_ = for_good;
}

bool io_failing_env::next_fails(bool is_write)
{
    if (writes_only_ && !is_write) {
        return false;
    }
    calls_++;
    bool fails = failing_ > 0 && (for_good_ ? calls_ >= failing_ : calls_ == failing_);
    if (fails) {
        errno = number_;
    }
    return fails;
}

std::unique_ptr<io_file> io_failing_env::open(const char *name, io_open how)
{
    if (next_fails()) {
        return nullptr;
    }
    std::unique_ptr<io_file> file = base_.open(name, how);
    return file ? std::make_unique<failing_file>(*this, std::move(file)) : nullptr;
}

bool io_failing_env::remove(const char *name)
{
    return !next_fails() && base_.remove(name);
}
