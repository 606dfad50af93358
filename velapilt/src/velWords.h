// The words of one handle: every type and every name once.
//
// Set-ups repeat the same few types and parameter names a million times. So a node contains
// the numbers of its words, and two words are equal if their numbers are equal. Words exist
// as long as the handle.
#pragma once

#include "velapilt/src/velArena.h"
#include "velapilt/src/velBytes.h"

#include <cstdint>
#include <string_view>
#include <vector>

/// Words get the numbers 1, 2, … in the order in which they are entered.
class velWords
{
public:
    /// No word: a Parameter's type, a Singleton's name, a text not found.
    static constexpr std::uint32_t none = 0;
    /// The type of the root.
    static constexpr std::uint32_t slash = 1;

    /// `arena` contains the texts and must outlive the words. Throws bad_alloc.
    explicit velWords(velArena &arena);

    /// The number of a word, or `none`.
    [[nodiscard]] std::uint32_t find(std::string_view text) const
    {
        return text.empty() ? none : slots_[slot(text, hashOf(text))];
    }
    /// The same as find, for a word that follows another one. Blocks of a type list their
    /// parameters in the same order, so it is usually the word that came there last time.
    [[nodiscard]] std::uint32_t findBehind(std::uint32_t previous, std::string_view text)
    {
        const Word &guess = words_[words_[previous].after];
        if (guess.length == text.size() && velSameBytes(guess.text, text.data(), text.size())) {
            return words_[previous].after;
        }
        return words_[previous].after = find(text);
    }
    /// The number of a word, which is entered if it is new. Throws bad_alloc.
    std::uint32_t intern(std::string_view text);

    /// The text of a word, ended by NUL; "" for `none`. Valid as long as the arena.
    [[nodiscard]] const char *text(std::uint32_t word) const { return words_[word].text; }
    [[nodiscard]] std::string_view view(std::uint32_t word) const
    {
        return {words_[word].text, words_[word].length};
    }
    [[nodiscard]] std::size_t count() const { return words_.size(); }

    /// Whether the word was found to be correct as a type or name. The parser checks each
    /// word only once.
    [[nodiscard]] bool isChecked(std::uint32_t word) const { return words_[word].checked; }
    void setChecked(std::uint32_t word) { words_[word].checked = true; }

private:
    struct Word
    {
        const char *text; // in the arena, ended by NUL
        std::uint32_t length;
        std::uint32_t hash : 31;
        std::uint32_t checked : 1;
        std::uint32_t after; // the word that came after it last; `none` at first
    };

    [[nodiscard]] static std::uint32_t hashOf(std::string_view text)
    {
        constexpr std::uint64_t factor = 0x9E3779B97F4A7C15U;
        const char *next = text.data();
        std::size_t left = text.size();
        std::uint64_t hash = left * factor;
        for (; left >= 16; left -= 8, next += 8) {
            hash = (hash ^ velLoadBytes(next, 8)) * factor;
            hash ^= hash >> 32;
        }
        hash = (hash ^ velLoadTail(next, left)) * factor;
        return static_cast<std::uint32_t>((hash ^ hash >> 29) * factor >> 33);
    }

    /// The slot of the word, or the empty one where it would be.
    [[nodiscard]] std::size_t slot(std::string_view text, std::uint32_t hash) const
    {
        const std::size_t mask = slots_.size() - 1;
        std::size_t i = hash & mask;
        for (; slots_[i] != none; i = (i + 1) & mask) {
            const Word &word = words_[slots_[i]];
            if (word.hash == hash && word.length == text.size() &&
                velSameBytes(word.text, text.data(), text.size())) {
                break;
            }
        }
        return i;
    }

    void grow();

    velArena &arena_;
    std::vector<Word> words_;
    std::vector<std::uint32_t> slots_; // open addressing; `none` is an empty slot
};
