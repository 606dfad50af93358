// Compares the container library with other ways to store arrays, and measures
// how its times grow with the number of datasets.
#include "bench/compare/comparisons.h"

#include "bench/compare/side.h"
#include "bench/compare/sqliteStore.h"
#include "bench/velbench/measure.h"
#include "io/bench/container_workloads.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>
#include <zlib.h>

namespace velBench {

namespace {

using namespace container_workloads;

constexpr std::size_t largeBytes = std::size_t{64} << 20U;
constexpr int smallDatasets = 20000;
constexpr std::size_t lookups = 1000000;
constexpr int rawRounds = 11;
constexpr int zlibRounds = 9;
constexpr int openRounds = 20;
constexpr int locateRounds = 5;

/// Ratio of the times if our speed is 0.9 of the other side's speed.
constexpr double nineTenths = 1.11;
constexpr double openLimitMs = 5;
constexpr double locateNanoseconds = 500; // 2,000,000 in a second

void check(int code)
{
    if (code != IO_OK)
        throw Failure(io_code_text(code));
}

void ensure(bool good, const char *what)
{
    if (!good)
        throw Failure(what);
}

using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

Stream openStream(const std::string &file, const char *mode)
{
    Stream stream(std::fopen(file.c_str(), mode), std::fclose);
    ensure(stream != nullptr, "fopen");
    return stream;
}

void writePlain(const std::string &file, const void *bytes, std::size_t count)
{
    Stream stream = openStream(file, "wb");
    ensure(std::fwrite(bytes, 1, count, stream.get()) == count, "fwrite");
    ensure(std::fclose(stream.release()) == 0, "fclose");
}

void readPlain(const std::string &file, void *bytes, std::size_t count, std::size_t from = 0)
{
    Stream stream = openStream(file, "rb");
    ensure(std::fseek(stream.get(), static_cast<long>(from), SEEK_SET) == 0, "fseek");
    ensure(std::fread(bytes, 1, count, stream.get()) == count, "fread");
}

/// Where the data of a container's first dataset begins.
std::size_t dataStart(const std::string &file)
{
    constexpr std::string_view tag("\5\0\0\0*DATA", 9);
    std::string head(4096, '\0');
    readPlain(file, head.data(), head.size());
    const std::size_t found = head.find(tag);
    ensure(found != std::string::npos, "*DATA");
    return found + tag.size();
}

/// The files of one run; the destructor deletes them.
class Scratch
{
public:
    explicit Scratch(const std::string &directory) : stem_(directory + "/containers-") {}
    ~Scratch()
    {
        for (const std::string &name : names_)
            std::filesystem::remove(name);
    }
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;

    std::string path(const char *name) { return names_.emplace_back(stem_ + name); }

private:
    std::string stem_;
    std::vector<std::string> names_;
};

void compareRaw(Scratch &scratch, const std::vector<double> &values)
{
    const std::string ours = scratch.path("ours");
    const std::string theirs = scratch.path("theirs");
    const std::size_t bytes = values.size() * sizeof(double);
    Side write{[&] { std::filesystem::remove(ours); },
               [&] { check(write_doubles(ours, "u", values)); }};
    Side plainWrite{[&] { std::filesystem::remove(theirs); },
                    [&] { writePlain(theirs, values.data(), bytes); }};
    compare({&plainWrite, &write}, rawRounds);
    report("ds write 64 MiB of doubles", write, "fwrite", plainWrite, nineTenths);

    std::vector<double> back(values.size());
    Side read{[] {}, [&] { check(read_doubles(ours, back)); }};
    // Both sides read the same bytes of the same file into the same memory. The
    // place in the page cache and the alignment of the memory can change the time
    // by up to a third.
    const std::size_t from = dataStart(ours);
    Side plainRead{[] {}, [&] { readPlain(ours, back.data(), bytes, from); }};
    compare({&plainRead, &read}, rawRounds);
    ensure(back == values, "what was read is not what was written");
    report("ds read 64 MiB of doubles", read, "fread", plainRead, nineTenths);
}

template <typename Value>
void compareZlib(Scratch &scratch, const std::string &type, const std::vector<Value> &values,
                 int (*write)(const std::string &, const char *, const std::vector<Value> &),
                 int (*read)(const std::string &, std::vector<Value> &))
{
    const std::string file = scratch.path("zipped");
    const std::size_t bytes = values.size() * sizeof(Value);
    std::vector<Bytef> zipped(bytes);
    uLongf length = 0;
    Side writing{[&] { std::filesystem::remove(file); }, [&] { check(write(file, "u5", values)); }};
    Side deflating{[&] { length = zipped.size(); },
                   [&] {
                       const auto *in = reinterpret_cast<const Bytef *>(values.data());
                       ensure(compress2(zipped.data(), &length, in, bytes, 5) == Z_OK, "compress2");
                   }};
    compare({&deflating, &writing}, zlibRounds);
    report("ds write 64 MiB of " + type + ", level 5", writing, "zlib alone", deflating, 1.05);

    std::vector<Value> back(values.size());
    Side reading{[] {}, [&] { check(read(file, back)); }};
    Side inflating{[] {},
                   [&] {
                       uLongf size = bytes;
                       auto *out = reinterpret_cast<Bytef *>(back.data());
                       ensure(uncompress(out, &size, zipped.data(), length) == Z_OK, "uncompress");
                   }};
    compare({&inflating, &reading}, zlibRounds);
    ensure(back == values, "what was read is not what was written");
    report("ds read 64 MiB of " + type + ", level 5", reading, "zlib alone", inflating, 1.05);
}

/// The bytes of a small dataset, as a file has them while it is extended.
std::string smallDataset(const std::string &file)
{
    constexpr std::size_t infoBytes = 36;
    check(append_small(file, 1));
    std::string bytes(fileSize(file), '\0');
    readPlain(file, bytes.data(), bytes.size());
    const std::size_t end = bytes.find("*ENDDATASET") + std::strlen("*ENDDATASET") + 4;
    return bytes.substr(infoBytes, end - infoBytes) + "*CRASH";
}

/// Makes the same writes in the same order with only the C library: format code
/// and a length of zero, the rest up to the end mark, then the length.
void appendBare(const std::string &file, const std::string &dataset)
{
    constexpr std::size_t head = 7;
    constexpr std::size_t lengthAt = 3;
    constexpr std::size_t tag = 6;
    const Stream stream = openStream(file, "w+b");
    long position = 0;
    for (int i = 0; i < smallDatasets; ++i) {
        const std::size_t rest = dataset.size() - head;
        const char *bytes = dataset.data();
        ensure(std::fseek(stream.get(), position, SEEK_SET) == 0 &&
                   std::fwrite(bytes, 1, head, stream.get()) == head &&
                   std::fwrite(bytes + head, 1, rest, stream.get()) == rest &&
                   std::fseek(stream.get(), position + static_cast<long>(lengthAt), SEEK_SET) ==
                       0 &&
                   std::fwrite(bytes + lengthAt, 1, 4, stream.get()) == 4,
               "fwrite");
        position += static_cast<long>(dataset.size() - tag);
    }
}

void compareSmall(Scratch &scratch)
{
    const std::string file = scratch.path("small");
    const std::string bare = scratch.path("bare");
    const std::string dataset = smallDataset(scratch.path("one"));
    Side append{[&] { std::filesystem::remove(file); },
                [&] { check(append_small(file, smallDatasets)); }};
    Side plain{[&] { std::filesystem::remove(bare); }, [&] { appendBare(bare, dataset); }};
    compare({&plain, &append}, rawRounds);
    report("ds append 20,000 datasets", append, "the same writes, bare", plain, 1.5);

    Side open{[] {}, [&] { check(open_and_close(file)); }};
    compare({&open}, openRounds);
    reportValues("ds open 20,000 datasets", open.typical * 1e3, "limit", openLimitMs, "ms", 1);
}

void compareLocate(Scratch &scratch)
{
    const std::string file = scratch.path("located");
    check(append_small(file, smallDatasets));
    small_datasets datasets(file);
    check(datasets.code());
    std::vector<std::string> names;
    names.reserve(smallDatasets);
    for (int i = 0; i < smallDatasets; ++i)
        names.push_back(small_name(i));
    SqliteStore store(scratch.path("sqlite"), std::move(names));
    const std::vector<std::uint32_t> order = fixedOrder(smallDatasets, lookups);
    Side locate{[] {}, [&] { check(datasets.locate(order)); }};
    Side lookUp{[] {}, [&] { store.lookUp(order); }};
    compare({&lookUp, &locate}, locateRounds);
    report("ds locate, 1,000,000 of 20,000", locate, "SQLite, a blob by its key", lookUp, 1);
    reportValues("ds locate, one", locate.typical * 1e9 / lookups, "limit (2,000,000/s)",
                 locateNanoseconds, "ns", 1);
}

/// Times of the operations for one number of datasets, in seconds.
struct Growth
{
    double append = 0;
    double open = 0;
    double sort = 0; ///< the first locate
    double scan = 0;
    double rebuild = 0;
};

template <typename Work>
double secondsOf(Work work)
{
    const double start = now();
    work();
    return now() - start;
}

Growth measureGrowth(const std::string &file, int count)
{
    Growth growth;
    growth.append = secondsOf([&] { check(append_small(file, count)); });
    growth.open = secondsOf([&] { check(open_and_close(file)); });
    {
        small_datasets datasets(file);
        check(datasets.code());
        growth.sort = secondsOf([&] { check(datasets.locate({0})); });
        growth.scan =
            secondsOf([&] { ensure(datasets.scan("*5") == count / 10, "pattern search"); });
    }
    // If the size differs from the recorded one, the next opening scans the file.
    std::filesystem::resize_file(file, fileSize(file) - 1);
    io_reporter quiet(io_real_env());
    quiet.set_sink([](std::string_view) {});
    open_file rebuilt(io_real_env(), quiet);
    growth.rebuild = secondsOf([&] { check(iif_open(rebuilt, file.c_str(), "r")); });
    ensure(rebuilt.index.count() == count, "rebuild");
    check(iif_close(rebuilt));
    return growth;
}

} // namespace

void compareContainers(const std::string &directory)
{
    Scratch scratch(directory);
    const std::vector<double> doubles = sample_doubles(largeBytes);
    compareRaw(scratch, doubles);
    compareSmall(scratch);
    compareLocate(scratch);
    compareZlib<double>(scratch, "doubles", doubles, write_doubles, read_doubles);
    compareZlib<std::int32_t>(scratch, "int32", sample_integers(largeBytes), write_integers,
                              read_integers);
}

void compareGrowth(const std::string &directory)
{
    Scratch scratch(directory);
    const std::string file = scratch.path("many");
    // Twice as many datasets may take twice the time, and a little more for a
    // logarithm and for data that no longer fits in a cache. Quadratic work takes
    // four times as long.
    constexpr double aim = 3;
    Growth former;
    for (const int count : {125000, 250000, 500000, 1000000}) {
        const Growth growth = measureGrowth(file, count);
        const auto line = [&](const char *what, double Growth::*part) {
            const std::string name = std::string(what) + ", " + std::to_string(count);
            if (former.append > 0)
                reportValues(name, growth.*part * 1e3, "half as many", former.*part * 1e3, "ms",
                             aim);
            else
                reportAlone(name, growth.*part * 1e3, "ms");
        };
        line("ds append", &Growth::append);
        line("ds open", &Growth::open);
        line("ds sort", &Growth::sort);
        line("ds scan by pattern", &Growth::scan);
        line("ds rebuild", &Growth::rebuild);
        former = growth;
    }
}

} // namespace velBench
