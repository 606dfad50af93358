#include "velapilt/src/velWords.h"

#include <cstring>
#include <limits>
#include <new>

namespace {

std::uint64_t load(const char *bytes, std::size_t count)
{
    std::uint64_t value = 0;
    std::memcpy(&value, bytes, count);
    return value;
}

/// A quick hash for short words, eight bytes a step.
std::uint32_t hashOf(std::string_view text)
{
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15U;
    const char *next = text.data();
    std::size_t left = text.size();
    std::uint64_t hash = left * factor;
    for (; left >= 8; left -= 8, next += 8) {
        hash = (hash ^ load(next, 8)) * factor;
        hash ^= hash >> 32;
    }
    if (left >= 4) { // two loads that overlap take four to seven bytes
        hash ^= load(next, 4) | load(next + left - 4, 4) << 32;
    } else if (left > 0) {
        hash ^= load(next, 1) | load(next + left / 2, 1) << 8 | load(next + left - 1, 1) << 16;
    }
    hash *= factor;
    return static_cast<std::uint32_t>(hash >> 33);
}

} // namespace

velWords::velWords(velArena &arena) : arena_(arena), slots_(64, none)
{
    words_.push_back({"", 0, 0, 0});
    intern("/");
}

std::size_t velWords::slot(std::string_view text, std::uint32_t hash) const
{
    const std::size_t mask = slots_.size() - 1;
    std::size_t i = hash & mask;
    for (; slots_[i] != none; i = (i + 1) & mask) {
        const Word &word = words_[slots_[i]];
        if (word.hash == hash && word.length == text.size() &&
            std::memcmp(word.text, text.data(), text.size()) == 0) {
            break;
        }
    }
    return i;
}

std::uint32_t velWords::find(std::string_view text) const
{
    return text.empty() ? none : slots_[slot(text, hashOf(text))];
}

std::uint32_t velWords::intern(std::string_view text)
{
    const std::uint32_t hash = hashOf(text);
    std::size_t i = slot(text, hash);
    if (slots_[i] != none) {
        return slots_[i];
    }
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
        throw std::bad_alloc();
    }
    if (words_.size() * 2 > slots_.size()) {
        grow();
        i = slot(text, hash);
    }
    auto *copy = static_cast<char *>(arena_.allocate(text.size() + 1));
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    words_.push_back({copy, static_cast<std::uint32_t>(text.size()), hash & 0x7FFFFFFFU, 0});
    slots_[i] = static_cast<std::uint32_t>(words_.size() - 1);
    return slots_[i];
}

void velWords::grow()
{
    std::vector<std::uint32_t> grown(slots_.size() * 2, none);
    const std::size_t mask = grown.size() - 1;
    for (std::uint32_t number = 1; number < words_.size(); ++number) {
        std::size_t i = words_[number].hash & mask;
        while (grown[i] != none) {
            i = (i + 1) & mask;
        }
        grown[i] = number;
    }
    slots_.swap(grown);
}
