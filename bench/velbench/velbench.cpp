// velbench CALL ARGUMENTS: measures the code of the programs and prints one JSON
// object on each line. The exit status is 0, or 2 if a measurement failed.
#include "bench/velbench/calls.h"
#include "bench/velbench/surroundings.h"
#include "common/writeSignals.h"

#include <cstdio>
#include <cstring>
#include <exception>

using velBench::Call;

namespace {

constexpr Call calls[] = {
    {"vel.parse", "FILE", 1, 1, "native load from disk", velBench::velParse},
    {"vel.format", "FILE", 1, 1, "formatted text of the whole tree, 79 columns",
     velBench::velFormat},
    {"vel.lookup", "FILE PATHS", 2, 2, "1,000,000 values by full path, in a fixed random order",
     velBench::velLookup},
    {"ds.write.raw", "DIR [DATA]", 1, 2, "write doubles, uncompressed", velBench::dsWriteRaw},
    {"ds.read.raw", "DIR [DATA]", 1, 2, "read doubles, uncompressed", velBench::dsReadRaw},
    {"ds.write.z5", "DIR [DATA]", 1, 2, "write doubles at level 5", velBench::dsWriteZ5},
    {"ds.read.z5", "DIR [DATA]", 1, 2, "read doubles at level 5", velBench::dsReadZ5},
    {"ds.append", "DIR", 1, 1, "append 20,000 small datasets", velBench::dsAppend},
    {"ds.open", "DIR", 1, 1, "open a file with a stored index of 20,000", velBench::dsOpen},
    {"ds.locate", "DIR", 1, 1, "locate each of 20,000 by name, at random", velBench::dsLocate},
    {"perl.call", "", 0, 0, "200,000 calls of an empty method through the bridge",
     velBench::perlCall},
    {"perl.method", "", 0, 0, "200,000 calls of cleanPath from Perl", velBench::perlMethod},
    {"rules.cold", "FILE", 1, 1, "interpreter start to findings, in a fresh process",
     velBench::rulesCold},
    {"rules.validate", "FILE", 1, 1, "validate all that is loaded", velBench::rulesValidate},
    {"rules.edit", "FILE PATH", 2, 2, "give a parameter a value and validate again",
     velBench::rulesEdit},
    {"editor.open", "FILE", 1, 1, "process start to tree shown, offscreen", velBench::editorOpen},
    {"editor.edit", "FILE", 1, 1, "change a value, from the dialog to the painted row",
     velBench::editorEdit},
    {"editor.find", "FILE", 1, 1, "search all rows for a text that none has", velBench::editorFind},
    {"editor.next", "FILE", 1, 1, "one step of the search, to a row in closed branches",
     velBench::editorFindNext},
    {"editor.scroll", "FILE", 1, 1, "one page, with all branches open", velBench::editorScroll},
    {"editor.memory", "FILE", 1, 1, "rows of the tree with all branches open, and their bytes",
     velBench::editorMemory},
};

int usage(std::FILE *to, int status)
{
    std::fputs("usage: velbench CALL ARGUMENTS\n\n", to);
    for (const Call &call : calls) {
        std::fprintf(to, "  %-14s %-11s %s\n", call.name, call.arguments, call.purpose);
    }
    return std::fflush(to) == 0 ? status : 2;
}

int run(const Call &call, const velBench::Arguments &arguments)
{
    try {
        return velBench::print(call.run(arguments)) ? 0 : 2;
    } catch (const velBench::Failure &failure) {
        std::fprintf(stderr, "velbench: %s: %s\n", call.name, failure.message().c_str());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "velbench: %s: %s\n", call.name, error.what());
    }
    return 2;
}

} // namespace

int main(int count, char **words)
{
    velEditor::ignoreWriteSignals();
    if (count < 2) {
        return usage(stderr, 2);
    }
    velBench::completeEnvironment();
    if (std::strcmp(words[1], velBench::editorChild) == 0) {
        return velBench::runEditorChild(count - 1, words + 1);
    }
    if (std::strcmp(words[1], "--help") == 0) {
        return usage(stdout, 0);
    }
    const velBench::Arguments arguments(words + 2, words + count);
    for (const Call &call : calls) {
        if (std::strcmp(call.name, words[1]) != 0) {
            continue;
        }
        if (arguments.size() < call.fewest || arguments.size() > call.most) {
            return usage(stderr, 2);
        }
        return run(call, arguments);
    }
    std::fprintf(stderr, "velbench: unknown call \"%s\"; see velbench --help\n", words[1]);
    return 2;
}
