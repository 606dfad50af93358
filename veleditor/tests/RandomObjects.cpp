// Makes blocks of items in random order.
#include "veleditor/tests/RandomObjects.h"

#include <algorithm>
#include <vector>

namespace velEditor {

namespace {

class Maker
{
public:
    Maker(std::mt19937 &random, int deepest) : random_(random), deepest_(deepest) {}

    std::string content(int depth)
    {
        std::vector<std::string> parts;
        for (const char *name : {"Kind", "Title", "Location"}) {
            if (depth > 0 && below(2) == 0) { // a file has only objects at the top
                parts.push_back(std::string(name) + " = " + std::to_string(below(3)) + "\n");
            }
        }
        // A parameter and a singleton of one object cannot have the same name.
        if (depth > 0 && below(2) == 0) {
            parts.emplace_back("PART = 1\n");
        } else if (depth < deepest_) {
            parts.push_back(block("PART:", depth));
        }
        for (const char *header : {"PART: a", "PART: b", "DOMAIN: a"}) {
            if (depth < deepest_ && below(2) == 0) {
                parts.push_back(block(header, depth));
            }
        }
        std::shuffle(parts.begin(), parts.end(), random_);
        std::string text;
        for (const std::string &part : parts) {
            text += part;
        }
        return text;
    }

private:
    std::string block(const std::string &header, int depth)
    {
        return header + "\n" + content(depth + 1) + "END\n";
    }

    unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

    std::mt19937 &random_;
    int deepest_;
};

} // namespace

std::string randomObjects(std::mt19937 &random, int deepest)
{
    return Maker(random, deepest).content(0);
}

} // namespace velEditor
