// velgenerate PARAMETERS DIR: writes one generated set-up to
// DIR/tree-PARAMETERS.vel, .xml and .json, and the paths of its parameters to
// .paths.
#include "bench/generate/sampleSetup.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

using MakeWriter = std::unique_ptr<velBench::TreeWriter> (*)(const std::string &file);

struct Notation
{
    const char *suffix;
    MakeWriter make;
};

constexpr Notation notations[] = {
    {".vel", velBench::makeVelWriter},
    {".xml", velBench::makeXmlWriter},
    {".json", velBench::makeJsonWriter},
    {".paths", velBench::makePathWriter},
};

} // namespace

int main(int count, char **words)
{
    std::uint64_t parameters = 0;
    const char *end = count == 3 ? words[1] + std::strlen(words[1]) : nullptr;
    if (count != 3 || std::from_chars(words[1], end, parameters).ptr != end || parameters == 0) {
        std::fputs("velgenerate: usage: velgenerate PARAMETERS DIR\n", stderr);
        return 2;
    }
    const std::string stem = std::string(words[2]) + "/tree-" + std::to_string(parameters);
    for (const Notation &notation : notations) {
        const std::string file = stem + notation.suffix;
        const auto writer = notation.make(file);
        velBench::generateSetup(parameters, *writer);
        if (!writer->finish()) {
            std::fprintf(stderr, "velgenerate: %s: could not be written\n", file.c_str());
            return 2;
        }
    }
    return 0;
}
