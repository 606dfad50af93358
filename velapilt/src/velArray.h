// The growable typed array for lists that the database takes and returns.
//
// An array contains elements of one kind. A string array owns its texts. Short texts are
// in common blocks, so that a list of a million lines needs only a few allocations. Texts
// never move after they are added; pointers to them stay valid until the array is cleared
// or destroyed.
//
// An array is used by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

/// What an array contains; this never changes.
enum class velArrayKind : std::uint32_t {
    Characters = 0, ///< 1 byte each, always followed by a NUL
    Strings = 1,    ///< NUL-terminated texts; null is allowed
    Integers = 2,   ///< signed 32-bit
    Pointers = 3,   ///< not owned
};

/// Blocks of memory for texts that are freed together.
class velTextBlocks
{
public:
    /// A NUL-terminated copy of `text`. Throws bad_alloc.
    char *copy(std::string_view text);

    /// Space for `length` characters and a NUL, which is set already. Throws bad_alloc.
    char *allocate(std::size_t length);

    /// Frees all texts.
    void clear();

private:
    std::vector<std::unique_ptr<char[]>> blocks_;
    char *next_ = nullptr; // free room in the last block, not owned
    std::size_t left_ = 0;
};

/// A list that owns its texts. Every query with a list result fills one. In `data()` a
/// null entry follows the `size()` texts; `data()` is null for a list that was never filled.
class velStringList
{
public:
    velStringList() = default;

    /// The number of texts in the list, without the null at its end.
    [[nodiscard]] std::size_t size() const { return texts_.empty() ? 0 : texts_.size() - 1; }
    [[nodiscard]] bool empty() const { return size() == 0; }

    /// Ended by a null. The texts belong to the list. An entry is null only if the list
    /// came from an array to which a null text was added.
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

/// The array. The capacity is 10 elements at first and doubles when a full array gets
/// another element. (For characters it is 11, and doubles plus one, for the NUL.) Unused
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
    /// The number of elements for which there is space now.
    [[nodiscard]] std::int32_t capacity() const { return capacity_; }

    /// The sum of the lengths of all texts added by copy or by ownership.
    [[nodiscard]] std::int32_t totalLength() const { return totalLength_; }

    /// Each add returns 1. If the array is of another kind, or there is no memory, it
    /// returns 0 and does not change the array.
    int addCharacter(char c);
    int addString(std::string_view text);
    /// Takes ownership of `text`. A null is accepted and counted as an element.
    int addOwnedString(std::unique_ptr<char[]> text);
    /// Adds a text of `length` characters to be written in place; it is
    /// terminated already. Throws bad_alloc.
    char *addUninitialised(std::size_t length);
    int addInteger(std::int32_t value);
    int addPointer(void *pointer);

    /// The elements, not copied; null (0) for another kind or an index out of range.
    [[nodiscard]] const char *characters() const;
    [[nodiscard]] const char *string(std::int32_t i) const;
    [[nodiscard]] const char *const *strings() const { return strings_.data(); }
    [[nodiscard]] std::int32_t integer(std::int32_t i) const;
    [[nodiscard]] void *pointer(std::int32_t i) const;

    /// Copies; empty for an array of another kind.
    [[nodiscard]] std::vector<std::int32_t> integers() const;
    [[nodiscard]] velStringList copyStrings() const;

    /// Moves the texts into the result; the array is then empty, as a new one.
    [[nodiscard]] velStringList takeStrings();

    /// Frees the texts, sets integers and pointers to zero, and keeps the capacity.
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
