// Random command files in every style that the parser accepts.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace veltext::test {

/// Makes texts; the same seed gives the same texts. The parser accepts most of them.
class RandomText
{
public:
    explicit RandomText(std::uint32_t seed) : random_(seed) {}

    [[nodiscard]] std::string next();

    /// A value that a file can contain.
    [[nodiscard]] std::string value();

    [[nodiscard]] std::size_t below(std::size_t bound);

private:
    bool oneIn(std::size_t n) { return below(n) == 0; }
    template <typename List>
    std::string pick(const List &list)
    {
        return list[below(list.size())];
    }

    void block(std::size_t depth);
    void statement(const std::string &text, std::size_t depth, bool mayWrap = true);
    std::string blanks(std::size_t most);
    std::string comment();

    std::mt19937 random_;
    std::string text_;
    std::string lineEnd_;
};

} // namespace veltext::test
