// Uses any bytes as a container: opens, locates, reads everything in its own type
// and in other types, verifies, rebuilds. Checks that each call returns a known
// code and that reading does not change the file.
#include "io/Src/Main/container_check.h"
#include "io/Src/Main/io_session.h"

#include "io/testing/io_memory_env.h"

#include <cstdlib>
#include <vector>

namespace {

constexpr std::int64_t values_most = 1
                                     << 16; // larger input is not read, so that the fuzzer is fast

int ignore(const char *, std::int32_t)
{
    return 0;
}

void check(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

void check_code(int code)
{
    check(code >= 0 && code < IO_CODE_COUNT);
}

/// Reads the dataset at `position` as `type`. Before that, asks for the sizes.
void read(io_session &session, std::int64_t position, const char *type)
{
    io_header_storage storage;
    io_set_text(storage.type, type);
    IO_header header = storage.header();
    std::int64_t offsets[2] = {position, 0};
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    int code = session.request(IO_READ_LOCATED_DS, ignore, &header, &data);
    check_code(code);
    if (code != IO_NO_ROOM) {
        return;
    }
    // 14 can also mean that a string is too long. In that case no sizes are set.
    element_counts counts = {};
    for (std::size_t i = 0; i < counts.size(); i++) {
        counts[i] = element_array_size(data, static_cast<element_type>(i));
        if (counts[i] > values_most) {
            return;
        }
    }
    storage.attribute_count = 0;
    constexpr std::size_t slot_most = 4096;
    io_header_storage described;
    IO_header description = described.header();
    if (session.request(IO_READ_HEADER, ignore, &description, &data) != IO_OK) {
        return;
    }
    io_memory_env env;
    io_reporter quiet(env);
    quiet.set_routine(ignore);
    data_type parsed;
    const char *text = *type != '\0' ? type : described.type;
    if (parseStructure(quiet, text, parsed) != IO_OK || parsed.string_slot() > slot_most) {
        return;
    }
    element_storage arrays;
    check(arrays.allocate(counts, parsed.string_slot()));
    arrays.data().offsets = offsets;
    arrays.data().offsets_size = 2;
    check_code(session.request(IO_READ_LOCATED_DS, ignore, &header, &arrays.data()));
    // If a client does not state a width, its slots have 80 characters, whatever
    // the file says.
    std::vector<char> slots(static_cast<std::size_t>(counts[IO_STRI] * IO_STRING_SLOT));
    IO_data plain = arrays.data();
    plain.strings = slots.data();
    plain.string_slot = 0;
    check_code(session.request(IO_READ_LOCATED_DS, ignore, &header, &plain));
}

void read_all(io_session &session)
{
    open_file &file = *session.primary();
    std::vector<std::int64_t> positions;
    located_datasets found;
    io_memory_env env;
    io_reporter quiet(env);
    quiet.set_routine(ignore);
    check_code(find_datasets(quiet, file.index, "*", "*", -1, found));
    check_code(find_datasets(quiet, file.index, "?*", "P", -1, found));
    check_code(find_datasets(quiet, file.index, "I", "[A-Z]", 1, found));
    check_code(find_datasets(quiet, file.index, "I", "P", -1, found));
    check_code(find_datasets(quiet, file.index, "*", "*", -1, found));
    for (const located_dataset &record : found) {
        positions.push_back(record.position);
    }
    for (std::int64_t position : positions) {
        for (const char *type : {"", "DBLE", "INTR", "STRI:7", "STRC{INTR:1 REAL:1}"}) {
            read(session, position, type);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    io_memory_env env;
    std::string input(reinterpret_cast<const char *>(bytes), size);
    env["f"] = input;
    io_session session(env);
    IO_data data;
    data.filename = "f";
    int code = session.request(IO_OPEN_PRIMARY, ignore, nullptr, &data);
    check_code(code);
    if (code == IO_OK) {
        read_all(session);
        check_code(session.request(IO_CLOSE_PRIMARY, ignore, nullptr, &data));
    }
    io_reporter report(env);
    report.set_routine(ignore);
    std::vector<container_fault> faults;
    check_code(verify_container(env, report, "f", faults));
    check(env["f"] == input);
    check(!env.exists("f.lck"));
    rebuild_result result;
    if (rebuild_container(env, report, "f", result) == IO_OK) {
        check(session.request(IO_OPEN_PRIMARY, ignore, nullptr, &data) == IO_OK);
        check(session.primary()->index.count() == result.datasets);
    } else {
        check(env["f"] == input);
    }
    return 0;
}
