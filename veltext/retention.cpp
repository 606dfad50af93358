// Removes versions. Of the versions that are older than a day, keeps only the
// last one of each day. Then removes the versions beyond the limits.
#include "veltext/retention_p.h"

#include "veltext/history.h"

#include <algorithm>
#include <set>

namespace veltext {

namespace {

/// The number of the day (UTC), even before 1970.
std::int64_t dayOf(std::int64_t time)
{
    return time / secondsOfADay - (time % secondsOfADay < 0 ? 1 : 0);
}

std::uint64_t storedBytes(const std::vector<HistoryEntry> &entries)
{
    std::set<std::uint64_t> counted;
    std::uint64_t bytes = 0;
    for (const HistoryEntry &entry : entries) {
        bytes += counted.insert(entry.object).second ? entry.stored : 0;
    }
    return bytes;
}

} // namespace

void expireVersions(std::vector<HistoryEntry> *entries, std::int64_t now)
{
    std::set<std::int64_t> days;
    std::vector<HistoryEntry> kept;
    for (auto entry = entries->rbegin(); entry != entries->rend(); ++entry) {
        // A time is in the future if the clock has gone backwards.
        const bool isRecent = entry->time >= now - secondsOfADay;
        if (kept.size() < mostVersions && (isRecent || days.insert(dayOf(entry->time)).second)) {
            kept.push_back(std::move(*entry));
        }
    }
    std::reverse(kept.begin(), kept.end());
    while (storedBytes(kept) > mostHistoryBytes) {
        kept.erase(kept.begin());
    }
    *entries = std::move(kept);
}

} // namespace veltext
