// Lets each allocation fail once, or it and all later ones. Tests that the library
// returns a code with its message, that no data of the file is lost, and that no
// lock remains.
//
// This program has its own operator new.
#include "io/Src/Main/container_check.h"
#include "io/Src/Main/io_gzip.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

long allocations_left = -1; ///< number of allocations before the one that fails; −1: none fails
bool failing_for_good = false;
std::size_t largest_allocation = 0;

bool allocation_fails()
{
    if (allocations_left < 0) {
        return false;
    }
    if (allocations_left > 0) {
        allocations_left--;
        return false;
    }
    allocations_left = failing_for_good ? 0 : -1;
    errno = ENOMEM;
    return true;
}

void *allocate(std::size_t bytes)
{
    largest_allocation = std::max(largest_allocation, bytes);
    return allocation_fails() ? nullptr : std::malloc(bytes > 0 ? bytes : 1);
}

void *allocate_or_throw(std::size_t bytes)
{
    void *memory = allocate(bytes);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace

void *operator new(std::size_t bytes)
{
    return allocate_or_throw(bytes);
}

void *operator new[](std::size_t bytes)
{
    return allocate_or_throw(bytes);
}

void *operator new(std::size_t bytes, const std::nothrow_t &) noexcept
{
    return allocate(bytes);
}

void *operator new[](std::size_t bytes, const std::nothrow_t &) noexcept
{
    return allocate(bytes);
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete[](void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void *memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, const std::nothrow_t &) noexcept
{
    std::free(memory);
}

void operator delete[](void *memory, const std::nothrow_t &) noexcept
{
    std::free(memory);
}

namespace {

constexpr int most = 5000; ///< more allocations than any operation here needs

/// Received messages, in static memory because allocations may fail.
char heard[4096];
std::size_t heard_bytes = 0;

int hear(const char *text, std::int32_t length)
{
    auto bytes = std::min(static_cast<std::size_t>(length), sizeof heard - 1 - heard_bytes);
    std::memcpy(heard + heard_bytes, text, bytes);
    heard_bytes += bytes;
    heard[heard_bytes] = '\0';
    return 0;
}

class MemoryFailure : public ::testing::TestWithParam<bool>
{
protected:
    MemoryFailure()
    {
        std::string form = ::testing::TempDir() + "memory_XXXXXX";
        EXPECT_NE(mkdtemp(form.data()), nullptr);
        folder_ = form;
        name_ = form + "/f";
        target_ = form + "/target";
        io_client client(io_real_env());
        EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, name_.c_str()), IO_OK);
        EXPECT_EQ(client.write_integers("A", "P", 1, {1, 2, 3}), IO_OK);
        EXPECT_EQ(client.write_integers("A", "P", 2, {4}), IO_OK);
        EXPECT_EQ(client.write_doubles("B", "Q", 2, std::vector<double>(300, 1.5)), IO_OK);
        EXPECT_EQ(client.write_strings("C", "P", 3, {"x"}, "F"), IO_OK);
        EXPECT_EQ(client.write_doubles("D", "Q", 2, std::vector<double>(200, 2.5), "u"), IO_OK);
        EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    }

    ~MemoryFailure() override { std::filesystem::remove_all(folder_); }

    int request(io_session &session, io_request number)
    {
        IO_header header = storage_.header();
        IO_data data;
        data.filename = number == IO_OPEN_SECONDARY ? target_.c_str() : name_.c_str();
        data.strings = strings_;
        data.strings_size = 16;
        data.integers = integers_;
        data.integers_size = 8;
        data.reals = reals_;
        data.reals_size = 300;
        data.doubles = doubles_;
        data.doubles_size = 300;
        data.offsets = offsets_;
        data.offsets_size = 16;
        return session.request(number, hear, &header, &data);
    }

    void set_name(const char *what, const char *where, std::int32_t when, const char *type = "")
    {
        io_set_text(storage_.what, what);
        io_set_text(storage_.where, where);
        io_set_text(storage_.type, type);
        storage_.when = when;
        storage_.count = 4;
    }

    int open_and_locate(io_session &session, const char *what, const char *where)
    {
        if (int code = request(session, IO_OPEN_PRIMARY)) {
            return code;
        }
        set_name(what, where, -1);
        return request(session, IO_LOCATE_PRIMARY);
    }

    int write(io_session &session, const char *type, const char *format, std::int32_t count)
    {
        if (int code = request(session, IO_OPEN_PRIMARY_WRITE)) {
            return code;
        }
        set_name("N", "P", 1, type);
        io_set_text(storage_.format, format);
        storage_.count = count;
        if (int code = request(session, IO_WRITE_PRIMARY_DS)) {
            return code;
        }
        return request(session, IO_CLOSE_PRIMARY);
    }

    int read(io_session &session, const char *type)
    {
        if (int code = open_and_locate(session, "B", "Q")) {
            return code;
        }
        io_set_text(storage_.type, type);
        if (int code = request(session, IO_READ_LOCATED_DS)) {
            return code;
        }
        return request(session, IO_CLOSE_PRIMARY);
    }

    int copy(io_session &session, io_request number)
    {
        if (int code = open_and_locate(session, "D", "Q")) {
            return code;
        }
        if (int code = request(session, IO_OPEN_SECONDARY)) {
            return code;
        }
        set_name("D", "Q", 2);
        if (int code = request(session, number)) {
            return code;
        }
        return request(session, IO_CLOSE_SECONDARY);
    }

    int remove(io_session &session)
    {
        if (int code = request(session, IO_OPEN_PRIMARY_WRITE)) {
            return code;
        }
        set_name("C", "P", -1);
        if (int code = request(session, IO_DELETE_PRIMARY_DS)) {
            return code;
        }
        return request(session, IO_CLOSE_PRIMARY);
    }

    /// Runs `work` with each of its allocations failing in turn. Returns the messages.
    template <typename Work>
    std::string fail_each(Work work)
    {
        std::string all;
        int failures = 0;
        for (int allocation = 0; allocation < most; allocation++) {
            heard_bytes = 0;
            bool reached = false;
            int code = IO_OK;
            {
                io_session session(io_real_env());
                failing_for_good = GetParam();
                allocations_left = allocation;
                code = work(session);
                reached = allocations_left < 0 || (failing_for_good && allocations_left == 0);
                allocations_left = -1;
            }
            if (!reached) {
                EXPECT_EQ(code, IO_OK);
                EXPECT_GT(failures, 0);
                return all;
            }
            EXPECT_TRUE(code >= 0 && code < IO_CODE_COUNT) << code;
            failures += code != IO_OK ? 1 : 0;
            all.append(heard, heard_bytes);
            expect_whole(allocation);
        }
        ADD_FAILURE() << "more than " << most << " allocations";
        return all;
    }

    void expect_whole(int allocation)
    {
        // Without memory for the name of the lock file it cannot be removed, and
        // a message reports this.
        if (std::filesystem::remove(name_ + ".lck")) {
            std::string_view said(heard, heard_bytes);
            EXPECT_TRUE(GetParam() || said.find("iif_set_lock: malloc of ") != said.npos)
                << allocation;
        }
        std::filesystem::remove(target_);
        std::filesystem::remove(target_ + ".lck");
        io_client client(io_real_env());
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY, name_.c_str()), IO_OK) << take_messages();
        EXPECT_EQ(client.read("A", "P", 1), "1 2 3") << allocation;
        EXPECT_EQ(client.read("B", "Q", 2).substr(0, 7), "1.5 1.5") << allocation;
        take_messages();
    }

    std::filesystem::path folder_;
    std::string name_;
    std::string target_; ///< of copies
    io_header_storage storage_;
    char strings_[16 * IO_STRING_SLOT] = {};
    std::int32_t integers_[8] = {};
    float reals_[300] = {};
    double doubles_[300] = {};
    std::int64_t offsets_[16] = {};
};

bool contains(const std::string &text, const char *part)
{
    return text.find(part) != std::string::npos;
}

TEST_P(MemoryFailure, Locating)
{
    std::string said =
        fail_each([this](io_session &session) { return open_and_locate(session, "A", "P"); });
    if (!GetParam()) {
        EXPECT_TRUE(contains(said, "iif_set_lock: malloc of ")) << said;
        EXPECT_TRUE(contains(said, "iif_open_file: malloc of ")) << said;
        EXPECT_TRUE(
            contains(said, "locate_dataset: (malloc failed) syserr:: Cannot allocate memory"))
            << said;
    }
    said = fail_each([this](io_session &session) { return open_and_locate(session, "A*", "P"); });
    EXPECT_TRUE(GetParam() || contains(said, "locate_all_where: (malloc failed) syserr:")) << said;
    said = fail_each([this](io_session &session) { return open_and_locate(session, "A", "P*"); });
    EXPECT_TRUE(GetParam() || contains(said, "locate_all_what: (malloc failed) syserr:")) << said;
    fail_each([this](io_session &session) { return open_and_locate(session, "A*", "P*"); });
    EXPECT_TRUE(GetParam() || contains(said, "update_subindex: (malloc failed) syserr:")) << said;
}

TEST_P(MemoryFailure, Reading)
{
    std::string said = fail_each([this](io_session &session) { return read(session, "REAL"); });
    EXPECT_TRUE(GetParam() ||
                contains(said, "read_located_dataset_as: malloc of 2400 bytes failed\n"))
        << said;
    said = fail_each([this](io_session &session) {
        int code = open_and_locate(session, "D", "Q");
        storage_.count = 0;
        return code == IO_OK ? request(session, IO_READ_BLOCK) : code;
    });
    EXPECT_TRUE(GetParam() || contains(said, "read_located_dataset_as: malloc of 1600 bytes failed"
                                             "\n"))
        << said;
    EXPECT_TRUE(GetParam() || contains(said, "iocntc: malloc of 0 bytes failed\n")) << said;
    said = fail_each([this](io_session &session) { return read(session, ""); });
    EXPECT_TRUE(GetParam() || contains(said, "read_compressed_dataarray: malloc failed\n")) << said;
    EXPECT_EQ(reals_[299], 1.5F);
    EXPECT_EQ(doubles_[299], 1.5);
}

TEST_P(MemoryFailure, Skimming)
{
    std::string said = fail_each([this](io_session &session) {
        if (int code = open_and_locate(session, "D", "Q")) {
            return code;
        }
        open_file &file = *session.primary();
        try {
            located_start start;
            data_shape shape;
            if (int code = read_located_dataset_start(file, offsets_[0], start)) {
                return code;
            }
            int code = describe_data(file, start, shape);
            return code == IO_OK ? skim_data(file.io, shape) : code;
        } catch (const std::bad_alloc &) {
            return static_cast<int>(IO_NO_MEMORY);
        }
    });
    EXPECT_TRUE(GetParam() || contains(said, "skim_data: malloc of 1600 bytes failed\n")) << said;
}

TEST_P(MemoryFailure, Writing)
{
    fail_each([this](io_session &session) { return write(session, "INTR", "u", 4); });
    fail_each([this](io_session &session) { return write(session, "DBLE", "u5", 300); });
    fail_each([this](io_session &session) { return write(session, "STRI", "F", 2); });
}

TEST_P(MemoryFailure, Copying)
{
    struct request_name
    {
        io_request number;
        const char *busy;
    };
    for (request_name one : {request_name{IO_COPY_DATASET, "IO_COPY_DATASET"},
                             request_name{IO_COPY_ALLVALID_DS, "IO_COPY_ALLVALID_DS"},
                             request_name{IO_COPY_WHEN0_DS, "IO_COPY_WHEN0_DS"},
                             request_name{IO_COPY_DS_COMPRESS_WHEN, "IO_COPY_DS_COMPRESS_WHEN"}}) {
        std::string said =
            fail_each([this, &one](io_session &session) { return copy(session, one.number); });
        std::string busy =
            std::string("iocnt: setfilebusyflag failed when req =") + one.busy + "\n";
        EXPECT_TRUE(GetParam() || contains(said, busy.c_str())) << said;
        EXPECT_TRUE(GetParam() || contains(said, "setfilebusyflag: malloc of ")) << said;
        if (!GetParam() && one.number == IO_COPY_ALLVALID_DS) {
            EXPECT_TRUE(contains(said, "update_index: (malloc failed) syserr:")) << said;
            EXPECT_TRUE(contains(said, "copy_all_ds: update_index failed\n")) << said;
        }
        if (!GetParam() && one.number == IO_COPY_DS_COMPRESS_WHEN) {
            EXPECT_TRUE(contains(said, "copy_dataset: malloc of 1600 bytes failed\n")) << said;
        }
    }
}

TEST_P(MemoryFailure, Deleting)
{
    // A deletion that returns a failure may still have been done.
    fail_each([this](io_session &session) {
        int code = remove(session);
        return code == IO_NOT_FOUND ? IO_OK : code;
    });
}

TEST(Memory, ForVerifyingDoesNotDependOnTheData)
{
    io_memory_env env;
    io_client client(env);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client.write_doubles("Z", "P", 1, std::vector<double>(2000000), "u9"), IO_OK);
    ASSERT_EQ(client.write_doubles("R", "P", 1, std::vector<double>(200000, 3), "l"), IO_OK);
    ASSERT_EQ(client.write_strings("S", "P", 1, std::vector<std::string>(20000, "x"), "u"), IO_OK);
    ASSERT_EQ(client.write_strings("T", "P", 1, std::vector<std::string>(20000, "x"), "F"), IO_OK);
    ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    io_reporter report(env);
    std::vector<container_fault> faults;
    largest_allocation = 0;
    EXPECT_EQ(verify_container(env, report, "f", faults), IO_OK);
    EXPECT_TRUE(faults.empty());
    EXPECT_LT(largest_allocation, std::size_t{3} << 20); // the index table is the largest one
}

/// The index does not use operator new, so a separate process gets a memory limit.
TEST(Memory, ForTheIndexRunsOut)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer's memory knows no limit";
#endif
    pid_t child = fork();
    if (child == 0) {
        io_memory_env env;
        io_reporter report(env);
        report.set_routine(hear);
        index_table table;
        heard_bytes = 0;
        const rlimit none = {1, 1};
        setrlimit(RLIMIT_AS, &none);
        std::int32_t inserted = 0;
        int code = IO_OK;
        while (code == IO_OK && inserted < 1000000) { // freed memory can be used again
            code = table.insert_index(report, "Y");
            inserted += code == IO_OK ? 1 : 0;
        }
        bool good = code == IO_NO_ROOM && table.count() == inserted &&
                    std::strcmp(heard, "insert_index: (malloc failed) syserr:: Cannot allocate"
                                       " memory\n") == 0;
        _exit(good ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(Memory, ForSkippedBytesRunsOut)
{
    io_memory_env env;
    io_reporter report(env);
    report.set_routine(hear);
    heard_bytes = 0;
    std::int64_t produced = 0;
    io_inflate_source nothing = [](const void *&) { return std::size_t{0}; };
    allocations_left = 0;
    EXPECT_EQ(io_inflate(report, nothing, nullptr, 8, produced), IO_COMPRESSION);
    EXPECT_STREQ(heard, "io_gunzip: Out of memory error\n");
}

/// zlib does not use operator new either.
TEST(Memory, ForTheCompressorRunsOut)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer's memory knows no limit";
#endif
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDERR_FILENO);
        io_memory_env env;
        io_reporter report(env);
        report.set_routine(hear);
        heard_bytes = 0;
        std::int32_t numbers[100] = {};
        io_deflate_sink take = [](const void *, std::size_t, bool) { return true; };
        void *for_messages = std::malloc(4000);
        const rlimit none = {1, 1};
        setrlimit(RLIMIT_AS, &none);
        void *volatile taken = nullptr; // volatile, so that no compiler removes it
        do {
            taken = std::malloc(1000);
        } while (taken != nullptr);
        std::free(for_messages);
        bool stored =
            io_gzip(report, 'i', 5, numbers, 100, {numbers, 400}, take) == io_gzip_nothing;
        bool refused = io_gunzip(report, numbers, 400, numbers, 400) == IO_COMPRESSION;
        bool said = std::strcmp(heard, "io_gunzip: inflateInit failed: -4\n") == 0;
        _exit(stored && refused && said ? 0 : 1);
    }
    close(ends[1]);
    char said[64] = {};
    EXPECT_GT(read(ends[0], said, sizeof said - 1), 0);
    EXPECT_STREQ(said, "deflateInit error: -4\n");
    close(ends[0]);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

INSTANTIATE_TEST_SUITE_P(Once, MemoryFailure, ::testing::Values(false));
INSTANTIATE_TEST_SUITE_P(ForGood, MemoryFailure, ::testing::Values(true));

} // namespace
