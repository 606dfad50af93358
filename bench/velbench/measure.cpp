// Reads clock and memory, repeats work, and prints results.
#include "bench/velbench/measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <unistd.h>

namespace velBench {

namespace {

constexpr int fewestRuns = 3;
constexpr int mostRuns = 50;
constexpr double enoughSeconds = 2.0;

} // namespace

double now()
{
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(time).count();
}

std::int64_t residentBytes()
{
    std::ifstream status("/proc/self/statm");
    std::int64_t total = 0;
    std::int64_t resident = 0;
    if (!(status >> total >> resident)) {
        throw Failure("the memory of the process cannot be read");
    }
    return resident * sysconf(_SC_PAGESIZE);
}

double bestOf(const std::function<void()> &reset, const std::function<void()> &work)
{
    double best = std::numeric_limits<double>::max();
    double total = 0;
    for (int run = 0; run < mostRuns && (run < fewestRuns || total < enoughSeconds); ++run) {
        reset();
        const double start = now();
        work();
        const double seconds = now() - start;
        best = std::min(best, seconds);
        total += seconds;
    }
    return best;
}

bool print(const Result &result)
{
    const int written =
        std::printf("{\"name\":\"%s\",\"bytes\":%llu,\"params\":%llu,"
                    "\"seconds\":%.9f,\"rss\":%lld}\n",
                    result.name.c_str(), static_cast<unsigned long long>(result.bytes),
                    static_cast<unsigned long long>(result.params), result.seconds,
                    static_cast<long long>(result.rss));
    return written > 0 && std::fflush(stdout) == 0;
}

std::uint64_t fileSize(const std::string &file)
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error) {
        throw Failure(file + ": " + error.message());
    }
    return size;
}

std::vector<std::string> readLines(const std::string &file)
{
    std::ifstream in(file, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    if (lines.empty()) {
        throw Failure(file + ": no lines could be read");
    }
    return lines;
}

std::vector<std::uint32_t> fixedOrder(std::size_t size, std::size_t count)
{
    std::vector<std::uint32_t> order(count);
    for (std::size_t i = 0; i < count; ++i) {
        order[i] = static_cast<std::uint32_t>(i % size);
    }
    std::uint64_t state = 20;
    for (std::size_t i = count; i > 1; --i) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        std::swap(order[i - 1], order[(state >> 33U) % i]);
    }
    return order;
}

void require(const char *message)
{
    if (message != nullptr) {
        throw Failure(message);
    }
}

} // namespace velBench
