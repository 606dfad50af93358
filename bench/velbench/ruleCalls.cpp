// Measures validation, with the rule libraries that the environment names and all
// checks on.
#include "bench/velbench/calls.h"

#include "velparser/api/velparser.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace velBench {

namespace {

constexpr int coldRuns = 3;
constexpr const char *coldFormat = "%lf %lld";

void load(const std::string &file)
{
    require(velparser::readVELLibraries());
    require(velparser::loadVELFromFile(file.c_str(), "vel"));
}

void switchChecks(int on)
{
    require(velparser::setUnitsChecking(on));
    require(velparser::setBoundsChecking(on));
}

/// Validates the data; findings are not a failure of the measurement.
void validate()
{
    static_cast<void>(velparser::validateVELDataH());
}

/// Time and memory of one cold run.
struct ColdRun
{
    double seconds;
    std::int64_t rss;
};

[[noreturn]] void beColdChild(int out, const std::function<void()> &work)
{
    int status = 2;
    try {
        const double begin = now();
        const std::int64_t before = residentBytes();
        work();
        const double seconds = now() - begin;
        const auto rss = static_cast<long long>(residentBytes() - before);
        status = dprintf(out, coldFormat, seconds, rss) > 0 ? 0 : 2;
    } catch (const Failure &failure) {
        std::fprintf(stderr, "%s\n", failure.message().c_str());
    }
    std::fflush(stderr);
    _exit(status);
}

/// Runs `work` in a process that has not yet started its interpreter.
ColdRun runCold(const std::function<void()> &work)
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        throw Failure("cannot make a pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        beColdChild(ends[1], work);
    }
    close(ends[1]);
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> in(fdopen(ends[0], "r"), std::fclose);
    double seconds = 0;
    long long rss = 0;
    const bool reported = in && std::fscanf(in.get(), coldFormat, &seconds, &rss) == 2;
    if (child > 0) {
        waitpid(child, nullptr, 0);
    }
    if (!reported) {
        throw Failure("the run in a new process failed");
    }
    return {seconds, rss};
}

} // namespace

Result rulesCold(const Arguments &arguments)
{
    const std::string &file = arguments[0];
    Result result{.name = "rules.cold",
                  .bytes = fileSize(file),
                  .params = countParameters(file),
                  .seconds = std::numeric_limits<double>::max()};
    for (int run = 0; run < coldRuns; ++run) {
        const ColdRun cold = runCold([&file] {
            load(file);
            switchChecks(1);
            validate();
        });
        result.seconds = std::min(result.seconds, cold.seconds);
        result.rss = cold.rss;
    }
    return result;
}

Result rulesValidate(const Arguments &arguments)
{
    const std::string &file = arguments[0];
    Result result{
        .name = "rules.validate", .bytes = fileSize(file), .params = countParameters(file)};
    load(file);
    const std::int64_t before = residentBytes();
    const auto forgetMarks = [] {
        switchChecks(0);
        switchChecks(1);
    };
    result.seconds = bestOf(forgetMarks, validate);
    result.rss = residentBytes() - before;
    return result;
}

Result rulesEdit(const Arguments &arguments)
{
    const std::string &file = arguments[0];
    const char *path = arguments[1].c_str();
    Result result{.name = "rules.edit", .bytes = fileSize(file), .params = 1};
    load(file);
    switchChecks(1);
    validate();
    std::optional<std::string> value;
    require(velparser::getStringValue(path, &value));
    const auto give = [path](const char *text) {
        require(velparser::setStringValue(path, text));
        validate();
    };
    const std::int64_t before = residentBytes();
    // Setting the current value again would not be an edit, so reset changes it.
    result.seconds = bestOf([&] { give(""); }, [&] { give(value.value_or("").c_str()); });
    result.rss = residentBytes() - before;
    return result;
}

} // namespace velBench
