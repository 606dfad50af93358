// container_compare DIR: the def/res library against the plain calls below
// it and against SQLite, in one run; a line a comparison: name, ours, theirs,
// ratio, and what the ratio is to be.
#include "io/bench/container_workloads.h"

#include <sqlite3.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace container_workloads;

constexpr std::size_t large = std::size_t{64} << 20;
constexpr int small_count = 20000;
constexpr int runs = 5;

void require(bool good, const char *what)
{
    if (!good) {
        std::fprintf(stderr, "container_compare: %s failed\n", what);
        std::exit(2);
    }
}

double wall()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double processor()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

struct pair_of_times
{
    double ours = 1e9;
    double theirs = 1e9;
};

/// The best of several runs of both, in turn, so that both see the same machine.
pair_of_times compare(double (*clock)(), const std::function<void()> &ours,
                      const std::function<void()> &theirs)
{
    pair_of_times best;
    for (int run = 0; run < runs; run++) {
        double start = clock();
        theirs();
        double middle = clock();
        ours();
        double end = clock();
        best.theirs = std::min(best.theirs, middle - start);
        best.ours = std::min(best.ours, end - middle);
    }
    return best;
}

void print(const char *name, pair_of_times times, const char *aim)
{
    std::printf("%-28s %9.2f ms %9.2f ms  time ratio %.3f  (%s)\n", name, times.ours * 1e3,
                times.theirs * 1e3, times.ours / times.theirs, aim);
    std::fflush(stdout);
}

void compare_raw(const std::string &folder, const std::vector<double> &values)
{
    std::string ours = folder + "/ours";
    std::string theirs = folder + "/theirs";
    pair_of_times write = compare(
        wall, [&] { require(write_doubles(ours, "u", values) == IO_OK, "write_doubles"); },
        [&] {
            std::remove(theirs.c_str());
            std::FILE *file = std::fopen(theirs.c_str(), "wb");
            require(std::fwrite(values.data(), sizeof(double), values.size(), file) ==
                        values.size(),
                    "fwrite");
            require(std::fclose(file) == 0, "fclose");
        });
    print("write 64 MiB of doubles", write, "at most 1.11: 0.9 of the speed of fwrite");
    std::vector<double> read(values.size());
    pair_of_times reading = compare(
        wall, [&] { require(read_doubles(ours, read) == IO_OK, "read_doubles"); },
        [&] {
            std::FILE *file = std::fopen(theirs.c_str(), "rb");
            require(std::fread(read.data(), sizeof(double), read.size(), file) == read.size(),
                    "fread");
            std::fclose(file);
        });
    require(read == values, "comparison of what was read");
    print("read 64 MiB of doubles", reading, "at most 1.11: 0.9 of the speed of fread");
}

template <typename Value>
void compare_zlib(const char *name, const std::string &folder, const std::vector<Value> &values,
                  int (*write)(const std::string &, const char *, const std::vector<Value> &),
                  int (*read)(const std::string &, std::vector<Value> &))
{
    std::string file = folder + "/zipped";
    std::size_t bytes = values.size() * sizeof(Value);
    std::vector<Bytef> zipped(bytes);
    uLongf length = 0;
    pair_of_times writing = compare(
        processor, [&] { require(write(file, "u5", values) == IO_OK, "write"); },
        [&] {
            length = zipped.size();
            require(compress2(zipped.data(), &length,
                              reinterpret_cast<const Bytef *>(values.data()), bytes, 5) == Z_OK,
                    "compress2");
        });
    print((std::string("deflate 64 MiB of ") + name).c_str(), writing, "at most 1.05, processor");
    std::vector<Value> back(values.size());
    pair_of_times reading = compare(
        processor, [&] { require(read(file, back) == IO_OK, "read"); },
        [&] {
            uLongf size = bytes;
            require(uncompress(reinterpret_cast<Bytef *>(back.data()), &size, zipped.data(),
                               length) == Z_OK,
                    "uncompress");
        });
    require(back == values, "comparison of what was read");
    print((std::string("inflate 64 MiB of ") + name).c_str(), reading, "at most 1.05, processor");
}

/// The same bytes in the same order by nothing but system calls: the format
/// code and a zero length, the rest up to the end mark, the length again.
void append_bare(const std::string &file, const std::string &dataset)
{
    std::remove(file.c_str());
    std::FILE *stream = std::fopen(file.c_str(), "w+b");
    long position = 36;
    constexpr std::size_t head = 7;
    constexpr std::size_t tag = 6;
    std::size_t rest = dataset.size() - head;
    for (int i = 0; i < small_count; i++) {
        bool good = std::fseek(stream, position, SEEK_SET) == 0 &&
                    std::fwrite(dataset.data(), 1, head, stream) == head &&
                    std::fwrite(dataset.data() + head, 1, rest, stream) == rest &&
                    std::fseek(stream, position + 3, SEEK_SET) == 0 &&
                    std::fwrite(dataset.data() + 3, 1, 4, stream) == 4;
        require(good, "bare write");
        position += static_cast<long>(dataset.size() - tag);
    }
    require(std::fclose(stream) == 0, "fclose");
}

std::string one_dataset(const std::string &folder)
{
    std::string file = folder + "/one";
    require(append_small(file, 1) == IO_OK, "append_small");
    std::string bytes(4096, '\0');
    std::FILE *stream = std::fopen(file.c_str(), "rb");
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), stream));
    std::fclose(stream);
    std::size_t end = bytes.find("*ENDDATASET") + std::strlen("*ENDDATASET") + 4;
    return bytes.substr(36, end - 36) + "*CRASH";
}

class sqlite_store
{
public:
    explicit sqlite_store(const std::string &file)
    {
        std::remove(file.c_str());
        require(sqlite3_open(file.c_str(), &database_) == SQLITE_OK, "sqlite3_open");
        run("CREATE TABLE store(name TEXT PRIMARY KEY, data BLOB) WITHOUT ROWID");
        run("BEGIN");
        sqlite3_stmt *insert = prepare("INSERT INTO store VALUES(?, ?)");
        for (int i = 0; i < small_count; i++) {
            std::string name = small_name(i);
            std::int32_t values[4] = {i, 1, 2, 3};
            sqlite3_bind_text(insert, 1, name.c_str(), -1, SQLITE_TRANSIENT);
            sqlite3_bind_blob(insert, 2, values, sizeof values, SQLITE_TRANSIENT);
            require(sqlite3_step(insert) == SQLITE_DONE, "insert");
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        run("COMMIT");
        look_up_ = prepare("SELECT data FROM store WHERE name = ?");
        for (int i = 0; i < small_count; i++) {
            names_.push_back(small_name(i));
        }
    }

    ~sqlite_store()
    {
        sqlite3_finalize(look_up_);
        sqlite3_close(database_);
    }
    sqlite_store(const sqlite_store &) = delete;
    sqlite_store &operator=(const sqlite_store &) = delete;

    void look_up(const std::vector<std::uint32_t> &numbers)
    {
        for (std::uint32_t number : numbers) {
            const std::string &name = names_[number];
            sqlite3_bind_text(look_up_, 1, name.data(), static_cast<int>(name.size()),
                              SQLITE_STATIC);
            require(sqlite3_step(look_up_) == SQLITE_ROW, "look-up");
            require(sqlite3_column_bytes(look_up_, 0) == 16, "blob");
            sqlite3_reset(look_up_);
        }
    }

private:
    void run(const char *statement)
    {
        require(sqlite3_exec(database_, statement, nullptr, nullptr, nullptr) == SQLITE_OK,
                statement);
    }

    sqlite3_stmt *prepare(const char *statement)
    {
        sqlite3_stmt *prepared = nullptr;
        require(sqlite3_prepare_v2(database_, statement, -1, &prepared, nullptr) == SQLITE_OK,
                statement);
        return prepared;
    }

    sqlite3 *database_ = nullptr;
    sqlite3_stmt *look_up_ = nullptr;
    std::vector<std::string> names_;
};

std::vector<std::uint32_t> random_order(std::size_t count)
{
    std::vector<std::uint32_t> numbers(count);
    std::uint32_t state = 1;
    for (std::uint32_t &number : numbers) {
        state = state * 1664525U + 1013904223U;
        number = (state >> 8) % small_count;
    }
    return numbers;
}

void compare_small(const std::string &folder)
{
    std::string file = folder + "/small";
    std::string dataset = one_dataset(folder);
    print("append 20,000 datasets",
          compare(
              wall, [&] { require(append_small(file, small_count) == IO_OK, "append_small"); },
              [&] { append_bare(folder + "/bare", dataset); }),
          "at most 1.5");
    double best = 1e9;
    for (int run = 0; run < 4 * runs; run++) {
        double start = wall();
        require(open_and_close(file) == IO_OK, "open");
        best = std::min(best, wall() - start);
    }
    std::printf("%-28s %9.2f ms  (at most 5)\n", "open 20,000 datasets", best * 1e3);
    small_datasets ours(file);
    sqlite_store theirs(folder + "/sqlite");
    std::vector<std::uint32_t> numbers = random_order(1000000);
    require(ours.locate({0}) == IO_OK, "locate");
    pair_of_times located = compare(
        wall, [&] { require(ours.locate(numbers) == IO_OK, "locate"); },
        [&] { theirs.look_up(numbers); });
    print("locate 1,000,000 of 20,000", located, "below 1; SQLite looks up a blob");
    std::printf("%-28s %9.0f a second  (at least 2,000,000)\n", "", 1e6 / located.ours);
}

/// Doubling the number of datasets must not do much more than double the time.
void measure_growth(const std::string &folder)
{
    std::string file = folder + "/many";
    for (int count : {125000, 250000, 500000, 1000000}) {
        double start = wall();
        require(append_small(file, count) == IO_OK, "append_small");
        double appended = wall();
        require(open_and_close(file) == IO_OK, "open");
        double opened = wall();
        double sorted = 0;
        double scanned = 0;
        {
            small_datasets many(file);
            double before = wall();
            require(many.locate({0}) == IO_OK, "locate");
            sorted = wall() - before;
            before = wall();
            require(many.scan("*5") == count / 10, "scan");
            scanned = wall() - before;
        }
        require(truncate(file.c_str(),
                         [&] {
                             struct stat status = {};
                             stat(file.c_str(), &status);
                             return status.st_size - 1;
                         }()) == 0,
                "truncate");
        double before = wall();
        io_reporter quiet(io_real_env());
        quiet.set_sink([](std::string_view) {});
        open_file rebuilt(io_real_env(), quiet);
        require(iif_open(rebuilt, file.c_str(), "r") == IO_OK, "rebuild");
        require(rebuilt.index.count() == count, "rebuild");
        double rebuilding = wall() - before;
        iif_close(rebuilt);
        std::printf("%8d datasets: append %.3f s, open %.3f s, first locate (sort) %.3f s,"
                    " pattern scan %.3f s, rebuild %.3f s\n",
                    count, appended - start, opened - appended, sorted, scanned, rebuilding);
        std::fflush(stdout);
    }
}

} // namespace

int main(int count, char **words)
{
    if (count < 2) {
        std::fputs("usage: container_compare DIR [growth]\n", stderr);
        return 2;
    }
    std::string folder = words[1];
    if (count > 2 && std::strcmp(words[2], "growth") == 0) {
        measure_growth(folder);
        return 0;
    }
    std::vector<double> doubles = sample_doubles(large);
    compare_raw(folder, doubles);
    compare_zlib<double>("doubles", folder, doubles, write_doubles, read_doubles);
    compare_zlib<std::int32_t>("int32", folder, sample_integers(large), write_integers,
                               read_integers);
    compare_small(folder);
    return 0;
}
