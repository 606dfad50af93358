// Tests real files with real processes: killed writers, locks between two
// processes, files beyond 4 GiB.
#include "io/Src/Main/container_check.h"
#include "io/Src/Main/write_dataset.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class Process : public ::testing::Test
{
protected:
    Process()
    {
        std::string form = ::testing::TempDir() + "container_XXXXXX";
        EXPECT_NE(mkdtemp(form.data()), nullptr);
        folder_ = form;
        name_ = form + "/f";
        take_messages();
    }

    ~Process() override { fs::remove_all(folder_); }

    /// Starts a process that runs `work` with the writing end of a pipe.
    pid_t start(const std::function<void(int)> &work)
    {
        int ends[2] = {};
        EXPECT_EQ(pipe(ends), 0);
        pid_t child = fork();
        if (child == 0) {
            close(ends[0]);
            work(ends[1]);
            _exit(0);
        }
        close(ends[1]);
        pipe_ = ends[0];
        return child;
    }

    /// The next number from the pipe; −1 at its end.
    int receive() const
    {
        int number = -1;
        return read(pipe_, &number, sizeof number) == sizeof number ? number : -1;
    }

    static void send(int pipe, int number)
    {
        if (write(pipe, &number, sizeof number) != sizeof number) {
            _exit(1);
        }
    }

    int end(pid_t child)
    {
        int status = 0;
        waitpid(child, &status, 0);
        close(pipe_);
        return status;
    }

    fs::path folder_;
    std::string name_;
    int pipe_ = -1;
};

std::vector<std::int32_t> values_of(int number)
{
    std::size_t count = number % 5 == 0 ? 20000 : static_cast<std::size_t>(number % 150);
    return std::vector<std::int32_t>(count, number);
}

std::string text_of(const std::vector<std::int32_t> &values)
{
    std::string text;
    for (std::int32_t value : values) {
        text += (text.empty() ? "" : " ") + std::to_string(value);
    }
    return text;
}

/// Appends datasets from `first` on until the process is killed. Deletes every
/// seventh, closes the file from time to time, and sends each finished number.
void write_for_ever(const std::string &name, int first, int pipe)
{
    static constexpr const char *formats[] = {"u", "F", "u5", "l", "l1"};
    io_client client(io_real_env());
    for (int number = first;; number++) {
        if (number == first || number % 50 == 0) {
            if (client.request(IO_OPEN_PRIMARY_WRITE, name.c_str()) != IO_OK) {
                _exit(2);
            }
        }
        if (client.write_integers("W", "P", number, values_of(number), formats[number % 5]) !=
            IO_OK) {
            _exit(3);
        }
        int message = number;
        if (write(pipe, &message, sizeof message) != sizeof message) {
            _exit(4);
        }
        if (number % 7 == 0 && number > first && client.remove("W", "P", number - 1) != IO_OK) {
            _exit(5);
        }
    }
}

TEST_F(Process, AKilledWriterLosesNoFinishedDataset)
{
    std::mt19937 random(1);
    int next = 1;
    int checked = 0;
    for (int round = 0; round < 40; round++) {
        int first = next;
        pid_t child = start([&](int pipe) { write_for_ever(name_, first, pipe); });
        int last = receive();
        ASSERT_EQ(last, first);
        usleep(static_cast<useconds_t>(random() % 15000));
        kill(child, SIGKILL);
        for (int number = receive(); number >= 0; number = receive()) {
            last = number;
        }
        int status = end(child);
        ASSERT_TRUE(WIFSIGNALED(status)) << WEXITSTATUS(status);
        fs::remove(name_ + ".lck");
        io_client client(io_real_env());
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY, name_.c_str()), IO_OK) << take_messages();
        for (int number = first; number <= last; number++) {
            std::string text = client.read("W", "P", number);
            bool may_be_deleted = (number + 1) % 7 == 0;
            if (text != "code 17" || !may_be_deleted) {
                ASSERT_EQ(text, text_of(values_of(number))) << number;
                checked++;
            }
        }
        ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
        next = last + 2; // the dataset after the last may exist too
    }
    EXPECT_GT(checked, 100);
    io_client client(io_real_env());
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, name_.c_str()), IO_OK);
    ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    io_reporter report(io_real_env());
    std::vector<container_fault> faults;
    EXPECT_EQ(verify_container(io_real_env(), report, name_.c_str(), faults), IO_OK);
    EXPECT_TRUE(faults.empty());
}

TEST_F(Process, TwoProcessesObeyTheLock)
{
    int go[2] = {};
    ASSERT_EQ(pipe(go), 0);
    pid_t child = start([&](int pipe) {
        char byte = 0;
        io_client other(io_real_env());
        send(pipe, other.request(IO_OPEN_PRIMARY_WRITE, name_.c_str()));
        send(pipe, static_cast<int>(read(go[0], &byte, 1)));
        send(pipe, other.request(IO_CLOSE_PRIMARY));
        send(pipe, other.request(IO_OPEN_PRIMARY, name_.c_str()));
        send(pipe, static_cast<int>(read(go[0], &byte, 1)));
        send(pipe, other.request(IO_CLOSE_PRIMARY));
    });
    io_client client(io_real_env());
    auto proceed = [&] {
        EXPECT_EQ(write(go[1], "x", 1), 1);
        EXPECT_EQ(receive(), 1);
    };
    ASSERT_EQ(receive(), IO_OK);
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, name_.c_str()), IO_LOCKED);
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, name_.c_str()), IO_LOCKED);
    proceed();
    EXPECT_EQ(receive(), IO_OK); // closed
    EXPECT_EQ(receive(), IO_OK); // open to read
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, name_.c_str()), IO_LOCKED);
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, name_.c_str()), IO_OK);
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    proceed();
    EXPECT_EQ(receive(), IO_OK); // closed
    end(child);
    EXPECT_FALSE(fs::exists(name_ + ".lck"));
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, name_.c_str()), IO_OK);
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    close(go[0]);
    close(go[1]);
}

/// Writes a dataset whose data is a hole in the file (no blocks on the disk).
int write_hole(open_file &file, format_code format, std::int32_t doubles)
{
    pending_dataset pending;
    pending.format = format;
    pending.header.what = "HOLE";
    pending.header.where = "P";
    pending.header.type = "DBLE";
    pending.header.count = doubles;
    pending.header.blockfactor = 0;
    if (int code = begin_dataset(file, pending)) {
        return code;
    }
    std::int64_t end = file.io.stream.tell() + std::int64_t{8} * doubles;
    if (!file.io.stream.seek(end)) {
        return IO_CANNOT_SEEK;
    }
    return end_dataset(file, pending);
}

TEST_F(Process, FilesOfMoreThanFourGibibytes)
{
    constexpr std::int32_t doubles = 600000000;
    constexpr std::int64_t four_gib = std::int64_t{1} << 32;
    io_client client(io_real_env());
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, name_.c_str()), IO_OK);
    ASSERT_EQ(write_hole(*client.session().primary(), {'l', ' '}, doubles), IO_OK);
    ASSERT_EQ(client.write_integers("AFTER", "P", 1, {1, 2, 3}), IO_OK);
    std::int64_t after = client.position("AFTER", "P", 1);
    EXPECT_GT(after, four_gib);
    ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);

    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, name_.c_str()), IO_OK);
    EXPECT_EQ(take_messages(), "");
    EXPECT_EQ(client.locate("*", "*", -1), "AFTER P 1\nHOLE P 0\n");
    EXPECT_EQ(client.read("AFTER", "P", 1), "1 2 3");
    EXPECT_EQ(client.read("HOLE", "P", 0, "INTR:1"), "code 12");
    ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);

    io_reporter report(io_real_env());
    rebuild_result result;
    EXPECT_EQ(rebuild_container(io_real_env(), report, name_.c_str(), result), IO_OK);
    EXPECT_EQ(result.datasets, 2);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, name_.c_str()), IO_OK);
    EXPECT_EQ(client.read("AFTER", "P", 1), "1 2 3");
}

TEST_F(Process, ALengthTooLargeForNarrowOffsets)
{
    io_client client(io_real_env());
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, name_.c_str()), IO_OK);
    ASSERT_EQ(client.write_integers("A", "P", 1, {1}), IO_OK);
    EXPECT_EQ(write_hole(*client.session().primary(), {'u', ' '}, 600000000), IO_BAD_FORMAT);
    EXPECT_NE(take_messages().find("too large for integer,\nwould be written as "),
              std::string::npos);
    ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    EXPECT_LT(fs::file_size(name_), 2000U);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY, name_.c_str()), IO_OK);
    EXPECT_EQ(client.locate("*", "*", -1), "A P 1\n");
}

TEST_F(Process, OnlyRegularFilesAreOpened)
{
    io_client client(io_real_env());
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, folder_.c_str()), IO_CANNOT_SEEK);
    std::string fifo = (folder_ / "fifo").string();
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, fifo.c_str()), IO_CANNOT_SEEK);
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, fifo.c_str()), IO_CANNOT_SEEK);
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY, "/nonexistent/folder/f"), IO_CANNOT_SEEK);
}

} // namespace
