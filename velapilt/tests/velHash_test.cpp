// Tests the hash against a plain form of its definition, and the growth of the table
// of texts.
#include "velapilt/src/velHash.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <array>
#include <map>

namespace {

std::int32_t wrapped(std::int64_t number)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}

/// The definition, step by step: signed 32-bit, wrapping, remainders with the
/// sign of the dividend.
std::int32_t plainHash(std::int32_t buckets, std::string_view key)
{
    std::int32_t h = 0;
    std::int32_t a = 31415;
    for (const char byte : key) {
        const auto c = static_cast<signed char>(byte);
        const std::int32_t add = c < 126 ? c : 0;
        h = wrapped(std::int64_t{wrapped(std::int64_t{a} * h)} + add) % buckets;
        if (h < 0) {
            h = -h;
        }
        a = wrapped(std::int64_t{a} * 27183) % (buckets - 1);
    }
    return h;
}

std::vector<std::int32_t> allBucketCounts()
{
    std::vector<std::int32_t> counts;
    for (const std::int32_t *count = velPrimeScale; *count != 0; ++count) {
        counts.push_back(*count);
    }
    return counts;
}

std::string randomKey(Random &random, std::size_t length)
{
    std::string key(length, '\0');
    for (char &c : key) {
        c = static_cast<char>(random.below(256));
    }
    return key;
}

TEST(VelHash, BucketCounts)
{
    EXPECT_EQ(allBucketCounts(),
              (std::vector<std::int32_t>{
                  41,      127,     163,     211,     263,     331,     419,     523,     653,
                  821,     1031,    1289,    1613,    2017,    2521,    3163,    3967,    4967,
                  6211,    7789,    9739,    12197,   15259,   19073,   23857,   29833,   37307,
                  46633,   58309,   72889,   91121,   113903,  142381,  177979,  222493,  278119,
                  347651,  434563,  543203,  679033,  848791,  1060991, 1326239, 1657801, 2072267,
                  2590349, 3237947, 4047469, 5059363, 6324203, 7905253, 9881569, 12351967}));
}

TEST(VelHash, BucketCountForASize)
{
    EXPECT_EQ(velChooseBucketCount(-1), 41);
    EXPECT_EQ(velChooseBucketCount(1), 41);
    EXPECT_EQ(velChooseBucketCount(41), 41);
    EXPECT_EQ(velChooseBucketCount(42), 127);
    EXPECT_EQ(velChooseBucketCount(84), 127);
    EXPECT_EQ(velChooseBucketCount(128), 163);
    EXPECT_EQ(velChooseBucketCount(12351967), 12351967);
}

TEST(VelHash, WarnsIfTheLargestTableIsFarTooSmall)
{
    constexpr std::int64_t largest = 12351967;
    testing::internal::CaptureStderr();
    EXPECT_EQ(velChooseBucketCount(largest * 101 - 1), largest);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    testing::internal::CaptureStderr();
    EXPECT_EQ(velChooseBucketCount(largest * 101), largest);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: requested table size is much larger than the maximum-sized available "
              "table, forcing poor hash table performance.  Please increase the velPrimeScale[] "
              "table.\n");
}

// Calculated by hand for 41 buckets: the multipliers are 31415, 31415·27183 mod
// 40 = 853953945 mod 40 = 25, and 25·27183 mod 40 = 15. "/" is 47 mod 41 = 6;
// "/A" is (25·6 + 65) mod 41 = 10; "/AB" is (15·10 + 66) mod 41 = 11.
TEST(VelHash, KnownAnswers)
{
    velHashFunction function(41);
    EXPECT_EQ(function.hash(""), 0U);
    EXPECT_EQ(function.hash("/"), 6U);
    EXPECT_EQ(function.hash("/A"), 10U);
    EXPECT_EQ(function.hash("/AB"), 11U);
    EXPECT_EQ(function.hash("~"), 0U);            // 126 counts as 0
    EXPECT_EQ(function.hash("\x7F"), 0U);         // and so does 127
    EXPECT_EQ(function.hash("}"), 125U % 41U);    // 125 still counts
    EXPECT_EQ(function.hash("\x80"), 128U % 41U); // −128, then its absolute value
    EXPECT_EQ(function.hash("\xFF"), 1U);         // −1
}

TEST(VelHash, FollowsTheDefinitionForEveryTableSize)
{
    Random random(1);
    for (const std::int32_t buckets : allBucketCounts()) {
        velHashFunction function(buckets);
        for (std::size_t length = 0; length < 60; ++length) {
            const std::string key = randomKey(random, length);
            ASSERT_EQ(function.hash(key), static_cast<std::uint32_t>(plainHash(buckets, key)))
                << buckets << " buckets, " << testing::PrintToString(key);
        }
        const std::string path = "/FLOW/DOMAIN:Fluid Domain/BOUNDARY:in/Mass Flow Rate";
        ASSERT_EQ(function.hash(path), static_cast<std::uint32_t>(plainHash(buckets, path)));
    }
}

TEST(VelHash, AnExtendedHashEqualsTheHashOfTheWholeKey)
{
    Random random(2);
    for (const std::int32_t buckets : {41, 127, 9739, 12351967}) {
        velHashFunction function(buckets);
        for (int i = 0; i < 200; ++i) {
            const std::string key = randomKey(random, 1 + random.below(500));
            const std::size_t cut = random.below(key.size());
            const std::uint32_t start = function.hash(key.substr(0, cut));
            ASSERT_EQ(function.extend(start, cut, key.substr(cut)),
                      static_cast<std::uint32_t>(plainHash(buckets, key)));
        }
    }
}

// extendFour() needs words without characters from 126 up.
TEST(VelHash, FourWordsSideBySide)
{
    constexpr std::string_view characters = "\tAZaz09 ._{|}[]%:/";
    Random random(3);
    for (const std::int32_t buckets : {41, 653, 12351967}) {
        velHashFunction function(buckets);
        function.prepare(100);
        for (int i = 0; i < 500; ++i) {
            std::array<std::string, 4> heads;
            std::array<std::string, 4> tails;
            std::array<velHashFunction::Lane, 4> lanes;
            std::array<velHashFunction::Lane *, 4> pointers;
            for (std::size_t lane = 0; lane < lanes.size(); ++lane) {
                heads[lane] = random.text(random.below(50), characters);
                tails[lane] = random.text(random.below(50), characters);
                lanes[lane] = {function.hash(heads[lane]),
                               static_cast<std::uint32_t>(heads[lane].size()), tails[lane]};
                pointers[lane] = &lanes[lane];
            }
            function.extendFour(pointers.data());
            for (std::size_t lane = 0; lane < lanes.size(); ++lane) {
                ASSERT_EQ(lanes[lane].state, static_cast<std::uint32_t>(
                                                 plainHash(buckets, heads[lane] + tails[lane])));
            }
        }
    }
}

// --- The table -------------------------------------------------------------------

void *asValue(std::uintptr_t number)
{
    return reinterpret_cast<void *>(number);
}

TEST(VelHashTable, GrowsAtTheInsertThatFinds126Entries)
{
    velHashTable table(1);
    EXPECT_EQ(table.buckets(), 41);
    for (std::uintptr_t i = 1; i <= 126; ++i) {
        EXPECT_EQ(table.insert("key " + std::to_string(i), asValue(i)), 1);
    }
    EXPECT_EQ(table.buckets(), 41);
    EXPECT_EQ(table.entries(), 126);
    EXPECT_EQ(table.insert("one more", asValue(127)), 1);
    EXPECT_EQ(table.buckets(), 127); // 2 · (126 / 3) = 84 were requested
    EXPECT_EQ(table.entries(), 127);
    for (std::uintptr_t i = 1; i <= 126; ++i) {
        EXPECT_EQ(table.lookup("key " + std::to_string(i)), asValue(i));
    }
}

TEST(VelHashTable, GrowthIsTheSameForEveryCount)
{
    velHashTable table(1);
    std::int32_t buckets = 41;
    for (std::int32_t entries = 0; entries < 20000; ++entries) {
        if (entries / 3 > buckets) {
            buckets = velChooseBucketCount(std::int64_t{entries} / 3 * 2);
        }
        ASSERT_EQ(table.insert(std::to_string(entries), &table), 1);
        ASSERT_EQ(table.buckets(), buckets) << "after entry " << entries;
    }
}

TEST(VelHashTable, AnExistingKeyStillChecksForGrowthFirst)
{
    velHashTable table(1);
    for (int i = 0; i < 126; ++i) {
        EXPECT_EQ(table.insert(std::to_string(i), &table), 1);
    }
    EXPECT_EQ(table.insert("0", nullptr), 1);
    EXPECT_EQ(table.buckets(), 127);
    EXPECT_EQ(table.entries(), 126);
}

TEST(VelHashTable, Presize)
{
    velHashTable table(1);
    table.presize(125);
    EXPECT_EQ(table.buckets(), 41); // 125 / 3 = 41 is not above 41
    table.presize(126);
    EXPECT_EQ(table.buckets(), 127);
    EXPECT_EQ(table.insert("a", &table), 1);
    table.presize(2999);
    EXPECT_EQ(table.buckets(), 2017); // 2 · (3000 / 3) = 2000
    EXPECT_EQ(table.lookup("a"), &table);
    table.presize(-5);
    EXPECT_EQ(table.buckets(), 2017);
}

TEST(VelHashTable, PresizeCountsExistingEntries)
{
    velHashTable table(1);
    EXPECT_EQ(table.insert("a", &table), 1);
    table.presize(124);
    EXPECT_EQ(table.buckets(), 41);
    table.presize(125);
    EXPECT_EQ(table.buckets(), 127);
}

TEST(VelHashTable, AResizeThatLosesEntriesEndsTheProcess)
{
    velAssertAllMoved(3, 3);
    EXPECT_DEATH(velAssertAllMoved(3, 2), "table->numEntries == newTable.numEntries");
    EXPECT_DEATH(velAssertAllMoved(2, 3), "table->numEntries == newTable.numEntries");
}

TEST(VelHashTable, AnExistingKeyTakesTheNewValue)
{
    velHashTable table(1);
    EXPECT_EQ(table.insert("key", asValue(1)), 1);
    EXPECT_EQ(table.insert("key", asValue(2)), 1);
    EXPECT_EQ(table.entries(), 1);
    EXPECT_EQ(table.lookup("key"), asValue(2));
}

TEST(VelHashTable, KeysOfOneBucketAreDistinguished)
{
    velHashTable table(1);
    ASSERT_EQ(plainHash(41, "~"), plainHash(41, ""));
    EXPECT_EQ(table.insert("a~", asValue(1)), 1);
    EXPECT_EQ(table.insert("a", asValue(2)), 1);
    EXPECT_EQ(table.lookup("a~"), asValue(1));
    EXPECT_EQ(table.lookup("a"), asValue(2));
    EXPECT_EQ(table.lookup("A"), nullptr);
}

TEST(VelHashTable, RemovingAKeyKeepsTheOthersOfItsBucket)
{
    // '~' and DEL add nothing to the hash, so the keys share bucket 0.
    const std::vector<std::string> keys = {"", "~", "\x7F", "~~", "~\x7F"};
    for (const std::string &gone : keys) {
        velHashTable table(1);
        for (std::size_t i = 0; i < keys.size(); ++i) {
            EXPECT_EQ(table.insert(keys[i], asValue(i + 1)), 1);
        }
        void *value = nullptr;
        EXPECT_EQ(table.remove(gone, &value), 1);
        EXPECT_EQ(table.entries(), 4);
        for (std::size_t i = 0; i < keys.size(); ++i) {
            EXPECT_EQ(table.lookup(keys[i]), keys[i] == gone ? nullptr : asValue(i + 1));
            EXPECT_EQ(keys[i] == gone, value == asValue(i + 1));
        }
        EXPECT_EQ(table.remove(gone, &value), 0);
        EXPECT_EQ(table.entries(), 4);
    }
}

TEST(VelHashTable, BehavesLikeAMap)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        Random random(seed);
        velHashTable table(1);
        std::map<std::string, void *> model;
        for (int i = 0; i < 3000; ++i) {
            const std::string key = random.text(random.below(4), "ab~/:\xC4");
            void *const value = asValue(random.below(1000) + 1);
            if (random.once(3)) {
                void *removed = nullptr;
                const auto found = model.find(key);
                ASSERT_EQ(table.remove(key, &removed), found == model.end() ? 0 : 1);
                ASSERT_EQ(removed, found == model.end() ? nullptr : found->second);
                model.erase(key);
            } else {
                ASSERT_EQ(table.insert(key, value), 1);
                model[key] = value;
            }
            ASSERT_EQ(static_cast<std::size_t>(table.entries()), model.size());
            const std::string asked = random.text(random.below(4), "ab~/:\xC4");
            const auto found = model.find(asked);
            ASSERT_EQ(table.lookup(asked), found == model.end() ? nullptr : found->second);
        }
    }
}

} // namespace
