// Adds to arrays, reads their elements, and manages the blocks with their texts.
#include "velapilt/src/velArray.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr std::size_t smallestBlock = 1024;
constexpr std::size_t largestBlock = std::size_t{1} << 20;

} // namespace

// --- velTextBlocks ----------------------------------------------------------

char *velTextBlocks::allocate(std::size_t length)
{
    const std::size_t bytes = length + 1;
    if (bytes > left_) {
        // The sizes of blocks double, so that a short list costs one small
        // allocation.
        const std::size_t grown =
            std::min(smallestBlock << std::min<std::size_t>(blocks_.size(), 10), largestBlock);
        if (bytes > grown / 2) {
            blocks_.push_back(std::make_unique_for_overwrite<char[]>(bytes));
            char *text = blocks_.back().get();
            text[length] = '\0';
            return text;
        }
        blocks_.push_back(std::make_unique_for_overwrite<char[]>(grown));
        next_ = blocks_.back().get();
        left_ = grown;
    }
    char *text = next_;
    next_ += bytes;
    left_ -= bytes;
    text[length] = '\0';
    return text;
}

char *velTextBlocks::copy(std::string_view text)
{
    char *result = allocate(text.size());
    if (!text.empty()) {
        std::memcpy(result, text.data(), text.size());
    }
    return result;
}

void velTextBlocks::clear()
{
    blocks_.clear();
    next_ = nullptr;
    left_ = 0;
}

// --- velArray ---------------------------------------------------------------

velArray::velArray(velArrayKind kind)
    : kind_(kind), capacity_(kind == velArrayKind::Characters ? 11 : 10)
{
    if (kind_ == velArrayKind::Characters) {
        characters_.resize(static_cast<std::size_t>(capacity_));
    } else if (kind_ == velArrayKind::Strings) {
        strings_.reserve(static_cast<std::size_t>(capacity_) + 1); // and a null at the end
    } else if (kind_ == velArrayKind::Integers) {
        integers_.reserve(static_cast<std::size_t>(capacity_));
    }
}

bool velArray::makeRoom()
{
    const bool characters = kind_ == velArrayKind::Characters;
    if (count_ < capacity_ - (characters ? 1 : 0)) {
        return true;
    }
    if (capacity_ > INT32_MAX / 2 - 1) {
        return false;
    }
    const std::int32_t grown = capacity_ * 2 + (characters ? 1 : 0);
    if (characters) {
        characters_.resize(static_cast<std::size_t>(grown));
    }
    capacity_ = grown;
    return true;
}

int velArray::addCharacter(char c)
try {
    if (kind_ != velArrayKind::Characters || !makeRoom()) {
        return 0;
    }
    characters_[static_cast<std::size_t>(count_++)] = c;
    return 1;
} catch (const std::bad_alloc &) {
    return 0;
}

char *velArray::addUninitialised(std::size_t length)
{
    if (kind_ != velArrayKind::Strings || length > INT32_MAX || !makeRoom()) {
        throw std::bad_alloc();
    }
    if (static_cast<std::size_t>(totalLength_) + length > INT32_MAX) {
        totalLength_ = INT32_MAX; // a total beyond 31 bits is only a hint
    } else {
        totalLength_ += static_cast<std::int32_t>(length);
    }
    strings_.push_back(nullptr); // first, because a text without an entry would be lost
    char *text = nullptr;
    try {
        text = blocks_.allocate(length);
    } catch (const std::bad_alloc &) {
        strings_.pop_back();
        throw;
    }
    strings_.back() = text;
    ++count_;
    return text;
}

int velArray::addString(std::string_view text)
try {
    if (kind_ != velArrayKind::Strings) {
        return 0;
    }
    char *copy = addUninitialised(text.size());
    if (!text.empty()) {
        std::memcpy(copy, text.data(), text.size());
    }
    return 1;
} catch (const std::bad_alloc &) {
    return 0;
}

int velArray::addOwnedString(std::unique_ptr<char[]> text)
try {
    if (kind_ != velArrayKind::Strings || !makeRoom()) {
        return 0;
    }
    if (text != nullptr) {
        return addString(text.get());
    }
    strings_.push_back(nullptr);
    ++count_;
    return 1;
} catch (const std::bad_alloc &) {
    return 0;
}

int velArray::addInteger(std::int32_t value)
try {
    if (kind_ != velArrayKind::Integers || !makeRoom()) {
        return 0;
    }
    integers_.push_back(value);
    ++count_;
    return 1;
} catch (const std::bad_alloc &) {
    return 0;
}

int velArray::addPointer(void *pointer)
try {
    if (kind_ != velArrayKind::Pointers || !makeRoom()) {
        return 0;
    }
    pointers_.push_back(pointer);
    ++count_;
    return 1;
} catch (const std::bad_alloc &) {
    return 0;
}

const char *velArray::characters() const
{
    return kind_ == velArrayKind::Characters ? characters_.data() : nullptr;
}

const char *velArray::string(std::int32_t i) const
{
    const auto index = static_cast<std::size_t>(i);
    return index < strings_.size() ? strings_[index] : nullptr;
}

std::int32_t velArray::integer(std::int32_t i) const
{
    const auto index = static_cast<std::size_t>(i);
    return index < integers_.size() ? integers_[index] : 0;
}

void *velArray::pointer(std::int32_t i) const
{
    const auto index = static_cast<std::size_t>(i);
    return index < pointers_.size() ? pointers_[index] : nullptr;
}

std::vector<std::int32_t> velArray::integers() const
{
    return integers_;
}

velStringList velArray::copyStrings() const
{
    velStringList list;
    list.texts_.reserve(strings_.size() + 1);
    for (const char *text : strings_) {
        list.texts_.push_back(text == nullptr ? nullptr : list.blocks_.copy(text));
    }
    list.texts_.push_back(nullptr);
    return list;
}

velStringList velArray::takeStrings()
{
    velStringList list;
    strings_.push_back(nullptr);
    list.texts_ = std::move(strings_);
    list.blocks_ = std::move(blocks_);
    *this = velArray(kind_);
    return list;
}

void velArray::clear()
{
    strings_.clear();
    blocks_.clear();
    std::fill(integers_.begin(), integers_.end(), 0);
    integers_.clear();
    std::fill(characters_.begin(), characters_.end(), '\0');
    pointers_.clear();
    count_ = 0;
    totalLength_ = 0;
}
