// Forks the workers, gives them files, and passes the results on in file order.
#include "tools/veltool/support/workers.h"

#include "common/writeSignals.h"
#include "veltext/writeAll.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace veltool {

namespace {

constexpr const char *workerDied = "its worker process ended unexpectedly; try --jobs 1";
constexpr std::size_t mostJobs = 256;
constexpr std::size_t readSize = 1U << 16U;
constexpr int begun = -1; ///< the status of a message that only names the next file

/// The head of a worker's message; the bytes of both texts follow.
struct MessageHead
{
    std::uint64_t file;
    std::uint64_t outSize;
    std::uint64_t errSize;
    std::int64_t status;
};

/// The number of the next free file, in memory that all workers share.
class SharedCounter
{
public:
    SharedCounter()
    {
        void *memory = mmap(nullptr, sizeof(Number), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            throw systemError("cannot create shared memory", errno);
        }
        number_ = new (memory) Number(0);
    }
    ~SharedCounter() { munmap(number_, sizeof(Number)); }
    SharedCounter(const SharedCounter &) = delete;
    SharedCounter &operator=(const SharedCounter &) = delete;

    [[nodiscard]] std::size_t take() const { return number_->fetch_add(1); }

private:
    using Number = std::atomic<std::size_t>;
    Number *number_;
};

/// The main process's data about a worker.
struct Worker
{
    pid_t process = 0;
    int pipe = -1;
    std::string received;
    std::optional<std::size_t> file; ///< the file on which it works
};

class WorkerGroup
{
public:
    WorkerGroup(std::span<const std::string> files, const FileWork &work,
                const FailureResult &failed, const ResultSink &sink)
        : files_(files), work_(work), failed_(failed), sink_(sink)
    {
    }

    /// Closes the pipes; remaining workers then end by themselves.
    ~WorkerGroup()
    {
        for (Worker &worker : workers_) {
            end(worker);
        }
    }

    WorkerGroup(const WorkerGroup &) = delete;
    WorkerGroup &operator=(const WorkerGroup &) = delete;

    int run(std::size_t jobs)
    {
        workers_.reserve(jobs);
        for (std::size_t i = 0; i < jobs; ++i) {
            start();
        }
        if (workers_.empty()) {
            throw systemError("cannot start a worker process", errno);
        }
        while (receive()) {
        }
        // Files that no worker has taken, because all workers have ended.
        while (printed_ < files_.size()) {
            fail(printed_);
        }
        return status_;
    }

private:
    void start()
    {
        int ends[2];
        if (pipe(ends) != 0) {
            return;
        }
        const pid_t process = fork();
        if (process == 0) {
            velEditor::ignoreWriteSignals(); // a worker runs veltool, not another program
            close(ends[0]);
            for (const Worker &other : workers_) {
                close(other.pipe);
            }
            workInChild(ends[1]);
        }
        close(ends[1]);
        if (process < 0) {
            close(ends[0]);
        } else {
            workers_.push_back({.process = process, .pipe = ends[0], .received = {}, .file = {}});
        }
    }

    /// Ends with _exit, because exit handlers belong to the main process.
    [[noreturn]] void workInChild(int pipe) const
    {
        for (std::size_t file = next_.take(); file < files_.size(); file = next_.take()) {
            if (!send(pipe, file, {.status = begun, .out = {}, .err = {}})) {
                _exit(statusFailed);
            }
            if (!send(pipe, file, guardedResult(work_, files_[file]))) {
                _exit(statusFailed);
            }
        }
        _exit(statusGood);
    }

    static bool send(int pipe, std::size_t file, const FileResult &result)
    {
        const MessageHead head{file, result.out.size(), result.err.size(), result.status};
        std::string message(reinterpret_cast<const char *>(&head), sizeof head);
        message += result.out;
        message += result.err;
        return veltext::writeAll(pipe, message) == 0;
    }

    /// Waits for bytes from any worker; false if all workers have ended.
    bool receive()
    {
        std::vector<pollfd> pipes;
        for (const Worker &worker : workers_) {
            if (worker.pipe >= 0) {
                pipes.push_back({.fd = worker.pipe, .events = POLLIN, .revents = 0});
            }
        }
        if (pipes.empty()) {
            return false;
        }
        if (poll(pipes.data(), pipes.size(), -1) < 0 && errno != EINTR) {
            throw systemError("cannot read from a worker process", errno);
        }
        for (const pollfd &pipe : pipes) {
            if (pipe.revents) {
                readFrom(pipe.fd);
            }
        }
        return true;
    }

    void readFrom(int pipe)
    {
        Worker &worker = *std::find_if(workers_.begin(), workers_.end(),
                                       [&](const Worker &each) { return each.pipe == pipe; });
        char bytes[readSize];
        const ssize_t count = read(pipe, bytes, sizeof bytes);
        if (count < 0 && errno == EINTR) {
            return;
        }
        if (count <= 0) {
            end(worker);
            if (worker.file) {
                fail(*worker.file);
            }
            return;
        }
        worker.received.append(bytes, static_cast<std::size_t>(count));
        takeMessages(worker);
    }

    void takeMessages(Worker &worker)
    {
        std::string_view rest = worker.received;
        MessageHead head;
        while (rest.size() >= sizeof head) {
            std::memcpy(&head, rest.data(), sizeof head);
            if (rest.size() - sizeof head < head.outSize + head.errSize) {
                break;
            }
            rest.remove_prefix(sizeof head);
            const bool isBegun = head.status == begun;
            worker.file = isBegun ? std::optional<std::size_t>(head.file) : std::nullopt;
            if (!isBegun) {
                keep(head.file,
                     {static_cast<int>(head.status), std::string(rest.substr(0, head.outSize)),
                      std::string(rest.substr(head.outSize, head.errSize))});
            }
            rest.remove_prefix(head.outSize + head.errSize);
        }
        worker.received.erase(0, worker.received.size() - rest.size());
    }

    /// Passes the result on when all earlier results are passed on.
    void keep(std::size_t file, FileResult result)
    {
        waiting_.emplace(file, std::move(result));
        for (auto first = waiting_.begin(); first != waiting_.end() && first->first == printed_;
             first = waiting_.begin()) {
            status_ = std::max(status_, first->second.status);
            sink_(first->second);
            waiting_.erase(first);
            ++printed_;
        }
    }

    void fail(std::size_t file)
    {
        keep(file, failed_(files_[file], Failure(files_[file], 0, workerDied)));
    }

    static void end(Worker &worker)
    {
        if (worker.pipe < 0) {
            return;
        }
        close(worker.pipe);
        worker.pipe = -1;
        waitpid(worker.process, nullptr, 0);
    }

    std::span<const std::string> files_;
    const FileWork &work_;
    const FailureResult &failed_;
    const ResultSink &sink_;
    SharedCounter next_;
    std::vector<Worker> workers_;
    std::map<std::size_t, FileResult> waiting_; ///< by file; waits for earlier files
    std::size_t printed_ = 0;
    int status_ = statusGood;
};

} // namespace

int workOnFiles(std::span<const std::string> files, std::size_t jobs, const FileWork &work,
                const FailureResult &failed, const ResultSink &sink)
{
    jobs = std::min({jobs, files.size(), mostJobs});
    if (jobs > 1) {
        return WorkerGroup(files, work, failed, sink).run(jobs);
    }
    int status = statusGood;
    for (const std::string &file : files) {
        const FileResult result = guardedResult(work, file);
        status = std::max(status, result.status);
        sink(result);
    }
    return status;
}

std::size_t parseJobs(const std::string &text)
{
    std::size_t jobs = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, jobs);
    if (error != std::errc() || stop != end || jobs == 0) {
        throw Failure("--jobs must be a whole number of 1 or more, not \"" + text + '"');
    }
    return jobs;
}

} // namespace veltool
