// The hash of paths and the table of texts.
//
// The hash function, the bucket counts and their growth are part of the definition of the
// database: in a table of a given size, a key has the same bucket on every platform. The
// table of the handle's nodes (velPathTable.h) uses the same function and the same growth;
// velHashTable is the simple form for temporary tables.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The bucket counts, ascending, ended by 0.
extern const std::int32_t velPrimeScale[];

/// The first count that is at least `requested`, or the largest count. Warns on standard
/// error if even the largest is much too small.
[[nodiscard]] std::int32_t velChooseBucketCount(std::int64_t requested);

/// Whether a table has too many entries: an insertion first resizes it to two thirds of
/// their number.
[[nodiscard]] constexpr bool velTableIsFull(std::int64_t entries, std::int32_t buckets)
{
    return entries / 3 > buckets;
}

/// Ends the process unless a resize has moved every entry: the one assertion of
/// the database, which holds in every build. A table that has lost entries would
/// make a second node wherever the first is not found.
void velAssertAllMoved(std::int64_t entries, std::int64_t moved);

/// The hash of texts for one bucket count.
///
/// A text is taken byte by byte: h = |(a·h + c) mod N| in wrapping signed
/// 32-bit arithmetic, where c is the byte as a signed char, or 0 from 126 up,
/// and the multiplier a depends on the position only: 31415 at first, then
/// a·27183 mod (N − 1), with its sign. So the hash of a path continues that of
/// its parent: `extend` goes on from a state and a position.
class velHashFunction
{
public:
    /// For one of the bucket counts.
    explicit velHashFunction(std::int32_t buckets);

    [[nodiscard]] std::int32_t buckets() const { return static_cast<std::int32_t>(divisor_); }

    /// The bucket of a whole key.
    [[nodiscard]] std::uint32_t hash(std::string_view key) { return extend(0, 0, key); }

    /// Prepares for keys of `length` bytes, so that `extend` does not throw.
    void prepare(std::size_t length)
    {
        if (length > multipliers_.size()) {
            growMultipliers(length);
        }
    }
    /// The longest key for which `extend` needs no more memory.
    [[nodiscard]] std::size_t prepared() const { return multipliers_.size(); }

    /// The state after `text`, which is at `position` in its key. Throws
    /// bad_alloc when the table of multipliers cannot grow.
    [[nodiscard]] std::uint32_t extend(std::uint32_t state, std::size_t position,
                                       std::string_view text)
    {
        prepare(position + text.size());
        const std::uint32_t *multiplier = multipliers_.data() + position;
        for (const char c : text) {
            state = step(state, *multiplier++, c);
        }
        return state;
    }

    /// A text to be hashed together with others; `state` and `position` as
    /// for extend. There must be room for it (`prepare`).
    struct Lane
    {
        std::uint32_t state;
        std::uint32_t position;
        std::string_view text;
    };

    /// Extends four texts at the same time. This is faster, because each step of one text
    /// must wait for the step before it, but steps of different texts need not wait for
    /// each other. The texts are words, with all characters below 126.
    void extendFour(Lane *const lanes[4]) const;
    /// The same as extendFour, for one text.
    void extendOne(Lane &lane) const { extendFrom(lane, 0); }

private:
    void extendFrom(Lane &lane, std::size_t start) const
    {
        const std::uint32_t *multiplier = multipliers_.data() + lane.position;
        for (std::size_t i = start; i < lane.text.size(); ++i) {
            lane.state = wordStep(lane.state, multiplier[i], lane.text[i]);
        }
    }

    [[nodiscard]] std::uint32_t wordStep(std::uint32_t state, std::uint32_t multiplier,
                                         char c) const
    {
        return reduce(multiplier * state + static_cast<unsigned char>(c));
    }

    /// One byte. The remainder by the bucket count is a multiplication by its
    /// reciprocal, exact for all 32-bit values.
    [[nodiscard]] std::uint32_t step(std::uint32_t state, std::uint32_t multiplier, char c) const
    {
        const auto code = static_cast<signed char>(c);
        const std::uint32_t add = code < 126 ? static_cast<std::uint32_t>(std::int32_t{code}) : 0U;
        return reduce(multiplier * state + add);
    }

    /// The magnitude of a wrapped sum, modulo the bucket count.
    [[nodiscard]] std::uint32_t reduce(std::uint32_t wrapped) const
    {
        return remainder(wrapped >> 31 != 0 ? 0U - wrapped : wrapped);
    }

    [[nodiscard]] std::uint32_t remainder(std::uint32_t value) const
    {
        // q = ⌊value · reciprocal_ / 2^shift_⌋ = ⌊value / divisor_⌋ for value ≤ 2^31
        const auto quotient =
            static_cast<std::uint32_t>((std::uint64_t{value} * reciprocal_) >> shift_);
        return value - quotient * divisor_;
    }

    void growMultipliers(std::size_t count);

    std::uint32_t divisor_;
    std::uint32_t shift_;
    std::uint64_t reciprocal_;
    std::vector<std::uint32_t> multipliers_;
};

/// Texts to pointers that the table does not own. Keys are compared exactly.
class velHashTable
{
public:
    /// Has the first bucket count from `requestedSize` on. Throws bad_alloc.
    explicit velHashTable(std::int32_t requestedSize);

    /// Returns 1, or 0 if there is no memory. An existing key keeps its place and gets the
    /// new value.
    int insert(std::string_view key, void *value);
    /// The value of the key; null for none.
    [[nodiscard]] void *lookup(std::string_view key);
    /// 1 and the value if the table had the key, otherwise 0.
    int remove(std::string_view key, void **value);
    /// Grows in advance, for `expected` more entries.
    void presize(std::int32_t expected);

    [[nodiscard]] std::int32_t buckets() const { return function_.buckets(); }
    [[nodiscard]] std::int32_t entries() const { return entries_; }

private:
    struct Entry
    {
        std::string key;
        void *value = nullptr;
        std::unique_ptr<Entry> next;
        bool used = false;
    };

    void resize(std::int64_t requestedSize);
    Entry *find(std::string_view key);

    velHashFunction function_;
    std::vector<Entry> heads_; // a bucket always has a head; an unused one is empty
    std::int32_t entries_ = 0;
};
