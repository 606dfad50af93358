// Random saves at random times. After each step, the result is compared with a
// model that follows the rules of docs/history.md literally.
#include "veltext/history.h"

#include "veltext/retention_p.h"
#include "veltext/tests/historyFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <random>
#include <set>

namespace veltext {
namespace {

constexpr std::int64_t hour = 60 * 60;

struct ModelVersion
{
    std::int64_t time;
    std::string content;
    std::uint64_t stored = 0; ///< compressed size

    bool operator==(const ModelVersion &) const = default;
};

bool isOfTheLastDay(const ModelVersion &version, std::int64_t now)
{
    return version.time >= now - 24 * hour;
}

std::int64_t dayOf(std::int64_t time)
{
    return static_cast<std::int64_t>(std::floor(static_cast<double>(time) / (24.0 * hour)));
}

/// Keeps all versions of the last day, and of earlier days the last of each day;
/// then only the last hundred; then only as many of the last ones as have room.
std::vector<ModelVersion> expired(const std::vector<ModelVersion> &versions, std::int64_t now)
{
    std::vector<ModelVersion> kept;
    for (std::size_t i = 0; i < versions.size(); ++i) {
        bool hasLater = false;
        for (std::size_t j = i + 1; j < versions.size(); ++j) {
            hasLater = hasLater || (!isOfTheLastDay(versions[j], now) &&
                                    dayOf(versions[j].time) == dayOf(versions[i].time));
        }
        if (isOfTheLastDay(versions[i], now) || !hasLater) {
            kept.push_back(versions[i]);
        }
    }
    if (kept.size() > 100) {
        kept.erase(kept.begin(), kept.end() - 100);
    }
    for (;;) {
        std::map<std::string, std::uint64_t> stored;
        std::uint64_t sum = 0;
        for (const ModelVersion &version : kept) {
            stored[version.content] = version.stored;
        }
        for (const auto &[content, bytes] : stored) {
            sum += bytes;
        }
        if (sum <= 50'000'000) {
            return kept;
        }
        kept.erase(kept.begin());
    }
}

/// From seconds to days, sometimes backwards.
std::int64_t randomStep(std::mt19937 &random)
{
    static constexpr std::int64_t longest[] = {10, hour, 9 * hour, 60 * hour};
    const std::int64_t step =
        std::uniform_int_distribution<std::int64_t>(0, longest[random() % 4])(random);
    return random() % 20 == 0 ? -step : step;
}

TEST(HistoryModel, EveryStepAgreesWithTheModel)
{
    std::mt19937 random(20231114);
    test::HistoryFolder folder;
    std::vector<ModelVersion> model;
    bool isQuick = true; // a time in which a hundred versions are made each day
    for (int step = 0; step < 300; ++step) {
        isQuick = random() % 90 == 0 ? !isQuick : isQuick;
        folder.now += isQuick ? random() % 20 : randomStep(random);
        const std::string content = "x = " + std::to_string(random() % (isQuick ? 1000 : 5)) + '\n';
        ASSERT_EQ(folder.keep(content), "");
        if (!model.empty() && model.back().content == content) {
            model.pop_back();
        }
        model.push_back({folder.now, content});
        model = expired(model, folder.now);

        std::vector<ModelVersion> listed;
        const VersionList list = folder.history().list();
        ASSERT_TRUE(list.faults.empty());
        for (const Version &version : list.versions) {
            listed.insert(listed.begin(), {version.time, folder.history().read(version)});
        }
        ASSERT_TRUE(listed == model) << "step " << step;
        std::set<std::uint64_t> objects;
        for (const Version &version : list.versions) {
            objects.insert(version.object);
        }
        const auto files =
            std::distance(std::filesystem::directory_iterator(folder.history().folder()), {});
        ASSERT_EQ(static_cast<std::size_t>(files), objects.size() + 2) << "step " << step;
    }
}

TEST(HistoryModel, LimitsOfSizeAgreeWithTheModel)
{
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        std::vector<HistoryEntry> entries;
        std::vector<ModelVersion> model;
        std::int64_t now = static_cast<std::int64_t>(random() % 1000) * hour - 500 * hour;
        const std::size_t count = random() % 150;
        const std::uint64_t largest = 2 * mostHistoryBytes / (1 + random() % 100);
        std::map<std::uint64_t, std::uint64_t> stored;
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint64_t object = 1 + random() % 80;
            if (!stored.contains(object)) {
                stored[object] = std::min<std::uint64_t>(random() % largest, mostHistoryBytes);
            }
            entries.push_back({now, 0, stored[object], object, 0, {}});
            model.push_back({now, std::to_string(object), stored[object]});
            now += randomStep(random);
        }
        expireVersions(&entries, now);
        std::vector<ModelVersion> kept;
        for (const HistoryEntry &entry : entries) {
            kept.push_back({entry.time, std::to_string(entry.object), entry.stored});
        }
        ASSERT_TRUE(kept == expired(model, now)) << "round " << round;
    }
}

} // namespace
} // namespace veltext
