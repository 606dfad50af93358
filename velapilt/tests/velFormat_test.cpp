// Tests the output of nodes as lines, in stored order and in the order of a saved
// file.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

namespace {

constexpr const char *flow = "FLOW:\n"
                             "  SOLVER:\n"
                             "    Maximum = 5\n"
                             "  END\n"
                             "  DOMAIN: d\n"
                             "    BOUNDARY: in\n"
                             "      Option = x\n"
                             "    END\n"
                             "    Location = B1\n"
                             "  END\n"
                             "  Time = 1\n"
                             "END\n";

std::string partial(const velHandlePtr &handle, const char *path, const char *indent,
                    std::uint32_t include = 0, std::uint32_t exclude = 0)
{
    velArray lines(velArrayKind::Strings);
    const char *error = getPartialVELH(handle.get(), path, indent, &lines, include, exclude);
    return error == nullptr ? asLines(lines) : error;
}

velHandlePtr withRules(std::string_view rules, std::string_view text)
{
    velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, rules, velFlagLibrary), "");
    EXPECT_EQ(parse(handle, text), "");
    return handle;
}

// --- Stored form -------------------------------------------------------------------------

TEST(VelFormat, TheStoredOrder)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(stored(handle), flow);
    EXPECT_EQ(partial(handle, "/", ""), flow);
}

// The first level has the indentation of its header; clients rely on that.
TEST(VelFormat, ANodeWithItsHeader)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(stored(handle, "FLOW/DOMAIN:d"), "DOMAIN: d\n"
                                               "BOUNDARY: in\n"
                                               "  Option = x\n"
                                               "END\n"
                                               "Location = B1\n"
                                               "END\n");
    EXPECT_EQ(stored(handle, "/FLOW/SOLVER"), "SOLVER:\nMaximum = 5\nEND\n");
}

TEST(VelFormat, WithAnIndent)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(partial(handle, "/FLOW/DOMAIN:d", "    "), "    BOUNDARY: in\n"
                                                         "      Option = x\n"
                                                         "    END\n"
                                                         "    Location = B1\n");
    // The indentation is a text that the caller gives, not a number of spaces.
    EXPECT_EQ(partial(handle, "/FLOW/DOMAIN:d", "\t> "), "\t> BOUNDARY: in\n"
                                                         "\t>   Option = x\n"
                                                         "\t> END\n"
                                                         "\t> Location = B1\n");
    EXPECT_EQ(partial(handle, "/FLOW/Time", ""), ""); // no children
    EXPECT_EQ(partial(handle, "/NONE", ""), "getPartialVELH: object does not exist");
}

TEST(VelFormat, PartialLinesAreAppended)
{
    const velHandlePtr handle = parsed("x = 1\n");
    velArray lines(velArrayKind::Strings);
    lines.addString("before");
    EXPECT_EQ(said(getPartialVELH(handle.get(), "/", "", &lines, 0, 0)), "");
    EXPECT_EQ(asLines(lines), "before\nx = 1\n");
}

TEST(VelFormat, NodesWithoutAStoredForm)
{
    const velHandlePtr empty(velCreateHandle());
    velStringList lines;
    EXPECT_EQ(said(getObjectVELH(empty.get(), "/", &lines, true)), ""); // and no list
    EXPECT_EQ(lines.data(), nullptr);
    EXPECT_EQ(said(getObjectVELH(empty.get(), "/NONE", &lines, true)), "");
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(stored(handle, "/NONE"), "getObjectVELH: path not found");
    EXPECT_EQ(stored(handle, "/FLOW/Time"), "getObjectVEL: path not found");
    const velHandlePtr bare = parsed("");
    EXPECT_EQ(said(getObjectVELH(bare.get(), "/", &lines, true)), "");
    ASSERT_NE(lines.data(), nullptr); // only the null end
    EXPECT_EQ(lines.size(), 0U);
}

TEST(VelFormat, WithAndWithoutLibraryData)
{
    const velHandlePtr handle = withRules("RULES:\nx = 1\nEND\n", "FLOW:\ny = 2\nEND\n");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/RULES/USER:u", false)), "");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/FLOW/LIB:l", true)), "");
    EXPECT_EQ(stored(handle, "/", true), "RULES:\n  x = 1\n  USER: u\n  END\nEND\n"
                                         "FLOW:\n  y = 2\n  LIB: l\n  END\nEND\n");
    EXPECT_EQ(stored(handle, "/", false), "FLOW:\n  y = 2\nEND\n"); // whole subtrees are left out
    // A library object that is requested itself is written with its parameters
    // and user objects.
    EXPECT_EQ(stored(handle, "/RULES", false), "RULES:\nx = 1\nUSER: u\nEND\nEND\n");
}

TEST(VelFormat, Masks)
{
    const velHandlePtr handle = withRules("A:\nx = 1\nB:\nEND\nEND\n", "C:\ny = 2\nD:\nEND\nEND\n");
    EXPECT_EQ(said(parseVELLineH(handle.get(), "top = 3", 0)), "");
    EXPECT_EQ(said(setValid(handle.get(), "/C", 1)), "");
    EXPECT_EQ(partial(handle, "/", "", velFlagLibrary, 0),
              "A:\n  x = 1\n  B:\n  END\nEND\ntop = 3\n"); // parameters are always written
    EXPECT_EQ(partial(handle, "/", "", 0, velFlagLibrary),
              "C:\n  y = 2\n  D:\n  END\nEND\ntop = 3\n");
    EXPECT_EQ(partial(handle, "/", "", velFlagValid, 0), "C:\n  y = 2\nEND\ntop = 3\n");
    EXPECT_EQ(partial(handle, "/", "", velFlagLibrary | velFlagValid, velFlagValid),
              "A:\n  x = 1\n  B:\n  END\nEND\ntop = 3\n");
}

// --- Saved form --------------------------------------------------------------------------

TEST(VelFormat, ParametersFirstThenObjectsByTheirNames)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(saved(handle), "FLOW:\n"
                             "  Time = 1\n"
                             "  DOMAIN: d\n"
                             "    Location = B1\n"
                             "    BOUNDARY: in\n"
                             "      Option = x\n"
                             "    END\n"
                             "  END\n"
                             "  SOLVER:\n"
                             "    Maximum = 5\n"
                             "  END\n"
                             "END\n");
    EXPECT_EQ(saved(handle, "/FLOW/DOMAIN:d"), "Location = B1\n"
                                               "BOUNDARY: in\n"
                                               "  Option = x\n"
                                               "END\n"); // without its own header
    EXPECT_EQ(saved(handle, "/FLOW/Time"), "");
}

TEST(VelFormat, EqualPrioritiesAreOrderedByBytes)
{
    EXPECT_EQ(saved(parsed("b: x\nEND\na:\nEND\nB: x\nEND\nA.b: x\nEND\nA: x\nEND\nA:\nEND\n"
                           "A: X\nEND\nAB: x\nEND\nA: _\nEND\nA b: x\nEND\n")),
              "A:\nEND\n"
              "A b: x\nEND\n"
              "A.b: x\nEND\n"
              "A: X\nEND\n" // ':' comes after '.' and before letters
              "A: _\nEND\n"
              "A: x\nEND\n"
              "AB: x\nEND\n"
              "B: x\nEND\n"
              "a:\nEND\n"
              "b: x\nEND\n");
}

constexpr const char *priorities = "RULES:\n"
                                   "OBJECT: LATE\nOutput Ordering Priority = -5\nEND\n"
                                   "OBJECT: FIRST\nOutput Ordering Priority = 99.5\nEND\n"
                                   "SINGLETON: SECOND\nOutput Ordering Priority = 99\nEND\n"
                                   "PARAMETER: THIRD\nOutput Ordering Priority = 1e1 \nEND\n"
                                   "OBJECT: BOTH\nOutput Ordering Priority = 7\nEND\n"
                                   "SINGLETON: BOTH\nOutput Ordering Priority = 1000\nEND\n"
                                   "OBJECT: SILENT\nEND\n"
                                   "SINGLETON: SILENT\nOutput Ordering Priority = 6\nEND\n"
                                   "OBJECT: WORDS\nOutput Ordering Priority = none\nEND\n"
                                   "SINGLETON: BELOW\nOutput Ordering Priority = -0.5\nEND\n"
                                   "PARAMETER: BELOW\nOutput Ordering Priority = 50\nEND\n"
                                   "OBJECT: ODD\nOutput Ordering Priority:\nEND\nEND\n"
                                   "SINGLETON: ODD\nOutput Ordering Priority = 8\nEND\n"
                                   "END\n";

TEST(VelFormat, PrioritiesFromTheRules)
{
    const velHandlePtr handle =
        withRules(priorities, "WORDS:\nEND\nLATE: a\nEND\nA:\nEND\nSILENT:\nEND\nBOTH: z\nEND\n"
                              "BOTH: a\nEND\nBELOW: a\nEND\nODD:\nEND\nTHIRD:\nEND\nSECOND: "
                              "x\nEND\nFIRST:\nEND\nZ:\nEND\n");
    EXPECT_EQ(saved(handle), "FIRST:\nEND\n"    // 99.5 rounds to 100
                             "SECOND: x\nEND\n" // 99, from the rule of singletons
                             "THIRD:\nEND\n"    // 10, from the rule of parameters
                             "BOTH: a\nEND\n"   // 7: the rule of objects comes first
                             "BOTH: z\nEND\n"   //
                             "SILENT:\nEND\n"   // 6: an object rule without the parameter
                             "A:\nEND\n"        // 0 without any rule
                             "ODD:\nEND\n"      // the parameter is an object here
                             "WORDS:\nEND\n"    // and 0 if it is not a number
                             "Z:\nEND\n"        //
                             "BELOW: a\nEND\n"  // −1, from the rule of singletons
                             "LATE: a\nEND\n"); // −5
}

// The path of their rule contains TYPE:TYPE, which is the path of a singleton.
TEST(VelFormat, PrioritiesFromTheRulesOfAnotherHandle)
{
    const velHandlePtr rules(velCreateHandle());
    const char *const library[] = {
        "RULES:", "OBJECT: Z", "Output Ordering Priority = 1", "END", "END", "STOCK:", "END"};
    ASSERT_EQ(loadLibraryData(rules.get(), library, 7), nullptr);
    const velHandlePtr handle(velCreateHandle());
    const char *const data[] = {"A: a", "END", "Z: z", "END"};
    ASSERT_EQ(loadVELData(handle.get(), data, 4), nullptr);
    velStringList lines;
    ASSERT_EQ(velWrapTextByRules(handle.get(), rules.get(), "/", 79, &lines), nullptr);
    std::string text;
    for (const char *line : lines) {
        text.append(line).append("|");
    }
    EXPECT_EQ(text, "Z: z|END|A: a|END|");
}

TEST(VelFormat, PrioritiesOfTypesWithTheNamesOfRules)
{
    const velHandlePtr handle =
        withRules("RULES:\n"
                  "OBJECT: OBJECT\nOutput Ordering Priority = 3\nEND\n"
                  "SINGLETON: SINGLETON\nOutput Ordering Priority = 2\nEND\n"
                  "PARAMETER: PARAMETER\nOutput Ordering Priority = 1\nEND\n"
                  "END\n",
                  "A:\nEND\nPARAMETER:\nEND\nSINGLETON: s\nEND\nOBJECT: o\nEND\n");
    EXPECT_EQ(saved(handle), "OBJECT: o\nEND\nSINGLETON: s\nEND\nPARAMETER:\nEND\nA:\nEND\n");
}

TEST(VelFormat, OrderingEntries)
{
    const velHandlePtr handle = withRules(priorities, "");
    std::vector<std::string> entries = {"Z", "LATE:x", "FIRST:b", "FIRST:a", "FIRST", "A:1"};
    EXPECT_EQ(said(velOrderObjectsForOutput(handle.get(), &entries)), "");
    EXPECT_EQ(entries,
              (std::vector<std::string>{"FIRST", "FIRST:a", "FIRST:b", "A:1", "Z", "LATE:x"}));
    std::vector<std::string> none;
    EXPECT_EQ(said(velOrderObjectsForOutput(handle.get(), &none)), "");
    const velHandlePtr empty(velCreateHandle());
    EXPECT_EQ(said(velOrderObjectsForOutput(empty.get(), &entries)), "");
    EXPECT_EQ(entries,
              (std::vector<std::string>{"A:1", "FIRST", "FIRST:a", "FIRST:b", "LATE:x", "Z"}));
}

TEST(VelFormat, LibraryDataIsNotSaved)
{
    const velHandlePtr handle = withRules("RULES:\nx = 1\nEND\n", "FLOW:\ny = 2\nEND\n");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/FLOW/LIB:l", true)), "");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/RULES/USER:u", false)), "");
    EXPECT_EQ(saved(handle), "FLOW:\n  y = 2\nEND\n");
    EXPECT_EQ(saved(handle, "/RULES"), "x = 1\nUSER: u\nEND\n"); // requested itself

    // Only that bit counts; the others do not change what is saved.
    for (const char *path : {"/FLOW", "/FLOW/y"}) {
        EXPECT_EQ(said(setValid(handle.get(), path, 1)), "");
        EXPECT_EQ(said(setValid(handle.get(), path, 2)), "");
    }
    EXPECT_EQ(saved(handle), "FLOW:\n  y = 2\nEND\n");
    EXPECT_NE(parse(handle, "&replace FLOW:\nbad\n"), "");
    EXPECT_EQ(saved(handle), "FLOW:\n  y = 2\nEND\n");

    const velHandlePtr libraries = withRules("RULES:\nEND\n", "");
    velStringList lines;
    EXPECT_EQ(said(velWrapText(libraries.get(), "/", 79, &lines)), "");
    ASSERT_NE(lines.data(), nullptr);
    EXPECT_EQ(lines.data()[0], nullptr); // only the null end
}

TEST(VelFormat, SavedLinesAreWrapped)
{
    const velHandlePtr handle = parsed("A:\nB:\nLocation = B1, B2, B3, B4, B5, B6, B7, B8\nEND\n"
                                       "LONG TYPE OF AN OBJECT: and its long name\nEND\nEND\n");
    EXPECT_EQ(saved(handle, "/", 30), "A:\n"
                                      "  B:\n"
                                      "    Location = B1, B2, B3, \\\n"
                                      "      B4, B5, B6, B7, B8\n"
                                      "  END\n"
                                      "  LONG TYPE OF AN OBJECT: \\\n"
                                      "    and its long name\n"
                                      "  END\n"
                                      "END\n");
    for (const std::int32_t width : {1, 2, -7}) {
        EXPECT_EQ(saved(handle, "/", width), "velWrapLine: requested line length too short");
    }
    EXPECT_EQ(saved(parsed(""), "/", 1), ""); // no line is too long for the width
    velStringList lines;
    EXPECT_EQ(said(velWrapText(handle.get(), "/", 1, &lines)),
              "velWrapLine: requested line length too short");
    EXPECT_EQ(lines.data(), nullptr);
}

TEST(VelFormat, UnknownPathsAndNoTree)
{
    const velHandlePtr handle = parsed(flow);
    EXPECT_EQ(saved(handle, "FLOW/NONE"), "getChildObjectList: path \"/FLOW/NONE\" does not exist");
    EXPECT_EQ(saved(velHandlePtr(velCreateHandle())),
              "getChildObjectList: path \"/\" does not exist");
}

TEST(VelFormat, TheNameOfTheEditorsSave)
{
    const velHandlePtr handle = parsed(flow);
    velStringList lines;
    EXPECT_EQ(said(getFormattedVEL(handle.get(), "/", 79, &lines)), "");
    EXPECT_EQ(asLines(lines), saved(handle, "/", 79));
}

// --- There and back ----------------------------------------------------------------------

TEST(VelFormat, RandomTreesReadBackUnchanged)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        Random random(seed);
        const std::string text = randomSetup(random, 1 + random.below(40));
        const velHandlePtr first = parsed(text);
        const std::string whole = stored(first);
        ASSERT_EQ(stored(parsed(whole)), whole) << "seed " << seed;

        const std::string plain = saved(first);
        for (const std::int32_t width : {0, 3, 10, 40, 79, 200}) {
            const std::string wrapped = saved(first, "/", width);
            ASSERT_EQ(saved(parsed(wrapped)), plain) << "seed " << seed << ", width " << width;
            ASSERT_EQ(saved(parsed(wrapped), "/", width), wrapped);
            for (const std::string &line : linesOf(wrapped)) {
                ASSERT_TRUE(width == 0 || line.size() <= static_cast<std::size_t>(width));
            }
        }
    }
}

// --- Read back ------------------------------------------------------------------------------

/// A random value: no control characters except tabs, and '#' only after a
/// backslash.
std::string randomValue(Random &random, bool hasRuns)
{
    std::string value;
    for (std::size_t left = random.below(90); left > 0; --left) {
        const std::size_t kind = random.below(10);
        if (kind < 3) {
            value += hasRuns || (!value.empty() && value.back() != ' ') ? " " : "x";
        } else if (kind < 5) {
            value += '\\';
        } else if (kind == 5) {
            value += "\\#";
        } else if (kind == 6) {
            value += hasRuns && random.once(2) ? '\t' : '=';
        } else {
            const auto c = static_cast<char>(33 + random.below(223));
            value += c == '#' || c == 127 ? 'y' : c;
        }
    }
    while (!hasRuns && value.ends_with(' ')) {
        value.pop_back();
    }
    return value;
}

/// The value that a reader gets: trimmed, with one space for each run of white
/// space.
std::string asRead(std::string_view value)
{
    std::string result;
    for (const char c : value) {
        const char read = c == '\t' ? ' ' : c;
        if (read != ' ' || (!result.empty() && result.back() != ' ')) {
            result += read;
        }
    }
    if (result.ends_with(' ')) {
        result.pop_back();
    }
    return result;
}

/// Makes two set-ups of nested blocks: one with random values, one with the values
/// that a reader gets from them.
void makeBoth(Random &random, bool hasRuns, const velHandlePtr &given, const velHandlePtr &expected)
{
    std::string path;
    for (std::size_t block = 1 + random.below(5); block > 0; --block) {
        path += "/A TYPE:of " + std::to_string(block);
        for (const velHandlePtr *handle : {&given, &expected}) {
            ASSERT_EQ(said(velCreateObject(handle->get(), path.c_str(), false)), "");
        }
        for (std::size_t i = random.below(4); i > 0; --i) {
            const std::string param = path + "/Name " + std::to_string(i);
            const std::string value = randomValue(random, hasRuns);
            ASSERT_EQ(said(velCreateParam(given.get(), param.c_str(), value.c_str())), "");
            ASSERT_EQ(said(velCreateParam(expected.get(), param.c_str(), asRead(value).c_str())),
                      "");
        }
    }
}

// A backslash at the end of a value would continue the line, so every writer puts
// an empty comment after it.
TEST(VelFormat, LinesReadBackAtEveryWidth)
{
    for (const bool hasRuns : {false, true}) {
        Random random(hasRuns ? 1 : 0);
        for (std::int32_t width = 3; width <= 120; ++width) {
            for (int i = 0; i < 10; ++i) {
                const velHandlePtr given(velCreateHandle());
                const velHandlePtr expected(velCreateHandle());
                ASSERT_NO_FATAL_FAILURE(makeBoth(random, hasRuns, given, expected));
                const std::string text = saved(given, "/", width);
                ASSERT_EQ(stored(parsed(text)), stored(expected)) << "width " << width << "\n"
                                                                  << text;
                ASSERT_EQ(stored(parsed(stored(given))), stored(expected));
                ASSERT_EQ(stored(parsed(partial(given, "/", "  "))), stored(expected));
                ASSERT_EQ(stored(parsed(saved(given))), stored(expected));
            }
        }
    }
}

TEST(VelFormat, AValueThatEndsInABackslash)
{
    const velHandlePtr handle = parsed("A:\nx = C:\\dir\\ # a folder\ny = 1\nEND\n");
    EXPECT_EQ(valueAt(handle, "/A/x"), "C:\\dir\\");
    EXPECT_EQ(saved(handle), "A:\n  x = C:\\dir\\ #\n  y = 1\nEND\n");
    EXPECT_EQ(stored(handle), "A:\n  x = C:\\dir\\ #\n  y = 1\nEND\n");
    EXPECT_EQ(stored(handle, "/A"), "A:\nx = C:\\dir\\ #\ny = 1\nEND\n");
    for (std::int32_t width = 3; width <= 30; ++width) {
        EXPECT_EQ(stored(parsed(saved(handle, "/", width))), stored(handle)) << width;
    }
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/x", "\\ \t")), "");
    EXPECT_EQ(valueAt(parsed(stored(handle)), "/A/x"), "\\");
}

// A program can set such a value, but no file can contain it.
TEST(VelFormat, ACommentSignInAValueIsWrittenUnchanged)
{
    const velHandlePtr handle = parsed("x = 1\n");
    EXPECT_EQ(said(setStringValue(handle.get(), "/x", "a#b")), "");
    EXPECT_EQ(saved(handle), "x = a#b\n");
}

} // namespace
