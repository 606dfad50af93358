// Tests what the library writes into a client's arrays, for every type and every
// request that fills them: never beyond the stated sizes, and the same values as an
// independent model.
#include "io/Src/Main/zot_primitives.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t guard_bytes = 0; // the sanitizer checks the end itself
#else
constexpr std::size_t guard_bytes = 600;
#endif
constexpr char guard = 0x5a;

/// An array with exactly so many bytes. It checks that the bytes after it do not
/// change.
class stated_array
{
public:
    explicit stated_array(std::size_t bytes)
        : bytes_(bytes), memory_(std::make_unique<char[]>(bytes + guard_bytes))
    {
        std::fill_n(memory_.get(), bytes + guard_bytes, guard);
    }
    ~stated_array()
    {
        const char *end = memory_.get() + bytes_;
        EXPECT_TRUE(std::all_of(end, end + guard_bytes, [](char c) { return c == guard; }))
            << "written after the end of " << bytes_ << " bytes";
    }
    stated_array(const stated_array &) = delete;
    stated_array &operator=(const stated_array &) = delete;

    template <typename Value>
    Value *as()
    {
        return reinterpret_cast<Value *>(memory_.get());
    }

private:
    std::size_t bytes_;
    std::unique_ptr<char[]> memory_;
};

/// A record whose arrays hold `values` of each type.
class stated_data
{
public:
    stated_data(std::size_t values, std::size_t slot)
        : strings_(values * (slot > 0 ? slot : IO_STRING_SLOT)), chars_(values),
          integers_(values * 4), reals_(values * 4), doubles_(values * 8), logicals_(values)
    {
        auto size = static_cast<std::int64_t>(values);
        data.offsets = offsets;
        data.offsets_size = 2;
        data.strings = strings_.as<char>();
        data.string_slot = static_cast<std::int64_t>(slot);
        data.chars = chars_.as<char>();
        data.integers = integers_.as<std::int32_t>();
        data.reals = reals_.as<float>();
        data.doubles = doubles_.as<double>();
        data.logicals = logicals_.as<std::uint8_t>();
        data.strings_size = data.chars_size = data.integers_size = size;
        data.reals_size = data.doubles_size = data.logicals_size = size;
    }

    std::int64_t offsets[2] = {};
    IO_data data;

private:
    stated_array strings_;
    stated_array chars_;
    stated_array integers_;
    stated_array reals_;
    stated_array doubles_;
    stated_array logicals_;
};

class ClientArrays : public ::testing::Test
{
protected:
    ClientArrays() : client_(env_)
    {
        EXPECT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        take_messages();
    }

    /// Writes `count` elements in which every value is 1 and every string is
    /// "xxx…".
    void write(const char *type, std::int32_t count, const char *format)
    {
        constexpr std::size_t slot = 400;
        auto room = static_cast<std::size_t>(3 * count);
        std::vector<char> strings(room * slot, 'x');
        std::vector<char> chars(room, 'c');
        std::vector<std::int32_t> integers(room, 1);
        std::vector<float> reals(room, 1);
        std::vector<double> doubles(room, 1);
        std::vector<std::uint8_t> logicals(room, 1);
        IO_data data;
        data.strings = strings.data();
        data.string_slot = slot;
        data.chars = chars.data();
        data.integers = integers.data();
        data.reals = reals.data();
        data.doubles = doubles.data();
        data.logicals = logicals.data();
        data.strings_size = data.chars_size = data.integers_size = static_cast<int>(room);
        data.reals_size = data.doubles_size = data.logicals_size = static_cast<int>(room);
        io_header_storage header = named_header("A", "B", type);
        io_set_text(header.format, format);
        header.count = count;
        header.when = ++when_;
        ASSERT_EQ(client_.request(IO_WRITE_PRIMARY_DS, header.header(), data), IO_OK)
            << take_messages();
    }

    /// The position of the dataset that was written last.
    std::int64_t position() { return client_.position("A", "B", when_); }

    io_memory_env env_;
    io_client client_;
    std::int32_t when_ = 0;
};

constexpr const char *formats[] = {"F", "u", "u5", "l", "l9"};

struct type_case
{
    const char *type;
    const char *as; ///< a type that it can be converted to, or null
};

class ClientArraysOf : public ClientArrays, public ::testing::WithParamInterface<type_case>
{
};

/// Sends each request that reads data, with arrays of exactly the size needed.
TEST_P(ClientArraysOf, AreNeverFilledBeyondTheirEnds)
{
    constexpr std::int32_t count = 120;
    std::size_t values = count * (std::string_view(GetParam().type).starts_with("STRC") ? 2 : 1);
    for (const char *format : formats) {
        SCOPED_TRACE(format);
        write(GetParam().type, count, format);
        for (std::size_t slot : {std::size_t{0}, std::size_t{2}, std::size_t{300}}) {
            auto read = [&](io_request request, const char *as) {
                stated_data client(values, slot);
                client.offsets[0] = position();
                io_header_storage header;
                io_set_text(header.type, as);
                int code = client_.request(request, header.header(), client.data);
                EXPECT_TRUE(code == IO_OK || code == IO_NOT_COMPRESSED ||
                            (code == IO_BAD_FORMAT && request == IO_READ_COMPRESSED))
                    << request << ' ' << code << ' ' << take_messages();
                EXPECT_EQ(client.data.strings_size, static_cast<std::int64_t>(values));
            };
            read(IO_READ_LOCATED_DS, "");
            read(IO_READ_LOCATED_DS, GetParam().as);
            read(IO_READ_BLOCK, "");
            read(IO_READ_COMPRESSED, "");
            read(IO_READ_HEADER, "");
            stated_data here(values, slot);
            EXPECT_EQ(client_.request(IO_READ_DATA, IO_header(), here.data), IO_OK);
        }
        take_messages();
    }
}

/// One value too few: nothing is written at all, and what is needed is reported.
TEST_P(ClientArraysOf, ThatAreTooSmallDoNotChange)
{
    constexpr std::int32_t count = 120;
    for (const char *format : formats) {
        SCOPED_TRACE(format);
        write(GetParam().type, count, format);
        for (io_request request : {IO_READ_LOCATED_DS, IO_READ_BLOCK}) {
            stated_data client(count - 1, 0);
            client.offsets[0] = position();
            io_header_storage header;
            header.blockfactor = 1000;
            EXPECT_EQ(client_.request(request, header.header(), client.data), IO_NO_ROOM);
            EXPECT_EQ(take_messages(), "");
            EXPECT_EQ(client.data.strings[0], guard);
            EXPECT_EQ(client.data.chars[0], guard);
        }
    }
}

/// A read that fails in the middle leaves zeros, within the same bounds.
TEST_P(ClientArraysOf, AreEmptyAfterAFailedRead)
{
    constexpr std::int32_t count = 120;
    std::size_t values = count * (std::string_view(GetParam().type).starts_with("STRC") ? 2 : 1);
    for (const char *format : formats) {
        SCOPED_TRACE(format);
        write(GetParam().type, count, format);
        std::size_t tag = env_["f"].rfind("*ENDDATASET");
        ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
        env_["f"][tag] = '+';
        ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
        for (const char *as : {"", GetParam().as}) {
            stated_data client(values, 0);
            client.offsets[0] = position();
            io_header_storage header;
            io_set_text(header.type, as);
            EXPECT_EQ(client_.request(IO_READ_LOCATED_DS, header.header(), client.data),
                      IO_BAD_FORMAT);
            char kept[6] = {client.data.strings[0],
                            client.data.chars[0],
                            reinterpret_cast<const char *>(client.data.integers)[0],
                            reinterpret_cast<const char *>(client.data.reals)[0],
                            reinterpret_cast<const char *>(client.data.doubles)[0],
                            reinterpret_cast<const char *>(client.data.logicals)[0]};
            // Some arrays were being filled, so they contain zeros. The others
            // did not change.
            EXPECT_GT(std::count(kept, kept + 6, '\0'), 0);
            EXPECT_EQ(std::count(kept, kept + 6, '\0') + std::count(kept, kept + 6, guard), 6);
        }
        env_["f"][tag] = '*';
        ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        take_messages();
    }
}

/// A damaged file cannot make the library write beyond the arrays.
TEST_P(ClientArraysOf, AreNeverFilledBeyondTheirEndsByADamagedFile)
{
    constexpr std::int32_t count = 120;
    constexpr std::size_t flips = 60;
    std::size_t values = count * (std::string_view(GetParam().type).starts_with("STRC") ? 2 : 1);
    std::mt19937 random(7);
    for (const char *format : formats) {
        SCOPED_TRACE(format);
        write(GetParam().type, count, format);
        ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
        const std::string sound = env_["f"];
        std::size_t begin = sound.rfind("DATATYPE");
        std::size_t end = sound.rfind("*ENDDATASET");
        ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
        const std::int64_t place = position();
        for (std::size_t flip = 0; flip < flips; flip++) {
            // Every second damaged byte is in the header or at the beginning of
            // the data.
            std::size_t range =
                flip % 2 == 0 ? end - begin : std::min<std::size_t>(end - begin, 80);
            env_["f"] = sound;
            env_["f"][begin + random() % range] ^= static_cast<char>(1 + random() % 255);
            ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
            for (io_request request : {IO_READ_LOCATED_DS, IO_READ_BLOCK, IO_READ_COMPRESSED}) {
                for (const char *as : {"", GetParam().as}) {
                    stated_data client(values, 0);
                    client.offsets[0] = place;
                    io_header_storage header;
                    io_set_text(header.type, as);
                    int code = client_.request(request, header.header(), client.data);
                    EXPECT_TRUE(code >= 0 && code < IO_CODE_COUNT);
                }
            }
        }
        env_["f"] = sound;
        ASSERT_EQ(client_.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
        take_messages();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Types, ClientArraysOf,
    ::testing::Values(type_case{"STRI", "STRI:256"}, type_case{"STRI:256", "STRI"},
                      type_case{"STRI:1", "STRI:256"}, type_case{"CHAR", "CHAR"},
                      type_case{"INTR", "DBLE"}, type_case{"REAL", "INTR"},
                      type_case{"DBLE", "REAL"}, type_case{"LOGL", "INTR"},
                      type_case{"STRC{STRI:256 CHAR:2 INTR:1 REAL:1 DBLE:1 LOGL:1}",
                                "STRC{STRI:256 CHAR:2 REAL:1 INTR:1 REAL:1 INTR:1}"}));

/// The client has two slots of 80 for two strings of 256 characters.
TEST_F(ClientArrays, LongStringsAreCutToTheSlotsOfTheClient)
{
    for (const char *format : formats) {
        write("STRI:256", 2, format);
        for (const char *as : {"", "STRI", "STRI:256"}) {
            stated_data client(2, 0);
            client.offsets[0] = position();
            io_header_storage header;
            io_set_text(header.type, as);
            ASSERT_EQ(client_.request(IO_READ_LOCATED_DS, header.header(), client.data), IO_OK);
            EXPECT_EQ(client.data.strings, std::string(80, 'x'));
            EXPECT_EQ(client.data.strings + IO_STRING_SLOT, std::string(80, 'x'));
        }
        stated_data wide(2, 257);
        wide.offsets[0] = position();
        io_header_storage header;
        ASSERT_EQ(client_.request(IO_READ_LOCATED_DS, header.header(), wide.data), IO_OK);
        EXPECT_EQ(wide.data.strings + 257, std::string(256, 'x'));
    }
}

/// Reading a dataset does not change the sizes that the next locate uses.
TEST_F(ClientArrays, SizesThatWereLargeEnoughDoNotChange)
{
    write("INTR", 3, "u");
    stated_data client(40, 0);
    std::vector<std::int64_t> offsets(40);
    client.data.offsets = offsets.data();
    client.data.offsets_size = 40;
    io_header_storage names = named_header("A", "B");
    names.when = -1;
    for (int round = 0; round < 3; round++) {
        ASSERT_EQ(client_.request(IO_LOCATE_PRIMARY, names.header(), client.data), IO_OK);
        EXPECT_EQ(client.data.matches, 1);
        ASSERT_EQ(client_.request(IO_READ_LOCATED_DS, names.header(), client.data), IO_OK);
        EXPECT_EQ(client.data.strings_size, 40);
        EXPECT_EQ(client.data.integers_size, 40);
        EXPECT_EQ(client.data.doubles_size, 40);
        EXPECT_EQ(client.data.offsets_size, 40);
        io_set_text(names.type, "");
    }
    // Only the array that is too small gets another size.
    client.data.integers_size = 2;
    ASSERT_EQ(client_.request(IO_READ_LOCATED_DS, names.header(), client.data), IO_NO_ROOM);
    EXPECT_EQ(client.data.integers_size, 3);
    EXPECT_EQ(client.data.strings_size, 40);
}

/// With size 0 a locate only reports the sizes that it needs; a missing array is an
/// error.
TEST_F(ClientArrays, ALocateReportsTheSizesItNeeds)
{
    write("INTR", 3, "u");
    write("INTR", 3, "u");
    io_header_storage names = named_header("A", "B");
    for (std::int64_t room : {0, 1}) {
        stated_data client(4, 0);
        std::int64_t offsets[4] = {};
        client.data.offsets = offsets;
        client.data.offsets_size = client.data.strings_size = client.data.integers_size = room;
        EXPECT_EQ(client_.request(IO_LOCATE_PRIMARY, names.header(), client.data), IO_NO_ROOM);
        EXPECT_EQ(take_messages(), "");
        EXPECT_EQ(client.data.strings_size, 4);
        EXPECT_EQ(client.data.integers_size, 2);
        EXPECT_EQ(client.data.offsets_size, 4);
        EXPECT_EQ(client.data.matches, 2);
        EXPECT_EQ(client_.request(IO_LOCATE_PRIMARY, names.header(), client.data), IO_OK);
        client.data.strings = nullptr;
        EXPECT_EQ(client_.request(IO_LOCATE_PRIMARY, names.header(), client.data), IO_NO_ROOM);
        EXPECT_EQ(take_messages(), "iocntc: stringarray or intrarray is wrong\n");
    }
}

/// If a record is too long, code 14 does not mean that arrays are too small.
TEST_F(ClientArrays, ABadHeaderDoesNotAskForLargerArrays)
{
    write("INTR", 120, "u5");
    ASSERT_EQ(client_.request(IO_CLOSE_PRIMARY), IO_OK);
    std::string &bytes = env_["f"];
    bytes[bytes.find("BLOCKFACTOR") - 4] = '\x7f'; // the length of the record
    ASSERT_EQ(client_.request(IO_OPEN_PRIMARY, "f"), IO_OK);
    stated_data client(1, 0);
    client.offsets[0] = position();
    io_header_storage header;
    header.count = 77;
    EXPECT_EQ(client_.request(IO_READ_LOCATED_DS, header.header(), client.data), IO_NO_ROOM);
    EXPECT_EQ(take_messages(),
              "zotreadHdrString: not enough buffer space for string: have 81, require > 127\n"
              "iocnt: read data failed\n");
    EXPECT_EQ(header.count, 77);
    EXPECT_EQ(client.data.integers_size, 1);
}

TEST_F(ClientArrays, LocatedNamesAreCutToNarrowSlots)
{
    write("INTR", 1, "u");
    io_header_storage header = named_header("LONGNAME", "AZONE", "INTR");
    header.count = 0;
    IO_data none;
    ASSERT_EQ(client_.request(IO_WRITE_PRIMARY_DS, header.header(), none), IO_OK);
    stated_data client(2, 5);
    client.data.integers_size = 1;
    ASSERT_EQ(client_.request(IO_LOCATE_PRIMARY, header.header(), client.data), IO_OK);
    EXPECT_STREQ(client.data.strings, "LONG");
    EXPECT_STREQ(client.data.strings + 5, "AZON");
}

TEST_F(ClientArrays, ThereAreNeverMoreAttributesThanSlots)
{
    io_header_storage header = named_header("A", "B", "INTR");
    header.attribute_count = 3;
    for (int i = 0; i < 3; i++) {
        io_set_text(header.attributes[i], std::string(80, 'a'));
    }
    header.when = ++when_;
    IO_data none;
    ASSERT_EQ(client_.request(IO_WRITE_PRIMARY_DS, header.header(), none), IO_OK);
    for (std::int32_t slots : {0, 2, 3}) {
        stated_array attributes(static_cast<std::size_t>(slots * IO_STRING_SLOT));
        stated_data client(1, 0);
        client.offsets[0] = position();
        io_header_storage read;
        IO_header fields = read.header();
        fields.attributes = attributes.as<char>();
        fields.attributes_size = slots;
        EXPECT_EQ(client_.request(IO_READ_HEADER, fields, client.data),
                  slots < 3 ? IO_NO_ROOM : IO_OK);
        EXPECT_EQ(read.attribute_count, 3);
    }
}

TEST_F(ClientArrays, NumbersOfATextFileStayWithinTheirArrays)
{
    for (int lines : {1, 2, 3}) {
        env_["t"].clear();
        for (int i = 0; i < lines; i++) {
            env_["t"] += "         1         2         3\n";
        }
        for (std::size_t room : {1U, 3U, 6U, 7U}) {
            IO_data open;
            open.filename = "t";
            ASSERT_EQ(client_.request(IO_OPEN_TEXT, IO_header(), open), IO_OK);
            stated_data client(room, 0);
            bool fits = room % 3 == 0 && room <= static_cast<std::size_t>(3 * lines);
            EXPECT_EQ(client_.request(IO_READ_INTEGERS, IO_header(), client.data),
                      fits ? IO_OK : IO_READ_ERROR);
            EXPECT_EQ(client.data.integers[0], fits ? 1 : 0);
        }
        take_messages();
    }
}

/// The values that a client must read, computed without the library.
class model
{
public:
    explicit model(unsigned seed) : random(seed) {}

    std::size_t below(std::size_t limit) { return random() % limit; }

    std::string text(std::size_t longest)
    {
        constexpr std::string_view letters = "ab  \t\n0";
        std::string text;
        for (std::size_t i = below(longest + 1); i > 0; i--) {
            text += letters[below(letters.size())];
        }
        return text;
    }

    static std::string trimmed(std::string text)
    {
        text.resize(text.find_last_not_of(" \t\n") + 1);
        return text;
    }

    /// A string from a dataset of strings of `length`, read into a slot for `room`
    /// characters.
    static std::string read_back(const std::string &text, std::size_t length, std::size_t room,
                                 bool formatted)
    {
        std::string kept = text.substr(0, length);
        if (formatted) {
            kept = kept.substr(0, kept.find('\n'));
        }
        return trimmed(trimmed(kept).substr(0, room));
    }

    std::mt19937 random;
};

TEST_F(ClientArrays, StringsReadBackAsTheModelSays)
{
    model random(11);
    for (int round = 0; round < 600; round++) {
        const char *format = formats[random.below(std::size(formats))];
        std::size_t length = 1 + random.below(round % 3 == 0 ? 300 : 90);
        std::size_t count = random.below(6);
        std::size_t written_slot = random.below(2) == 0 ? 0 : 2 + random.below(300);
        std::size_t read_slot = random.below(2) == 0 ? 0 : 2 + random.below(300);
        std::size_t width = written_slot > 0 ? written_slot : IO_STRING_SLOT;
        bool record = random.below(3) == 0;
        bool formatted = format[0] == 'F';

        std::vector<std::string> texts;
        std::vector<char> slots(count * width + 1, '\0');
        for (std::size_t i = 0; i < count; i++) {
            texts.push_back(random.text(width - 1));
            texts.back().copy(slots.data() + i * width, width - 1);
        }
        std::string type = record ? "STRC{STRI:" + std::to_string(length) + " INTR:1}"
                                  : "STRI:" + std::to_string(length);
        std::vector<std::int32_t> numbers(count + 1, 7);
        io_header_storage header = named_header("A", "B", type);
        io_set_text(header.format, format);
        header.count = static_cast<std::int32_t>(count);
        header.when = ++when_;
        IO_data data;
        data.strings = slots.data();
        data.strings_size = static_cast<std::int64_t>(count);
        data.string_slot = static_cast<std::int64_t>(written_slot);
        data.integers = numbers.data();
        data.integers_size = static_cast<std::int64_t>(count);
        ASSERT_EQ(client_.request(IO_WRITE_PRIMARY_DS, header.header(), data), IO_OK);

        stated_data client(count, read_slot);
        client.offsets[0] = position();
        io_header_storage asked;
        ASSERT_EQ(client_.request(IO_READ_LOCATED_DS, asked.header(), client.data), IO_OK)
            << take_messages();
        std::size_t slot = read_slot > 0 ? read_slot : IO_STRING_SLOT;
        for (std::size_t i = 0; i < count; i++) {
            EXPECT_EQ(client.data.strings + i * slot,
                      model::read_back(texts[i], length, slot - 1, formatted))
                << type << ' ' << format << ' ' << i << " of " << count << " in slots of " << slot;
        }
    }
}

/// Random counts, capacities and formats of every other type.
TEST_F(ClientArrays, NumbersReadBackAsTheModelSays)
{
    model random(12);
    constexpr const char *types[] = {"CHAR", "INTR", "REAL", "DBLE", "LOGL"};
    for (int round = 0; round < 600; round++) {
        const char *format = formats[random.below(std::size(formats))];
        std::size_t kind = random.below(std::size(types));
        std::size_t count = random.below(250);
        std::size_t room = random.below(4) == 0 ? random.below(count + 1) : count;
        std::vector<std::int32_t> values(count + 1);
        std::vector<char> chars(count + 1, 'x');
        std::vector<std::int32_t> integers(count + 1);
        std::vector<float> reals(count + 1);
        std::vector<double> doubles(count + 1);
        std::vector<std::uint8_t> logicals(count + 1);
        for (std::size_t i = 0; i < count; i++) {
            values[i] = static_cast<std::int32_t>(random.below(2000)) - 1000;
            chars[i] = static_cast<char>('a' + random.below(26));
            integers[i] = values[i] * 2000000;
            reals[i] = static_cast<float>(values[i]) / 4;
            doubles[i] = values[i] / 8.0;
            logicals[i] = static_cast<std::uint8_t>(values[i] & 3);
        }
        io_header_storage header = named_header("A", "B", types[kind]);
        io_set_text(header.format, format);
        header.count = static_cast<std::int32_t>(count);
        header.when = ++when_;
        IO_data data;
        data.chars = chars.data();
        data.integers = integers.data();
        data.reals = reals.data();
        data.doubles = doubles.data();
        data.logicals = logicals.data();
        data.chars_size = data.integers_size = data.reals_size = data.doubles_size =
            data.logicals_size = static_cast<std::int64_t>(count);
        ASSERT_EQ(client_.request(IO_WRITE_PRIMARY_DS, header.header(), data), IO_OK);

        stated_data client(room, 0);
        client.offsets[0] = position();
        io_header_storage asked;
        int code = client_.request(IO_READ_LOCATED_DS, asked.header(), client.data);
        ASSERT_EQ(code, room < count ? IO_NO_ROOM : IO_OK) << take_messages();
        EXPECT_EQ(asked.count, header.count);
        for (std::size_t i = 0; code == IO_OK && i < count; i++) {
            bool same[] = {client.data.chars[i] == chars[i], client.data.integers[i] == integers[i],
                           client.data.reals[i] == reals[i], client.data.doubles[i] == doubles[i],
                           client.data.logicals[i] == (logicals[i] != 0 ? 1 : 0)};
            ASSERT_TRUE(same[kind]) << types[kind] << ' ' << format << ' ' << i << " of " << count;
        }
    }
}

} // namespace
