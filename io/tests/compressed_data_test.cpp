// Tests compressed arrays: writes them, reads them back in each layout, and damages
// each part.
#include "io/Src/Main/compressed_data.h"

#include "io/Src/Main/data_io.h"
#include "io/Src/Main/io_gzip.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cstring>
#include <zlib.h>

namespace {

std::string number_bytes(std::int32_t value)
{
    std::string bytes(4, '\0');
    std::memcpy(bytes.data(), &value, 4);
    return bytes;
}

std::string raw(const std::vector<std::int32_t> &values)
{
    std::string bytes(values.size() * 4, '\0');
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

std::string zipped(const std::string &bytes)
{
    std::string out(compressBound(bytes.size()), '\0');
    uLongf length = out.size();
    EXPECT_EQ(compress2(reinterpret_cast<Bytef *>(out.data()), &length,
                        reinterpret_cast<const Bytef *>(bytes.data()), bytes.size(), 5),
              Z_OK);
    out.resize(length);
    out.resize((length + 3) / 4 * 4, '\0');
    return out;
}

std::vector<std::int32_t> noise(std::size_t count)
{
    std::vector<std::int32_t> values(count);
    std::uint32_t state = 12345;
    for (std::int32_t &value : values) {
        for (int i = 0; i < 4; i++) {
            state = state * 1664525U + 1013904223U;
            value =
                static_cast<std::int32_t>((static_cast<std::uint32_t>(value) << 8) | (state >> 24));
        }
    }
    return values;
}

/// Values that compress only a little.
std::vector<std::int32_t> smooth_noise(std::size_t count)
{
    std::vector<std::int32_t> values = noise(count);
    for (std::int32_t &value : values) {
        value &= 0xfffff;
    }
    return values;
}

std::string text_of(const std::vector<std::int32_t> &values)
{
    std::string text;
    for (std::int32_t value : values) {
        text += (text.empty() ? "" : " ") + std::to_string(value);
    }
    return text;
}

class CompressedData : public ::testing::Test
{
protected:
    CompressedData() : client_(env_)
    {
        EXPECT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        take_messages();
    }

    /// The bytes between data tag and end tag of the only dataset.
    std::string area()
    {
        std::string tag = std::string("\5\0\0\0", 4) + "*DATA";
        std::size_t start = env_["f"].find(tag) + tag.size();
        return env_["f"].substr(start, env_["f"].find("*ENDDATASET") - start);
    }

    /// Replaces the data area of the only dataset and reads it.
    std::string read_area(const std::string &bytes, const char *blockfactor)
    {
        std::string whole = env_["f"];
        std::size_t start = whole.find("*DATASET");
        std::string inner = whole.substr(start, whole.find("*ENDDATASET") - start);
        inner.resize(inner.find(std::string("\5\0\0\0", 4) + "*DATA") + 9);
        std::string record = std::string("\x12\0\0\0", 4) + "BLOCKFACTOR\x1b"
                                                            "100000";
        std::string other = std::string("BLOCKFACTOR\x1b") + blockfactor;
        inner.replace(inner.find(record), record.size(),
                      number_bytes(static_cast<std::int32_t>(other.size())) + other);
        inner += bytes + "*ENDDATASET";
        std::string length = number_bytes(static_cast<std::int32_t>(inner.size()));
        env_["g"] = whole.substr(0, 36) + "u5\n" + length + inner + length;
        io_client reader(env_);
        EXPECT_EQ(reader.request(IO_OPEN_PRIMARY, "g"), IO_OK);
        take_messages();
        return reader.read("A", "B", 1);
    }

    io_memory_env env_;
    io_client client_;
};

TEST_F(CompressedData, FromAHundredElementsOn)
{
    std::vector<std::int32_t> values(99, 7);
    ASSERT_EQ(client_.write_integers("A", "B", 1, values), IO_OK);
    EXPECT_EQ(area(), raw(values));
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f2"), IO_OK);
    env_["f"].clear();
    values.push_back(7);
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client_.write_integers("A", "B", 1, values), IO_OK);
    std::string stream = zipped(raw(values));
    EXPECT_EQ(area(), number_bytes(static_cast<std::int32_t>(stream.size())) + stream);
    EXPECT_EQ(client_.read("A", "B", 1), text_of(values));
}

TEST_F(CompressedData, DataThatDoesNotCompressIsStored)
{
    std::vector<std::int32_t> values = noise(1000);
    ASSERT_EQ(client_.write_integers("A", "B", 1, values), IO_OK);
    EXPECT_EQ(area(), number_bytes(-1) + raw(values));
    EXPECT_EQ(client_.read("A", "B", 1), text_of(values));
    EXPECT_EQ(take_messages(), "");
}

TEST_F(CompressedData, BlocksWithSeparateStreams)
{
    std::vector<std::int32_t> values(250);
    for (std::size_t i = 0; i < values.size(); i++) {
        values[i] = static_cast<std::int32_t>(i % 10);
    }
    ASSERT_EQ(client_.write_integers("A", "B", 1, values), IO_OK);
    auto part = [&](std::size_t from, std::size_t to) {
        std::vector<std::int32_t> some(values.begin() + static_cast<std::ptrdiff_t>(from),
                                       values.begin() + static_cast<std::ptrdiff_t>(to));
        return some;
    };
    auto block = [&](std::size_t from, std::size_t to) {
        std::string stream = zipped(raw(part(from, to)));
        return number_bytes(static_cast<std::int32_t>(stream.size())) + stream;
    };
    std::string expected = text_of(values);
    EXPECT_EQ(read_area(block(0, 250), "100"), expected);
    EXPECT_EQ(read_area(block(0, 100) + block(100, 200) + block(200, 250), "100"), expected);
    EXPECT_EQ(read_area(block(0, 100) + number_bytes(-1) + raw(part(100, 250)), "100"), expected);
    EXPECT_EQ(
        read_area(block(0, 100) + number_bytes(-1) + raw(part(100, 200)) + block(200, 250), "100"),
        expected);
    EXPECT_EQ(
        read_area(number_bytes(-1) + raw(part(0, 100)) + block(100, 200) + block(200, 250), "100"),
        expected);
    EXPECT_EQ(read_area(block(0, 90) + block(90, 250), "100"), "code 23");
    EXPECT_NE(
        take_messages().find("io_gunzip: decompressed too little data: got 360 bytes, expected"
                             " 1000\n"),
        std::string::npos);
}

TEST_F(CompressedData, DamagedStreams)
{
    std::vector<std::int32_t> values(200, 3);
    ASSERT_EQ(client_.write_integers("A", "B", 1, values), IO_OK);
    std::string stream = zipped(raw(values));
    std::string good = number_bytes(static_cast<std::int32_t>(stream.size())) + stream;
    EXPECT_EQ(read_area(good, "100000"), text_of(values));
    std::string flipped = good;
    flipped[8] = static_cast<char>(flipped[8] ^ 0x55);
    EXPECT_EQ(read_area(flipped, "100000"), "code 23");
    EXPECT_EQ(read_area(number_bytes(0) + stream, "100000"), "code 23");
    EXPECT_EQ(read_area(number_bytes(-2) + stream, "100000"), "code 23");
    EXPECT_EQ(read_area(number_bytes(10000) + stream, "100000"), "code 10");
    EXPECT_EQ(read_area("", "100000"), "code 10");
    take_messages();
    std::string more = zipped(raw(std::vector<std::int32_t>(300, 3)));
    EXPECT_EQ(read_area(number_bytes(static_cast<std::int32_t>(more.size())) + more, "100000"),
              "code 23");
    EXPECT_EQ(take_messages(), "io_gunzip: Buffer error\niocnt: read data failed\n");
}

TEST_F(CompressedData, ACountThatIsTooLargeForTheStream)
{
    io_reporter report(env_);
    report.set_routine(collect_message);
    take_messages();
    zot_io io;
    env_["g"] = std::string(1000, 'x');
    io.stream = io_stream(env_.open("g", io_open::read));
    io.report = &report;
    data_shape shape;
    shape.format = {'u', '5'};
    ASSERT_EQ(parseStructure(report, "DBLE", shape.type), IO_OK);
    shape.end = 1000;
    shape.count = 1101 * 1000 / 8;
    EXPECT_EQ(check_data_claim(io, shape), IO_OK);
    shape.count = 2000000000;
    EXPECT_EQ(check_data_claim(io, shape), IO_COMPRESSION);
    shape.format = {'u', ' '};
    EXPECT_EQ(check_data_claim(io, shape), IO_READ_ERROR);
}

TEST_F(CompressedData, TheWrapperWorksInWords)
{
    io_reporter report(env_);
    std::vector<char> in(4000, 'a');
    std::string out;
    std::vector<char> memory(4000);
    const io_deflate_buffer buffer = {memory.data(), 4000};
    auto take = [&](const void *bytes, std::size_t count, bool last) {
        EXPECT_TRUE(last);
        out.assign(static_cast<const char *>(bytes), count);
        return true;
    };
    std::int64_t words = io_gzip(report, 'i', 9, in.data(), 1000, buffer, take);
    EXPECT_GT(words, 0);
    EXPECT_LT(words, 30);
    EXPECT_EQ(out.size(), static_cast<std::size_t>(words) * 4);
    std::vector<char> back(4000);
    EXPECT_EQ(io_gunzip(report, out.data(), words * 4, back.data(), 4000), IO_OK);
    EXPECT_EQ(back, in);
    EXPECT_EQ(io_gzip(report, 'x', 5, in.data(), 1000, buffer, take), io_gzip_nothing);
    EXPECT_EQ(io_gzip(report, 'i', 0, in.data(), 1000, buffer, take),
              io_gzip(report, 'i', 5, in.data(), 1000, buffer, take));
    std::vector<std::int32_t> random = noise(1000);
    EXPECT_EQ(io_gzip(report, 'i', 5, random.data(), 1000, buffer, take), io_gzip_larger);
    auto refuse = [](const void *, std::size_t, bool) { return false; };
    EXPECT_EQ(io_gzip(report, 'i', 5, in.data(), 1000, buffer, refuse), io_gzip_refused);
    EXPECT_EQ(io_gzip_word_bytes('r'), 4U);
    EXPECT_EQ(io_gzip_word_bytes('d'), 8U);
    EXPECT_EQ(io_gzip_word_bytes('c'), 1U);
}

TEST_F(CompressedData, EveryLevelIsAccepted)
{
    io_reporter report(env_);
    std::vector<std::int32_t> values = smooth_noise(5000);
    std::string bytes = raw(values);
    std::vector<char> memory(bytes.size());
    for (int level = 0; level <= 10; level++) {
        std::string whole(compressBound(bytes.size()), '\0');
        uLongf length = whole.size();
        ASSERT_EQ(compress2(reinterpret_cast<Bytef *>(whole.data()), &length,
                            reinterpret_cast<const Bytef *>(bytes.data()), bytes.size(),
                            level >= 1 && level <= 9 ? level : 5),
                  Z_OK);
        whole.resize(length);
        std::string out;
        auto take = [&](const void *part, std::size_t count, bool) {
            out.append(static_cast<const char *>(part), count);
            return true;
        };
        EXPECT_GT(io_gzip(report, 'c', level, bytes.data(), static_cast<std::int64_t>(bytes.size()),
                          {memory.data(), static_cast<std::int64_t>(memory.size())}, take),
                  0);
        EXPECT_TRUE(out == whole) << level;
    }
}

TEST_F(CompressedData, MessagesOfTheWrapper)
{
    io_reporter report(env_);
    report.set_routine(collect_message);
    EXPECT_EQ(io_gunzip_exactly(report, 12, 12), IO_OK);
    EXPECT_EQ(io_gunzip_exactly(report, 13, 12), IO_COMPRESSION);
    EXPECT_EQ(take_messages(),
              "io_gunzip: decompressed too much data: got 13 bytes, expected 12\n");
    // The header of a stream that needs a dictionary: zlib returns 2.
    const unsigned char wants_dictionary[] = {0x78, 0xbb, 0, 0, 0, 1};
    char out[8];
    EXPECT_EQ(io_gunzip(report, wants_dictionary, sizeof wants_dictionary, out, 8), IO_COMPRESSION);
    EXPECT_EQ(take_messages(), "io_gunzip: error 2 decompressing data\n");
}

TEST_F(CompressedData, ArgumentsThatTheArrayFunctionsRefuse)
{
    io_reporter report(env_);
    report.set_routine(collect_message);
    env_["g"] = "abc";
    zot_io io;
    io.stream = io_stream(env_.open("g", io_open::update));
    io.report = &report;
    std::vector<std::int32_t> values(100);
    EXPECT_EQ(write_compressed_dataarray(io, {'u', ' '}, IO_INTR, values.data(), 100),
              IO_BAD_FORMAT);
    EXPECT_EQ(take_messages(), "write_compressed_dataarray: bad compressed format u \n");
    EXPECT_EQ(read_compressed_dataarray(io, {'F', '5'}, IO_INTR, values.data(), 100, 1, 3),
              IO_BAD_FORMAT);
    EXPECT_EQ(take_messages(), "read_compressed_dataarray: bad compressed format F5\n");
    EXPECT_EQ(read_compressed_dataarray(io, {'l', '5'}, IO_INTR, values.data(), 100, 1, 3),
              IO_READ_ERROR);
    EXPECT_EQ(take_messages(),
              "zotreadOffset: fread failed: read 3 bytes, expected 8\n"
              "read_compressed_dataarray: can not read the compressed data length\n");
}

TEST_F(CompressedData, LevelZeroIsRefusedOnReadingToo)
{
    ASSERT_EQ(client_.write_integers("A", "B", 1, std::vector<std::int32_t>(100)), IO_OK);
    env_["f"].replace(env_["f"].find("u5\n"), 2, "u0");
    take_messages();
    EXPECT_EQ(client_.read("A", "B", 1), "code 23");
    EXPECT_EQ(take_messages(), "read_unfmt_structure: the compress level in the data is wrong\n"
                               "iocnt: read data failed\n");
}

/// The length before the stream has eight bytes. The stream consists of whole words
/// of one, four or eight bytes.
TEST_F(CompressedData, WideLengthsAndWords)
{
    std::vector<double> values(100, 1.5);
    values[7] = 0.1;
    ASSERT_EQ(client_.write_doubles("A", "B", 1, values, "l5"), IO_OK);
    std::string bytes(values.size() * sizeof(double), '\0');
    std::memcpy(bytes.data(), values.data(), bytes.size());
    std::string stream = zipped(bytes);
    stream.resize((stream.size() + 7) / 8 * 8, '\0');
    EXPECT_EQ(area(), number_bytes(static_cast<std::int32_t>(stream.size())) +
                          std::string(4, '\0') + stream);
}

/// The stream is the same for every buffer size.
TEST_F(CompressedData, TheStreamDoesNotDependOnItsParts)
{
    io_reporter report(env_);
    std::vector<std::int32_t> values = smooth_noise(50000);
    const std::string whole = zipped(raw(values));
    for (std::int64_t bytes : {4, 8, 12, 1000, 65536, 200000}) {
        std::vector<char> memory(static_cast<std::size_t>(bytes));
        std::string out;
        bool ended = false;
        auto take = [&](const void *part, std::size_t count, bool last) {
            EXPECT_FALSE(ended);
            EXPECT_TRUE(last || count == memory.size());
            ended = last;
            out.append(static_cast<const char *>(part), count);
            return true;
        };
        EXPECT_EQ(io_gzip(report, 'i', 5, values.data(), 50000, {memory.data(), bytes}, take),
                  static_cast<std::int64_t>(whole.size()) / 4);
        EXPECT_TRUE(ended);
        EXPECT_EQ(out, whole) << bytes;
    }
}

/// A stream as large as its data is stored. Its end must be recognised although the
/// buffer has no spare byte.
TEST_F(CompressedData, AStreamAsLargeAsItsDataIsKept)
{
    io_reporter report(env_);
    std::uint32_t state = 1;
    int tried = 0;
    for (std::uint32_t letters = 2; tried < 20 && letters < 2000; letters++) {
        std::string in(40, '\0');
        for (char &byte : in) {
            state = state * 1664525U + 1013904223U;
            byte = static_cast<char>('a' + (state >> 16) % (2 + letters % 14));
        }
        std::string whole(200, '\0');
        uLongf length = whole.size();
        ASSERT_EQ(compress2(reinterpret_cast<Bytef *>(whole.data()), &length,
                            reinterpret_cast<const Bytef *>(in.data()), in.size(), 5),
                  Z_OK);
        whole.resize(length);
        if (whole.size() != in.size()) {
            continue;
        }
        tried++;
        for (std::int64_t bytes = 1; bytes <= 41; bytes++) {
            std::string memory(static_cast<std::size_t>(bytes), '\0');
            std::string out;
            auto take = [&](const void *part, std::size_t count, bool) {
                out.append(static_cast<const char *>(part), count);
                return true;
            };
            EXPECT_EQ(io_gzip(report, 'c', 5, in.data(), 40, {memory.data(), bytes}, take), 40)
                << bytes;
            EXPECT_EQ(out, whole) << bytes;
        }
    }
    EXPECT_EQ(tried, 20);
}

/// The length of a stream with many parts is written after all parts.
TEST_F(CompressedData, LongStreamsStartWithTheirLength)
{
    std::vector<std::int32_t> values = smooth_noise(1000000);
    const std::string stream = zipped(raw(values));
    ASSERT_GT(stream.size(), 1000000U);
    ASSERT_EQ(client_.write_integers("A", "B", 1, values), IO_OK);
    ASSERT_EQ(client_.write_integers("C", "D", 1, {1, 2, 3}), IO_OK);
    EXPECT_TRUE(area() == number_bytes(static_cast<std::int32_t>(stream.size())) + stream);
    EXPECT_TRUE(client_.read("A", "B", 1) == text_of(values));
    EXPECT_EQ(client_.read("C", "D", 1), text_of({1, 2, 3}));
}

/// The writer stops compressing after several parts.
TEST_F(CompressedData, LongDataThatDoesNotCompressIsStored)
{
    std::vector<std::int32_t> values = noise(500000);
    ASSERT_EQ(client_.write_integers("A", "B", 1, values), IO_OK);
    ASSERT_EQ(client_.write_integers("C", "D", 1, {1, 2, 3}), IO_OK);
    EXPECT_TRUE(area() == number_bytes(-1) + raw(values));
    EXPECT_TRUE(client_.read("A", "B", 1) == text_of(values));
    EXPECT_EQ(client_.read("C", "D", 1), text_of({1, 2, 3}));
    EXPECT_EQ(take_messages(), "");
}

} // namespace
