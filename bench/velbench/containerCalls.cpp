// Measures the container library, on files in the caller's folder.
#include "bench/velbench/calls.h"

#include "io/bench/container_workloads.h"

#include <cstring>
#include <filesystem>
#include <fstream>

namespace velBench {

namespace {

constexpr std::size_t generatedBytes = std::size_t{64} << 20U;
constexpr int smallDatasets = 20000;

void check(int code)
{
    if (code != IO_OK) {
        throw Failure(io_code_text(code));
    }
}

/// A file in the caller's folder; the destructor deletes it.
class BenchFile
{
public:
    explicit BenchFile(const std::string &folder) : path_(folder + "/velbench.res") {}
    ~BenchFile() { remove(); }
    BenchFile(const BenchFile &) = delete;
    BenchFile &operator=(const BenchFile &) = delete;

    [[nodiscard]] const std::string &path() const { return path_; }

    void remove() const
    {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }

private:
    std::string path_;
};

/// Doubles from the DATA file, or generated ones.
std::vector<double> doublesOf(const Arguments &arguments)
{
    if (arguments.size() < 2) {
        return container_workloads::sample_doubles(generatedBytes);
    }
    std::vector<double> values(fileSize(arguments[1]) / sizeof(double));
    std::ifstream in(arguments[1], std::ios::binary);
    in.read(reinterpret_cast<char *>(values.data()),
            static_cast<std::streamsize>(values.size() * sizeof(double)));
    if (!in) {
        throw Failure(arguments[1] + ": cannot be read");
    }
    return values;
}

/// Times `work`, which handles `params` elements, and measures the memory that it
/// keeps.
Result measure(Result result, const std::function<void()> &reset, const std::function<void()> &work)
{
    const std::int64_t before = residentBytes();
    result.seconds = bestOf(reset, work);
    result.rss = residentBytes() - before;
    return result;
}

Result resultOf(const char *name, const std::vector<double> &values)
{
    return {.name = name, .bytes = values.size() * sizeof(double), .params = values.size()};
}

Result writeDoubles(const char *name, const char *format, const Arguments &arguments)
{
    const std::vector<double> values = doublesOf(arguments);
    const BenchFile file(arguments[0]);
    return measure(
        resultOf(name, values), [&] { file.remove(); },
        [&] { check(container_workloads::write_doubles(file.path(), format, values)); });
}

Result readDoubles(const char *name, const char *format, const Arguments &arguments)
{
    const std::vector<double> written = doublesOf(arguments);
    const BenchFile file(arguments[0]);
    check(container_workloads::write_doubles(file.path(), format, written));
    std::vector<double> values(written.size());
    Result result = measure(
        resultOf(name, values), [] {},
        [&] { check(container_workloads::read_doubles(file.path(), values)); });
    if (std::memcmp(values.data(), written.data(), values.size() * sizeof(double)) != 0) {
        throw Failure("what was read is not what was written");
    }
    return result;
}

} // namespace

Result dsWriteRaw(const Arguments &arguments)
{
    return writeDoubles("ds.write.raw", "u", arguments);
}

Result dsReadRaw(const Arguments &arguments)
{
    return readDoubles("ds.read.raw", "u", arguments);
}

Result dsWriteZ5(const Arguments &arguments)
{
    return writeDoubles("ds.write.z5", "u5", arguments);
}

Result dsReadZ5(const Arguments &arguments)
{
    return readDoubles("ds.read.z5", "u5", arguments);
}

Result dsAppend(const Arguments &arguments)
{
    const BenchFile file(arguments[0]);
    Result result = measure(
        {.name = "ds.append", .params = smallDatasets}, [&] { file.remove(); },
        [&] { check(container_workloads::append_small(file.path(), smallDatasets)); });
    result.bytes = fileSize(file.path());
    return result;
}

Result dsOpen(const Arguments &arguments)
{
    const BenchFile file(arguments[0]);
    check(container_workloads::append_small(file.path(), smallDatasets));
    return measure(
        {.name = "ds.open", .bytes = fileSize(file.path()), .params = smallDatasets}, [] {},
        [&] { check(container_workloads::open_and_close(file.path())); });
}

Result dsLocate(const Arguments &arguments)
{
    const BenchFile file(arguments[0]);
    check(container_workloads::append_small(file.path(), smallDatasets));
    container_workloads::small_datasets datasets(file.path());
    check(datasets.code());
    const std::vector<std::uint32_t> order = fixedOrder(smallDatasets, smallDatasets);
    return measure(
        {.name = "ds.locate", .bytes = fileSize(file.path()), .params = smallDatasets}, [] {},
        [&] { check(datasets.locate(order)); });
}

} // namespace velBench
