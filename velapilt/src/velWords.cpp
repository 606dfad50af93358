// Enters words in their table, which doubles when it is half full.
#include "velapilt/src/velWords.h"

#include <cstring>
#include <limits>
#include <new>

velWords::velWords(velArena &arena) : arena_(arena), slots_(64, none)
{
    words_.push_back({"", 0, 0, 0, none});
    intern("/");
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
    words_.push_back({copy, static_cast<std::uint32_t>(text.size()), hash & 0x7FFFFFFFU, 0, none});
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
