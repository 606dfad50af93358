// The growable typed array in which the database takes and returns lists.
//
// An array holds elements of one kind. The texts of a string array are owned
// by the array: short ones are in blocks of its own, so that a list of a
// million lines costs a handful of allocations. Texts never move once added;
// pointers to them stay valid until the array is cleared or destroyed.
//
// An array is used by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

/// What an array holds; fixed when it is made.
enum class velArrayKind : std::uint32_t {
    Characters = 0, ///< 1 byte each, always followed by a NUL
    Strings = 1,    ///< NUL-terminated texts; null is allowed
    Integers = 2,   ///< signed 32-bit
    Pointers = 3,   ///< not owned
};

/// Blocks of memory for texts that live and die together.
class velTextBlocks
{
public:
    /// A NUL-terminated copy of `text`. Throws bad_alloc.
    char *copy(std::string_view text);

    /// Room for `length` characters and a NUL, which is set. Throws bad_alloc.
    char *allocate(std::size_t length);

    /// Frees all texts.
    void clear();

private:
    std::vector<std::unique_ptr<char[]>> blocks_;
    char *next_ = nullptr; // free room in the last block, not owned
    std::size_t left_ = 0;
};

/// A list of texts that owns itself: what every query with a list result
/// fills. `data()` is ended by a null entry after `size()` texts; it is null
/// for a list that was never filled.
class velStringList
{
public:
    velStringList() = default;

    /// Texts in the list, the null at its end not counted.
    [[nodiscard]] std::size_t size() const { return texts_.empty() ? 0 : texts_.size() - 1; }
    [[nodiscard]] bool empty() const { return size() == 0; }

    /// Null-ended; the texts belong to the list. An entry may be null only
    /// where the list came from an array to which a null text was added.
    [[nodiscard]] const char *const *data() const
    {
        return texts_.empty() ? nullptr : texts_.data();
    }
    /// The text at a position below size().
    [[nodiscard]] const char *operator[](std::size_t i) const { return texts_[i]; }
    /// The texts in their order, for loops.
    [[nodiscard]] const char *const *begin() const { return texts_.data(); }
    [[nodiscard]] const char *const *end() const { return texts_.data() + size(); }

private:
    friend class velArray;
    std::vector<char *> texts_;
    velTextBlocks blocks_;
};

/// The array. Capacity starts at 10 elements and doubles when an add finds it
/// full (for characters 11, and doubled plus one, for the terminator); unused
/// elements are zero.
class velArray
{
public:
    /// Throws bad_alloc.
    explicit velArray(velArrayKind kind);

    /// Fixed at construction.
    [[nodiscard]] velArrayKind kind() const { return kind_; }
    /// Elements in the array.
    [[nodiscard]] std::int32_t count() const { return count_; }
    /// Elements that it holds before it grows.
    [[nodiscard]] std::int32_t capacity() const { return capacity_; }

    /// The sum of the lengths of all texts added by copy or by ownership.
    [[nodiscard]] std::int32_t totalLength() const { return totalLength_; }

    /// Each add gives 1, or 0 when the array is of another kind or memory runs
    /// out; the array is then unchanged.
    int addCharacter(char c);
    int addString(std::string_view text);
    /// Takes `text` over; null is accepted and counted, the length unchanged.
    int addOwnedString(std::unique_ptr<char[]> text);
    /// Adds a text of `length` characters to be written in place; it is
    /// terminated already. Throws bad_alloc.
    char *addUninitialised(std::size_t length);
    int addInteger(std::int32_t value);
    int addPointer(void *pointer);

    /// The elements in place; null (0) for another kind or an index outside.
    [[nodiscard]] const char *characters() const;
    [[nodiscard]] const char *string(std::int32_t i) const;
    [[nodiscard]] const char *const *strings() const { return strings_.data(); }
    [[nodiscard]] std::int32_t integer(std::int32_t i) const;
    [[nodiscard]] void *pointer(std::int32_t i) const;

    /// Copies; empty for an array of another kind.
    [[nodiscard]] std::vector<std::int32_t> integers() const;
    [[nodiscard]] velStringList copyStrings() const;

    /// Takes the texts out and leaves the array empty, as new.
    [[nodiscard]] velStringList takeStrings();

    /// Texts are freed, integers and pointers zeroed; the capacity stays.
    void clear();

private:
    bool makeRoom();

    velArrayKind kind_;
    std::int32_t count_ = 0;
    std::int32_t capacity_ = 0;
    std::int32_t totalLength_ = 0;
    std::vector<char> characters_;
    std::vector<char *> strings_;
    std::vector<std::int32_t> integers_;
    std::vector<void *> pointers_;
    velTextBlocks blocks_;
};
