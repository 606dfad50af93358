// Files as texts in a map, with the errors of real files.
#include "io/testing/io_memory_env.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

/// Keeps the contents after the name was removed, like a real open file.
class memory_file : public io_file
{
public:
    memory_file(std::shared_ptr<std::string> bytes, bool writable)
        : bytes_(std::move(bytes)), writable_(writable)
    {
    }

    std::int64_t read_at(std::int64_t position, void *to, std::size_t bytes) override
    {
        auto start = std::min(static_cast<std::size_t>(position), bytes_->size());
        std::size_t part = std::min(bytes, bytes_->size() - start);
        if (part > 0) {
            std::memcpy(to, bytes_->data() + start, part);
        }
        return static_cast<std::int64_t>(part);
    }

    bool write_at(std::int64_t position, const void *from, std::size_t bytes) override
    {
        if (!writable_) {
            errno = EBADF;
            return false;
        }
        auto start = static_cast<std::size_t>(position);
        if (bytes_->size() < start + bytes) {
            bytes_->resize(start + bytes, '\0');
        }
        if (bytes > 0) {
            std::memcpy(bytes_->data() + start, from, bytes);
        }
        return true;
    }

    std::int64_t size() override { return static_cast<std::int64_t>(bytes_->size()); }

    bool truncate(std::int64_t size) override
    {
        if (!writable_) {
            errno = EBADF;
            return false;
        }
        bytes_->resize(static_cast<std::size_t>(size), '\0');
        return true;
    }

    bool close() override { return true; }

private:
    std::shared_ptr<std::string> bytes_;
    bool writable_;
};

} // namespace

std::string &io_memory_env::operator[](const std::string &name)
{
    std::shared_ptr<std::string> &bytes = files[name];
    if (!bytes) {
        bytes = std::make_shared<std::string>();
    }
    return *bytes;
}

std::unique_ptr<io_file> io_memory_env::open(const char *name, io_open how)
{
    bool there = exists(name);
    bool makes = how == io_open::create_new || how == io_open::truncate;
    if (there && how == io_open::create_new) {
        errno = EEXIST;
        return nullptr;
    }
    if (!there && !makes) {
        errno = ENOENT;
        return nullptr;
    }
    bool refused = !there && no_new_files;
    if (refused || (how != io_open::read && read_only.count(name) > 0)) {
        errno = EACCES;
        return nullptr;
    }
    std::string &bytes = (*this)[name];
    if (how == io_open::truncate) {
        bytes.clear();
    }
    return std::make_unique<memory_file>(files[name], how != io_open::read);
}

bool io_memory_env::remove(const char *name)
{
    if (files.erase(name) == 0) {
        errno = ENOENT;
        return false;
    }
    return true;
}

void io_memory_env::sleep(int milliseconds)
{
    slept_ms += milliseconds;
    if (while_sleeping != nullptr) {
        while_sleeping(*this);
    }
}

const char *io_memory_env::variable(const char *name)
{
    auto found = variables.find(name);
    return found == variables.end() ? nullptr : found->second.c_str();
}
