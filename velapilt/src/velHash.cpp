// The bucket counts, the multipliers of the hash, and the plain hash table.
#include "velapilt/src/velHash.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <new>
#include <utility>

const std::int32_t velPrimeScale[] = {
    41,      127,     163,     211,     263,     331,     419,     523,      653,
    821,     1031,    1289,    1613,    2017,    2521,    3163,    3967,     4967,
    6211,    7789,    9739,    12197,   15259,   19073,   23857,   29833,    37307,
    46633,   58309,   72889,   91121,   113903,  142381,  177979,  222493,   278119,
    347651,  434563,  543203,  679033,  848791,  1060991, 1326239, 1657801,  2072267,
    2590349, 3237947, 4047469, 5059363, 6324203, 7905253, 9881569, 12351967, 0};

std::int32_t velChooseBucketCount(std::int64_t requested)
{
    const std::int32_t *prime = velPrimeScale;
    for (; *prime != 0; ++prime) {
        if (requested <= *prime) {
            return *prime;
        }
    }
    const std::int32_t largest = prime[-1];
    if (requested / largest > 100) {
        std::fputs("WARNING: requested table size is much larger than the maximum-sized "
                   "available table, forcing poor hash table performance.  Please increase "
                   "the velPrimeScale[] table.\n",
                   stderr);
    }
    return largest;
}

void velAssertAllMoved(std::int64_t entries, std::int64_t moved)
{
    if (entries != moved) {
        std::fputs("velHash: assertion failed: table->numEntries == newTable.numEntries\n", stderr);
        std::abort();
    }
}

// --- velHashFunction ----------------------------------------------------------

velHashFunction::velHashFunction(std::int32_t buckets)
    : divisor_(static_cast<std::uint32_t>(buckets)), shift_(31)
{
    // With 2^(shift − 31) ≥ N, rounding the reciprocal up is off by less than
    // 1/2^31 of a quotient, so no value up to 2^31 crosses a multiple of N.
    while ((std::uint64_t{1} << (shift_ - 31)) < divisor_) {
        ++shift_;
    }
    reciprocal_ = ((std::uint64_t{1} << shift_) + divisor_ - 1) / divisor_;
}

void velHashFunction::growMultipliers(std::size_t count)
{
    if (multipliers_.empty()) {
        multipliers_.push_back(31415U);
    }
    multipliers_.reserve(count + count / 2 + 128);
    const auto modulus = static_cast<std::int32_t>(divisor_) - 1;
    while (multipliers_.size() < multipliers_.capacity()) {
        const auto product = static_cast<std::int32_t>(multipliers_.back() * 27183U);
        multipliers_.push_back(static_cast<std::uint32_t>(product % modulus));
    }
}

void velHashFunction::extendFour(Lane *const lanes[4]) const
{
    Lane &a = *lanes[0];
    Lane &b = *lanes[1];
    Lane &c = *lanes[2];
    Lane &d = *lanes[3];
    const std::size_t together =
        std::min({a.text.size(), b.text.size(), c.text.size(), d.text.size()});
    const std::uint32_t *const all = multipliers_.data();
    for (std::size_t i = 0; i < together; ++i) {
        a.state = wordStep(a.state, all[a.position + i], a.text[i]);
        b.state = wordStep(b.state, all[b.position + i], b.text[i]);
        c.state = wordStep(c.state, all[c.position + i], c.text[i]);
        d.state = wordStep(d.state, all[d.position + i], d.text[i]);
    }
    for (Lane *lane : {&a, &b, &c, &d}) {
        extendFrom(*lane, together);
    }
}

// --- velHashTable -------------------------------------------------------------

velHashTable::velHashTable(std::int32_t requestedSize)
    : function_(velChooseBucketCount(requestedSize)),
      heads_(static_cast<std::size_t>(function_.buckets()))
{
}

velHashTable::Entry *velHashTable::find(std::string_view key)
{
    Entry *entry = &heads_[function_.hash(key)];
    for (; entry != nullptr; entry = entry->next.get()) {
        if (entry->used && entry->key == key) {
            return entry;
        }
    }
    return nullptr;
}

void *velHashTable::lookup(std::string_view key)
{
    const Entry *entry = find(key);
    return entry == nullptr ? nullptr : entry->value;
}

int velHashTable::insert(std::string_view key, void *value)
try {
    if (velTableIsFull(entries_, buckets())) {
        resize(std::int64_t{entries_ / 3} * 2);
    }
    if (Entry *entry = find(key); entry != nullptr) {
        entry->value = value;
        return 1;
    }
    Entry *entry = &heads_[function_.hash(key)];
    if (entry->used) {
        auto after = std::make_unique<Entry>();
        after->key = key;
        after->next = std::move(entry->next);
        entry->next = std::move(after);
        entry = entry->next.get();
    } else {
        entry->key = key;
    }
    entry->value = value;
    entry->used = true;
    ++entries_;
    return 1;
} catch (const std::bad_alloc &) {
    return 0;
}

int velHashTable::remove(std::string_view key, void **value)
{
    Entry *entry = find(key);
    if (entry == nullptr) {
        return 0;
    }
    *value = entry->value;
    if (entry->next != nullptr) {
        // The head stays where it is: its successor moves into it.
        const std::unique_ptr<Entry> successor = std::move(entry->next);
        *entry = std::move(*successor);
    } else if (Entry *head = &heads_[function_.hash(key)]; entry == head) {
        *head = Entry();
    } else {
        while (head->next.get() != entry) {
            head = head->next.get();
        }
        head->next.reset();
    }
    --entries_;
    return 1;
}

void velHashTable::presize(std::int32_t expected)
{
    const std::int64_t coming = std::int64_t{entries_} + expected;
    if (velTableIsFull(coming, buckets())) {
        resize(coming / 3 * 2);
    }
}

void velHashTable::resize(std::int64_t requestedSize)
try {
    velHashTable grown(velChooseBucketCount(requestedSize));
    for (Entry &head : heads_) {
        for (Entry *entry = &head; entry != nullptr && entry->used; entry = entry->next.get()) {
            Entry &target = grown.heads_[grown.function_.hash(entry->key)];
            auto moved = std::make_unique<Entry>();
            Entry *place = &target;
            if (target.used) {
                moved->next = std::move(target.next);
                target.next = std::move(moved);
                place = target.next.get();
            }
            place->key = entry->key;
            place->value = entry->value;
            place->used = true;
            ++grown.entries_;
        }
    }
    velAssertAllMoved(entries_, grown.entries_);
    *this = std::move(grown);
} catch (const std::bad_alloc &) {
    return; // the old table stays in use
}
