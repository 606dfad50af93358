// Tests that each message occurs: lets calls fail one by one, damages files byte by
// byte, and looks for each message in the output.
#include "io/testing/io_failing_env.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

void expect_all_heard(const std::string &said, std::initializer_list<const char *> expected)
{
    for (const char *message : expected) {
        EXPECT_NE(said.find(message), std::string::npos) << "never said: " << message;
    }
}

constexpr int large = 140000; ///< a number of doubles: one block of a copy and a rest

void make_files(io_env &env)
{
    io_client client(env);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client.write_integers("A", "P", 1, {1, 2, 3}, "u"), IO_OK);
    ASSERT_EQ(client.write_doubles("Z", "P", 2, std::vector<double>(300, 1.5), "u5"), IO_OK);
    ASSERT_EQ(client.write_doubles("L", "P", 0, std::vector<double>(large, 7), "u"), IO_OK);
    ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    take_messages();
}

int text_request(io_client &client, io_request number, const char *access = nullptr)
{
    std::int32_t integer = 5;
    float real = 5;
    char line[IO_STRING_SLOT] = "         5";
    IO_data data;
    data.filename = "t";
    data.access = access;
    data.integers = &integer;
    data.integers_size = 1;
    data.reals = &real;
    data.reals_size = 1;
    data.strings = line;
    data.strings_size = 1;
    return client.request(number, IO_header(), data);
}

int large_request(io_client &client, io_request number, std::vector<double> &values,
                  const char *format)
{
    std::int64_t offsets[2] = {client.position("Z", "P", 2), 0};
    io_header_storage header = named_header("N", "P", "DBLE");
    io_set_text(header.format, format);
    header.when = 9;
    header.count = static_cast<std::int32_t>(values.size());
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    data.doubles = values.data();
    data.doubles_size = header.count;
    return client.request(number, header.header(), data);
}

/// Writes a header as long as the stream's buffer, so that each part of it can fail.
int write_long_header(io_client &client)
{
    constexpr std::int32_t count = 4000;
    std::vector<char> attributes(static_cast<std::size_t>(count * IO_STRING_SLOT), 'x');
    for (std::int32_t i = 1; i <= count; i++) {
        attributes[static_cast<std::size_t>(i * IO_STRING_SLOT - 1)] = '\0';
    }
    io_header_storage names = named_header("H", "P", "INTR");
    IO_header header = names.header();
    std::int32_t slots = count;
    header.attribute_count = &slots;
    header.attributes = attributes.data();
    IO_data data;
    return client.request(IO_WRITE_PRIMARY_DS, header, data);
}

/// Values that do not compress, and more of them than the stream's buffer can
/// store.
std::vector<double> noise()
{
    std::vector<double> values(60000);
    std::uint64_t state = 1;
    for (double &value : values) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        value = static_cast<double>(state >> 11);
    }
    return values;
}

void use_files(io_client &client)
{
    std::vector<double> numbers = noise();
    client.request(IO_OPEN_PRIMARY_WRITE, "f");
    client.read("A", "P", 1);
    client.read("Z", "P", 2, "REAL");
    large_request(client, IO_READ_HEADER, numbers, "");
    large_request(client, IO_READ_DATA, numbers, "");
    large_request(client, IO_READ_BLOCK, numbers, "");
    large_request(client, IO_READ_COMPRESSED, numbers, "");
    write_long_header(client);
    large_request(client, IO_WRITE_PRIMARY_DS, numbers, "u");
    large_request(client, IO_WRITE_COMPRESSED, numbers, "u5");
    large_request(client, IO_WRITE_HEADER, numbers, "u");
    large_request(client, IO_WRITE_DATA, numbers, "u");
    large_request(client, IO_END_DATASET, numbers, "u");
    client.remove("A", "P", 1);
    client.request(IO_OPEN_SECONDARY, "g");
    client.request(IO_COPY_ALLVALID_DS);
    client.request(IO_CLOSE_SECONDARY);
    client.request(IO_CLOSE_PRIMARY);
    client.request(IO_OPEN_PRIMARY, "f");
    client.write_integers("A", "P", 3, {1});
    client.request(IO_OPEN_PRIMARY, "f");
    text_request(client, IO_OPEN_TEXT, "w");
    text_request(client, IO_WRITE_TEXT);
    text_request(client, IO_CLOSE_TEXT);
    text_request(client, IO_OPEN_TEXT, "a");
    text_request(client, IO_CLOSE_TEXT);
    text_request(client, IO_OPEN_TEXT, "r");
    text_request(client, IO_READ_INTEGERS);
    text_request(client, IO_READ_REALS);
    text_request(client, IO_CLOSE_TEXT);
}

/// All messages while the calls from the first to the last fail in turn.
std::string said_by_failing_calls(bool for_good)
{
    std::string said;
    for (int call = 1;; call++) {
        io_memory_env memory;
        make_files(memory);
        memory.variables["ZOT_IO_TRACE"] = "1";
        io_failing_env env(memory);
        env.fail(call, EIO, for_good);
        bool reached = false;
        {
            io_client client(env);
            use_files(client);
            reached = env.calls() >= call;
        }
        said += memory.trace;
        if (!reached) {
            return said;
        }
    }
}

TEST(Messages, OfFailedCalls)
{
    std::string said = said_by_failing_calls(false) + said_by_failing_calls(true);
    take_messages();
    expect_all_heard(
        said, {
                  "begin_change: can't write file end tag: ",
                  "closefile index fail: can't go to index location\n",
                  "closefile index fail: wrote crash tag OK\n",
                  "copy_all_ds: copy_dataset failed on L/P/0\n",
                  "copy_dataset: read data block 1/1 failed: read ",
                  "copy_dataset: read remaining data failed\n",
                  "copy_dataset: write data block failed\n",
                  "copy_dataset: write remaining data failed\n",
                  "delete_bywhat: delete_process failed\n",
                  "delete_ds: delete_bywhat failed\n",
                  "delete_process_sub: (can't write the delete tag) syserr:: Input/output error\n",
                  "delete_process_sub: error reading format tag\n",
                  "Failed to get read/write permission\n",
                  "Failed to get read/write permission, trying read-only\n",
                  "iif_close: error closing file: Input/output error\n",
                  "iif_create_empty: can't write the INFO block\n",
                  "iif_flush: can't get the filesize: Input/output error\n",
                  "iif_flush: can't go to end of file : Input/output error\n",
                  "iif_flush: can't write filesize\n",
                  "iif_flush: write_index failed\n",
                  "iif_flush: writing final index\n",
                  "iif_open: can't go to the end of the file  f: ",
                  "iif_open: can't open file f: Input/output error\n",
                  "iif_open: can't read the first seven characters\n",
                  "iif_open: unable to read the stored index, attempting to rebuild it\n",
                  "iif_set_lock: error opening lockfile f.lck for removing: Input/output error\n",
                  "iif_set_lock: error opening lockfile f.lck for writing: Input/output error\n",
                  "iif_set_lock: error reading lock file f.lck\n",
                  "iif_set_lock: error writing to lock file f.lck: Input/output error\n",
                  "iif_close_text: Closing file t\n",
                  "iocnt: close primary file failed\n",
                  "iocnt: close secondary file failed\n",
                  "iocnt: close the file that was open failed\n",
                  "iocnt: close the plain text file failed\n",
                  "iocnt: copy_dataset failed\n",
                  "iocnt: delete_ds failed\n",
                  "iocnt: no plain text file is opened\n",
                  "iocnt: no primary file is opened\n",
                  "iocnt: no secondary file is opened\n",
                  "iocnt: open the plain text file failed\n",
                  "iocnt: open the primary file failed\n",
                  "iocnt: open the secondary file failed\n",
                  "iocnt: read block failed\n",
                  "iocnt: read compressed data failed\n",
                  "iocnt: read data failed\n",
                  "iocnt: read header failed\n",
                  "iocnt: read integers failed\n",
                  "iocnt: read reals failed\n",
                  "iocnt: setfilebusyflag failed when req =IO_WRITE_PRIMARY_DS\n",
                  "iocnt: write compressed data failed\n",
                  "iocnt: write data failed\n",
                  "iocnt: write dataset failed\n",
                  "iocnt: write header failed\n",
                  "iocnt: write text failed\n",
                  "setfilebusyflag: can't write the file information to the lock file: ",
                  "setfilebusyflag: more than one user is reading f or the wrong lock file f.lck "
                  "exists\n",
                  "warning: unable to lock file f for reading, continuing anyway\n",
                  "write_compressed_dataarray: (fwrite failed) syserr:: Input/output error\n",
                  "write_dataset abort: fseek failed\n",
                  "write_dataset aborting\n",
                  "write_dataset: (can't write the format string) syserr:: Input/output error\n",
                  "write_dataset: can't write dataset data\n",
                  "write_dataset: can't write dataset header\n",
                  "write_dataset: can't write dataset length: ",
                  "write_dataset: can't write file end tag: ",
                  "zotreadOffset: fread failed: read 0 bytes, expected 21: Input/output error\n",
                  "zotreadString: fread failed: read ",
              });
}

/// A small file with data of each kind. With `crashed`, as a killed writer leaves
/// it.
std::string sample(const char *format, bool crashed)
{
    io_memory_env env;
    io_client client(env);
    EXPECT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    std::vector<std::int32_t> numbers(120);
    for (std::size_t i = 0; i < numbers.size(); i++) {
        numbers[i] = static_cast<std::int32_t>(i * i);
    }
    EXPECT_EQ(client.write_integers("I", "P", 1, numbers, format), IO_OK);
    EXPECT_EQ(client.write_strings("S", "P", 2, {"one", "two"}, format), IO_OK);
    EXPECT_EQ(client.write_doubles("D", "P", 3, {1, 2, 3}, format), IO_OK);
    EXPECT_EQ(client.remove("S", "P", 2), IO_OK);
    std::string bytes = env["f"];
    EXPECT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    return crashed ? bytes : env["f"];
}

/// All messages while a file is opened and its datasets are read, then deleted or
/// copied.
std::string said_by(const std::string &bytes, bool copies)
{
    io_memory_env env;
    env.variables["ZOT_IO_TRACE"] = "1";
    env["g"] = bytes;
    io_client client(env);
    client.request(IO_OPEN_PRIMARY, "g");
    io_header_storage header;
    std::int64_t offsets[2] = {client.position("I", "P", 1), 0};
    IO_data data;
    data.offsets = offsets;
    data.offsets_size = 2;
    client.read("I", "P", 1);
    client.read("D", "P", 3);
    client.request(IO_READ_COMPRESSED, header.header(), data);
    if (copies) {
        client.request(IO_OPEN_SECONDARY, "h");
        client.request(IO_COPY_ALLVALID_DS);
    } else {
        client.remove("D", "P", 3);
    }
    take_messages();
    return env.trace;
}

TEST(Messages, OfDamagedFiles)
{
    std::string said;
    for (const char *format : {"u5", "F"}) {
        for (bool crashed : {false, true}) {
            std::string bytes = sample(format, crashed);
            for (std::size_t at = 0; at < bytes.size(); at++) {
                std::string flipped = bytes;
                flipped[at] = static_cast<char>(flipped[at] ^ (at % 2 == 0 ? 0x01 : 0x90));
                said += said_by(bytes.substr(0, at), at % 3 == 0);
                said += said_by(flipped, at % 3 == 0);
            }
        }
    }
    expect_all_heard(
        said,
        {
            "copy_all_ds: copy_dataset failed on I/P/1\n",
            "create_indextable: index dataset is not formatted, file may be corrupt.\n",
            "create_indextable: index is wrong: bad line ",
            "create_indextable: index is wrong: missing count\n",
            "create_indextable: index is wrong: missing end tag\n",
            "create_indextable: stored index is wrong: missing start tag\n",
            "Copying dataset I:P:1 to I:P:1\n",
            "delete_ds: locate_dataset failed\n",
            "iif_open: can't read the first seven characters\n",
            "iif_open: fail to read the filesize\n",
            "iif_open: fail to read the INFO tag\n",
            "iif_open: filesize has changed (recorded ",
            "iif_open: the file is not in ZOT-5.x format\n",
            "iif_open: unable to read the stored index, attempting to rebuild it\n",
            "io_gunzip: Buffer error\n",
            "io_gunzip: Data error\n",
            "openfile: corrupt file: trailing garbage after start tag.\n",
            "read_compressed_data: only supports binary data\n",
            "read_compressed_dataarray: fread failed: read ",
            "read_datatag: bad tag length, read ",
            "read_datatag: bad tag, read \"",
            "read_header: bad blockfactor record ",
            "read_header: bad datatype record ",
            "read_header: bad header record ",
            "read_header: bad numattrb record ",
            "read_header: bad number record ",
            "read_header: bad what record ",
            "read_header: bad when record ",
            "read_header: bad where record ",
            "read_header: blockfactor missing for compressed dataset in g\n",
            "read_located_dataset_as: bad data set end tag: expected *ENDDATASET got \"",
            "read_located_dataset_start: bad data set tag: expected *DATASET got \"",
            "read_located_dataset_start: bad dataset length ",
            "read_located_dataset_start: the data set location is incorrect (invalid format char '",
            "recreate_indextable: Bad file: expected dataset, index or end, got \"",
            "recreate_indextable: Bad file: final dataset length field ",
            "recreate_indextable: error reading initial dataset length in dataset of format ",
            "recreate_indextable: failed to read first offset from skipped index\n",
            "recreate_indextable: failed to read second offset from skipped index\n",
            "recreate_indextable: fseek of ",
            "recreate_indextable: warning: file was not closed correctly, data may be "
            "inconsistent\n",
            "recreate_indextable: warning: truncated (or bad) index data at end of file while",
            "zotreadDble: not a line of numbers: \"",
            "zotreadHdrString: not enough buffer space for string: have 81, require > ",
            "zotreadIntr: not a line of numbers: \"",
            "zotreadOffset: fread failed: read ",
            "zotreadOffset: not an offset: \"",
            "zotreadString: read too many characters: ",
        });
}

} // namespace
