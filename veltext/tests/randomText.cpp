// Writes random texts with few names, so that many statements state the same path.
#include "veltext/tests/randomText.h"

namespace veltext::test {

namespace {

const std::vector<std::string> types = {"FLOW", "DOMAIN", "WALL"};
const std::vector<std::string> names = {"a", "Two Words", "FLOW", "%c[1]"};
const std::vector<std::string> parameters = {"x", "Option", "Mass Flow", "List.1"};
const std::vector<std::string> words = {"one",      "B1,", "B2,",     "-5",  "[kg s^-1]",
                                        "a=b",      "x:y", "\\#",     "END", "(1,2)",
                                        "\xC3\xA4", ">go", "&replace"};

} // namespace

std::size_t RandomText::below(std::size_t bound)
{
    return random_() % bound;
}

std::string RandomText::next()
{
    text_.clear();
    lineEnd_ = oneIn(4) ? "\r\n" : "\n";
    for (std::size_t i = 1 + below(4); i > 0; --i) {
        block(0);
    }
    if (oneIn(3)) {
        text_.resize(text_.size() - lineEnd_.size());
    }
    return text_;
}

std::string RandomText::value()
{
    std::string text;
    for (std::size_t i = below(12); i > 0; --i) {
        text += (text.empty() ? "" : " ") + pick(words);
    }
    return text;
}

void RandomText::block(std::size_t depth)
{
    const std::string name = oneIn(3) ? "" : blanks(2) + pick(names);
    std::string header = pick(types);
    header += blanks(1) + ':' + name;
    statement((oneIn(4) ? "&replace  " : "") + header, depth);
    for (std::size_t i = below(7); i > 0; --i) {
        switch (below(depth < 4 ? 6 : 5)) {
        case 0:
            text_ += blanks(4) + lineEnd_;
            break;
        case 1:
            text_ += blanks(4) + comment() + lineEnd_;
            break;
        case 5:
            block(depth + 1);
            break;
        default:
            statement(pick(parameters) + blanks(2) + '=' + blanks(2) + value(), depth + 1);
        }
    }
    statement("END", depth, oneIn(60));
}

/// Writes a statement, sometimes over several lines or with a comment after it.
void RandomText::statement(const std::string &text, std::size_t depth, bool mayWrap)
{
    text_ += std::string(2 * depth, ' ') + blanks(2);
    const bool wraps = mayWrap && oneIn(3);
    for (const char c : text) {
        text_ += c;
        if (wraps && oneIn(8)) {
            text_ += blanks(1) + '\\' + blanks(1) + lineEnd_ + blanks(6);
        }
    }
    if (oneIn(5)) {
        text_ += blanks(3) + comment();
    }
    text_ += blanks(2) + lineEnd_;
}

std::string RandomText::blanks(std::size_t most)
{
    std::string text(below(most + 1), ' ');
    if (!text.empty() && oneIn(5)) {
        text.back() = '\t';
    }
    return text;
}

std::string RandomText::comment()
{
    return '#' + blanks(1) + (oneIn(6) ? "continued \\" + lineEnd_ + "# here" : value());
}

} // namespace veltext::test
