// Computes the quick hash of paths; remembers and forgets paths.
#include "velapilt/src/velPathMemo.h"

#include "velapilt/src/velBytes.h"

#include <bit>
#include <new>

std::uint64_t velPathMemo::hash(std::string_view path)
{
    constexpr std::uint64_t first = 0x9E3779B97F4A7C15U;
    constexpr std::uint64_t second = 0xD1B54A32D192ED03U;
    const auto fold = [](std::uint64_t x, std::uint64_t y) {
        __extension__ using Wide = unsigned __int128;
        const Wide product = Wide{x} * y;
        return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
    };
    const char *next = path.data();
    std::size_t left = path.size();
    std::uint64_t hash = left ^ first;
    for (; left > 16; left -= 16, next += 16) {
        hash = fold(hash ^ velLoadBytes(next, 8), velLoadBytes(next + 8, 8) ^ second);
    }
    // The last sixteen bytes or fewer; some of them are read twice.
    const std::uint64_t a = left >= 8 ? velLoadBytes(next, 8) : velLoadTail(next, left);
    const std::uint64_t b = left >= 8 ? velLoadBytes(next + left - 8, 8) : 0;
    hash = fold(hash ^ a, b ^ second);
    return fold(hash ^ first, second);
}

void velPathMemo::remember(std::uint64_t hash, velNode *node, std::int64_t entries)
try {
    // At most half full, even after a request for every node.
    const auto wanted = static_cast<std::size_t>(entries) / (ways / 2);
    if (sets_.size() < wanted || sets_.empty()) {
        std::vector<Set> grown(std::bit_ceil(wanted | 7));
        sets_.swap(grown);
    }
    Set &set = sets_[hash & (sets_.size() - 1)];
    unsigned place = (set.last + 1U) % ways;
    for (unsigned i = 0; i < ways; ++i) {
        if (set.nodes[i] == nullptr) {
            place = i;
            break;
        }
    }
    set.tags[place] = tagOf(hash);
    set.nodes[place] = node;
    set.last = static_cast<std::uint16_t>(place);
} catch (const std::bad_alloc &) {
    return;
}

void velPathMemo::note(velNode *parent, std::string_view path, std::int64_t entries)
try {
    constexpr std::int64_t bytesForEntry = 32;
    if (textBytes_ + static_cast<std::int64_t>(path.size()) > entries * bytesForEntry ||
        !notedPath(parent).empty()) {
        return;
    }
    notes_.push_back({nullptr, {}});
    notes_.back().path = {texts_.copy(path), path.size()};
    notes_.back().node = parent;
    parent->pathNote = static_cast<std::uint32_t>(notes_.size() - 1);
    textBytes_ += static_cast<std::int64_t>(path.size());
} catch (const std::bad_alloc &) {
    return;
}

void velPathMemo::clear()
{
    sets_.clear();
    notes_.clear();
    texts_.clear();
    textBytes_ = 0;
}

void velPathMemo::forget(std::uint64_t hash, const velNode *node)
{
    if (!notedPath(node).empty()) {
        notes_[node->pathNote].node = nullptr; // its text is freed with the memo
    }
    if (sets_.empty()) {
        return;
    }
    Set &set = sets_[hash & (sets_.size() - 1)];
    for (velNode *&entry : set.nodes) {
        if (entry == node) {
            entry = nullptr;
        }
    }
}
