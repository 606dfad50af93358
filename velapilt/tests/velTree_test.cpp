// Tests making, marking and removing nodes.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

namespace {

std::string createObject(const velHandlePtr &handle, const char *path, bool isLibrary = false)
{
    return said(velCreateObject(handle.get(), path, isLibrary));
}

std::string createParam(const velHandlePtr &handle, const char *path, const char *value = "")
{
    return said(velCreateParam(handle.get(), path, value));
}

std::string removeNode(const velHandlePtr &handle, const char *path)
{
    return said(velRemoveObjectH(handle.get(), path));
}

std::string deleteObject(const velHandlePtr &handle, const char *path)
{
    return said(deleteObjH(handle.get(), path));
}

std::string deleteParam(const velHandlePtr &handle, const char *path)
{
    return said(deleteParamH(handle.get(), path));
}

TEST(VelTree, KindWords)
{
    EXPECT_STREQ(velKindWord(velNone), "None");
    EXPECT_STREQ(velKindWord(velParam), "Param");
    EXPECT_STREQ(velKindWord(velObject), "Object");
    EXPECT_STREQ(velKindWord(velSingleton), "Singleton");
    EXPECT_EQ(velParam, 1U);
    EXPECT_EQ(velObject, 2U);
    EXPECT_EQ(velSingleton, 3U);
}

// --- Creating ----------------------------------------------------------------------

TEST(VelTree, ObjectsSingletonsAndParameters)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(createObject(handle, "/FLOW"), "");
    EXPECT_EQ(createObject(handle, "/FLOW/DOMAIN:Fluid Domain"), "");
    EXPECT_EQ(createParam(handle, "/FLOW/DOMAIN:Fluid Domain/Option", "x"), "");
    EXPECT_EQ(createParam(handle, "Top", "y"), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n"
                               "/FLOW Singleton 0\n"
                               "/FLOW/DOMAIN:Fluid Domain Object 0\n"
                               "/FLOW/DOMAIN:Fluid Domain/Option Param 0\n"
                               "/Top Param 0\n");
    EXPECT_EQ(isObject(handle.get(), "/"), 1);
    EXPECT_EQ(isObject(handle.get(), "/FLOW"), 1);
    EXPECT_EQ(isObject(handle.get(), "/FLOW/DOMAIN:Fluid Domain"), 1);
    EXPECT_EQ(isObject(handle.get(), "/Top"), 0);
    EXPECT_EQ(isObject(handle.get(), "/None"), 0);
    EXPECT_EQ(velKindOf(handle.get(), "/Top"), velParam);
    EXPECT_STREQ(getCurrentPath(handle.get()), "/"); // creating does not change it
}

TEST(VelTree, NodesDescribeThemselves)
{
    const velHandlePtr handle = parsed("FLOW:\nDOMAIN: d\nx = 1\nEND\nEND\n");
    const auto described = [&](const char *path) {
        const velNodeInfo info = velDescribe(handle.get(), velFindNode(handle.get(), path));
        const auto orNull = [](const char *text) {
            return std::string(text != nullptr ? text : "null");
        };
        return std::string(velKindWord(info.kind)) + " " + orNull(info.type) + " " +
               orNull(info.name) + " " + orNull(info.value);
    };
    EXPECT_EQ(described("/"), "Object / null null");
    EXPECT_EQ(described("/FLOW"), "Singleton FLOW null null");
    EXPECT_EQ(described("/FLOW/DOMAIN:d"), "Object DOMAIN d null");
    EXPECT_EQ(described("/FLOW/DOMAIN:d/x"), "Param String x 1");
    EXPECT_EQ(velChildCount(velFindNode(handle.get(), "/FLOW")), 1U);
    EXPECT_EQ(velChildCount(velFindNode(handle.get(), "/FLOW/DOMAIN:d/x")), 0U);
    EXPECT_EQ(velFirstChild(velFindNode(handle.get(), "/FLOW/DOMAIN:d/x")), nullptr);
}

TEST(VelTree, AParentMustExist)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(createObject(handle, "/FLOW/DOMAIN:Fluid"),
              "velCreateObject: parent object does not exist");
    EXPECT_EQ(createParam(handle, "/FLOW/x"), "velCreateParam: parent object does not exist");
    EXPECT_EQ(flagsOf(handle), ""); // nothing was made
    EXPECT_EQ(createObject(handle, "/FLOW"), "");
    EXPECT_EQ(createObject(handle, "/FLOW/DOMAIN:Fluid"), "");
}

TEST(VelTree, APathWithoutAParent)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(createObject(handle, "/A/.."), "velCreateObject: error finding parent object");
    EXPECT_EQ(createParam(handle, "/A/.."), "velCreateParam: parent object does not exist");
    EXPECT_EQ(createObject(handle, "/"), "invalid object type: must be non-empty.");
    EXPECT_EQ(createParam(handle, "/"), "invalid parameter name: must be non-empty.");
}

TEST(VelTree, TheSingletonFormIsNotPermittedInCreating)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(createObject(handle, "/SOLVER:SOLVER"),
              "velCreateObject: TYPE:TYPE form for singletons is not permitted");
    EXPECT_EQ(createObject(handle, "/SOLVER"), "");
    // Before the last component, TYPE:TYPE is the path of the singleton.
    EXPECT_EQ(createObject(handle, "/SOLVER:SOLVER/A:b"), "");
    EXPECT_EQ(havePath(handle.get(), "/SOLVER/A:b"), 1);
}

TEST(VelTree, CreatingAnExistingNode)
{
    const velHandlePtr handle = parsed("FLOW:\nx = 1\nEND\n");
    EXPECT_EQ(said(setValid(handle.get(), "/FLOW", 1)), "");
    EXPECT_EQ(createObject(handle, "/FLOW", true), ""); // the flags are updated
    EXPECT_EQ(createParam(handle, "/FLOW/x", "2"), ""); // the value is updated
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n/FLOW Singleton 0x1\n/FLOW/x Param 0\n");
    EXPECT_EQ(valueAt(handle, "/FLOW/x"), "2");
}

TEST(VelTree, SingletonsAndParametersShareTheirNames)
{
    const velHandlePtr handle = parsed("FLOW:\nEND\nx = 1\n");
    EXPECT_EQ(createParam(handle, "/FLOW", "1"), "velCreateParam: unable to create param");
    EXPECT_EQ(createObject(handle, "/x"), "velCreateObject: unable to create object");
    EXPECT_EQ(parse(handle, "FLOW = 1\n"), "parseVELLineH: velUpdateObject failed");
    EXPECT_EQ(parse(handle, "x:\nEND\n"), "parseVELLineH: velUpdateObject failed");
    EXPECT_EQ(createObject(handle, "/x:y"), ""); // the path of an Object is different
    EXPECT_EQ(createObject(handle, "/FLOW:x"), "");
    EXPECT_EQ(stored(handle), "FLOW:\nEND\nx = 1\nx: y\nEND\nFLOW: x\nEND\n");
}

TEST(VelTree, WordsOfObjects)
{
    const velHandlePtr handle(velCreateHandle());
    const auto refused = [&](const char *path) {
        const std::string message = createObject(handle, path);
        EXPECT_EQ(havePath(handle.get(), path), 0);
        return message;
    };
    EXPECT_EQ(refused("/1A:b"),
              "invalid object type \"1A\": leading character must be alphabetic or '_'");
    EXPECT_EQ(refused("/A:1b"),
              "invalid object name \"1b\": leading character must be alphabetic or '_'");
    EXPECT_EQ(refused("/A-B:c"), "invalid object type \"A-B\": contains invalid character '-'");
    EXPECT_EQ(refused("/A:In-let"),
              "invalid object name \"In-let\": contains invalid character '-'");
    EXPECT_EQ(refused("/A:b:c"), "invalid object name \"b:c\": contains invalid character ':'");
    EXPECT_EQ(refused("/A:b%"), "invalid object name \"b%\": contains invalid character '%'");
    EXPECT_EQ(refused("/A:b\\c"), "invalid object name \"b\\c\": contains invalid character '\\'");
    EXPECT_EQ(refused("/\xC4:b"),
              "invalid object type \"\xC4\": leading character must be alphabetic or '_'");
    EXPECT_EQ(refused("/A:b\xC4"),
              "invalid object name \"b\xC4\": contains invalid character '\xC4'");
    EXPECT_EQ(refused("/A:b\nc"), "invalid object name \"b\nc\": contains invalid character '\n'");
    for (const char *path : {"/%Inlet", "/A:%Inlet", "/_A:_b", "/a1 .[]_{|}: z9 .[]_{|}"}) {
        EXPECT_EQ(createObject(handle, path), "") << path;
    }
}

TEST(VelTree, EveryCharacterOfAWord)
{
    const velHandlePtr handle(velCreateHandle());
    for (int code = 1; code < 256; ++code) {
        const char c = static_cast<char>(code);
        const bool isLetter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        const bool isDigit = c >= '0' && c <= '9';
        const bool mayLead = isLetter || c == '_' || c == '%';
        const bool mayFollow = isLetter || isDigit ||
                               (std::string_view("\t .[]_{|}").find(c) != std::string_view::npos);
        // As lines, because some characters have a special meaning in paths.
        const std::string lead =
            said(parseVELLineH(handle.get(), (std::string(1, c) + "x=1").c_str(), 0));
        const bool isOther = (std::string_view("#&!>= \t\n\v\f\r\\").find(c) !=
                              std::string_view::npos); // the offset in the line
        if (!isOther) {
            EXPECT_EQ(lead, mayLead ? ""
                                    : "invalid parameter name \"" + std::string(1, c) +
                                          "x\": leading character must be alphabetic or '_'");
        }
        if (c == '=' || c == '#' || (c >= '\t' && c <= '\r')) {
            continue;
        }
        const std::string word = std::string("x") + c + "x";
        EXPECT_EQ(said(parseVELLineH(handle.get(), (word + "=1").c_str(), 0)),
                  mayFollow ? ""
                            : "invalid parameter name \"" + word +
                                  "\": contains invalid character '" + c + "'");
    }
}

TEST(VelTree, WordsOfParameters)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(createParam(handle, "/1Inlet"),
              "invalid parameter name \"1Inlet\": leading character must be alphabetic or '_'");
    EXPECT_EQ(createParam(handle, "/In-let"),
              "invalid parameter name \"In-let\": contains invalid character '-'");
    EXPECT_EQ(createParam(handle, "/A:B"),
              "invalid parameter name \"A:B\": contains invalid character ':'");
    EXPECT_EQ(createParam(handle, "/A:A"),
              "invalid parameter name \"A:A\": contains invalid character ':'");
    EXPECT_EQ(createParam(handle, "/%Inlet"), "");
    EXPECT_EQ(createParam(handle, "/Mass  Flow\tRate"), ""); // in its normal form
    EXPECT_EQ(stored(handle), "%Inlet = \nMass Flow Rate = \n");
}

TEST(VelTree, Values)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(createParam(handle, "/tab", "a\tb"), "");
    EXPECT_EQ(createParam(handle, "/high", "\x80\xFF\x7F"), "");
    EXPECT_EQ(createParam(handle, "/blanks", "  a  "), "");
    EXPECT_EQ(createParam(handle, "/null", nullptr), "");
    EXPECT_EQ(valueAt(handle, "/tab"), "a\tb");
    EXPECT_EQ(valueAt(handle, "/high"), "\x80\xFF\x7F");
    EXPECT_EQ(valueAt(handle, "/blanks"), "  a  "); // unchanged
    EXPECT_EQ(valueAt(handle, "/null"), "");
    for (int code = 1; code < 32; ++code) {
        if (code == '\t') {
            continue;
        }
        const std::string value = std::string("a") + static_cast<char>(code) + "b";
        EXPECT_EQ(createParam(handle, "/x", value.c_str()),
                  "invalid parameter value \"" + value + "\": control character number " +
                      std::to_string(code) + " is not allowed.");
    }
    EXPECT_EQ(havePath(handle.get(), "/x"), 0);
}

// --- Flags ---------------------------------------------------------------------------

TEST(VelTree, LibraryBits)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, "RULES:\nA: b\nx = 1\nEND\nEND\n", velFlagLibrary), "");
    EXPECT_EQ(parse(handle, "FLOW:\ny = 1\nEND\n"), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n" // library data does not change the root
                               "/RULES Singleton 0x1\n"
                               "/RULES/A:b Object 0x1\n"
                               "/RULES/A:b/x Param 0x1\n"
                               "/FLOW Singleton 0\n"
                               "/FLOW/y Param 0\n");
    EXPECT_EQ(isLibrary(handle.get(), "/RULES"), 1);
    EXPECT_EQ(isLibrary(handle.get(), "/RULES/A:b/x"), 1);
    EXPECT_EQ(isLibrary(handle.get(), "/FLOW"), 0);
    EXPECT_EQ(isLibrary(handle.get(), "/"), 0);
    EXPECT_EQ(isLibrary(handle.get(), "/NONE"), -1);
    // For a parameter, the bit of its parent counts.
    EXPECT_EQ(createParam(handle, "/RULES/mine", "1"), "");
    EXPECT_EQ(isLibrary(handle.get(), "/RULES/mine"), 1);
}

TEST(VelTree, ALineReplacesTheFlagsOfItsNode)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, "A:\nx = 1\nEND\n", velFlagLibrary), "");
    EXPECT_EQ(parse(handle, "A:\nx = 1\nEND\n"), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n/A Singleton 0\n/A/x Param 0\n");
    EXPECT_EQ(parse(handle, "A:\nEND\n", velFlagLibrary), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n/A Singleton 0x1\n/A/x Param 0\n");
}

std::string validity(const velHandlePtr &handle)
{
    std::string text;
    for (const char *path : {"/", "/A", "/A/B:b", "/A/B:b/x"}) {
        text += std::to_string(isValid(handle.get(), path)) + " ";
    }
    return text;
}

velHandlePtr allValid()
{
    velHandlePtr handle = parsed("A:\nB: b\nx = 1\nEND\nEND\n");
    for (const char *path : {"/", "/A", "/A/B:b", "/A/B:b/x"}) {
        EXPECT_EQ(said(setValid(handle.get(), path, 1)), "");
        EXPECT_EQ(said(setValid(handle.get(), path, 2)), "");
    }
    return handle;
}

TEST(VelTree, ValidityMarks)
{
    const velHandlePtr handle = parsed("A:\nB: b\nx = 1\nEND\nEND\n");
    EXPECT_EQ(validity(handle), "0 0 0 0 ");
    EXPECT_EQ(said(setValid(handle.get(), "/A", 1)), "");
    EXPECT_EQ(validity(handle), "0 1 0 0 ");
    EXPECT_EQ(said(setValid(handle.get(), "/A", 2)), "");
    EXPECT_EQ(said(setValid(handle.get(), "/A/B:b", 2)), "");
    EXPECT_EQ(validity(handle), "0 3 2 0 ");
    EXPECT_EQ(isValid(handle.get(), "/NONE"), -1);
    EXPECT_EQ(said(setValid(handle.get(), "/NONE", 1)), "setValid: path not found");
}

TEST(VelTree, InvalidatingWithoutPropagation)
{
    for (const std::int32_t level : {0, 3, -1, 0x100}) {
        const velHandlePtr handle = allValid();
        EXPECT_EQ(validity(handle), "3 3 3 3 ");
        EXPECT_EQ(said(setValid(handle.get(), "/A/B:b/x", level)), "");
        EXPECT_EQ(validity(handle), "3 3 3 2 ");
        EXPECT_EQ(said(setValid(handle.get(), "/A/B:b", level)), "");
        EXPECT_EQ(validity(handle), "3 3 2 2 ");
    }
}

TEST(VelTree, InvalidatingWithPropagation)
{
    const velHandlePtr byParam = allValid();
    EXPECT_EQ(said(setValid(byParam.get(), "/A/B:b/x", 0, true)), "");
    // The owner loses its own mark. Everything above loses the mark of its
    // subtree.
    EXPECT_EQ(validity(byParam), "1 1 2 2 ");

    const velHandlePtr byObject = allValid();
    EXPECT_EQ(said(setValid(byObject.get(), "/A/B:b", 0, true)), "");
    EXPECT_EQ(validity(byObject), "1 1 2 3 ");

    const velHandlePtr byRoot = allValid();
    EXPECT_EQ(said(setValid(byRoot.get(), "/", 0, true)), "");
    EXPECT_EQ(validity(byRoot), "2 3 3 3 ");

    const velHandlePtr marking = allValid();
    EXPECT_EQ(said(setValid(marking.get(), "/A/B:b/x", 1, true)), "");
    EXPECT_EQ(validity(marking), "3 3 3 3 ");
}

// The flags of the line decide: 0x100 or 0x400 alone give a mark; 0 and every other
// value remove it.
TEST(VelTree, ValidityAfterALine)
{
    const struct
    {
        std::uint32_t word;
        const char *expected;
    } cases[] = {
        {0, "1 1 2 0 "},                                 // a plain user line
        {velFlagValid, "3 3 3 1 "},                      // marks, removes nothing
        {velFlagSubtreeValid, "3 3 3 2 "},               //
        {velFlagLibrary, "1 1 2 0 "},                    //
        {velFlagValid | velFlagSubtreeValid, "1 1 2 2 "} // data that matched a digest
    };
    for (const auto &c : cases) {
        const velHandlePtr handle = allValid();
        EXPECT_EQ(said(pushPath(handle.get(), "/A/B:b")), "");
        EXPECT_EQ(parse(handle, "x = 1\n", c.word), "");
        EXPECT_EQ(validity(handle), c.expected) << c.word;
        const velHandlePtr changed = allValid(); // a new value makes no difference
        EXPECT_EQ(said(pushPath(changed.get(), "/A/B:b")), "");
        EXPECT_EQ(parse(changed, "x = 2\n", c.word), "");
        EXPECT_EQ(validity(changed), c.expected) << c.word;
    }
}

// The replace mark that a node gets from its parent does not belong to the line.
TEST(VelTree, ValidityAfterALineBelowAMarkedNode)
{
    const velHandlePtr handle = parsed("A:\nEND\n");
    EXPECT_NE(parse(handle, "&replace A:\nbad\n"), ""); // its mark remains
    EXPECT_EQ(said(pushPath(handle.get(), "/A")), "");
    EXPECT_EQ(parse(handle, "x = 1\n", velFlagValid), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n/A Singleton 0x200\n/A/x Param 0x300\n");
    EXPECT_EQ(isValid(handle.get(), "/A/x"), 1);
}

TEST(VelTree, ANewNodeInvalidatesLikeALine)
{
    const velHandlePtr handle = allValid();
    EXPECT_EQ(createParam(handle, "/A/B:b/y", "1"), "");
    EXPECT_EQ(validity(handle), "1 1 2 3 ");
    const velHandlePtr other = allValid();
    EXPECT_EQ(createObject(other, "/A/B:b/C"), "");
    EXPECT_EQ(validity(other), "1 1 1 3 "); // an object does not change its parent's own mark
}

// --- Removing --------------------------------------------------------------------------

constexpr const char *nested = "A:\n"
                               "x = 1\n"
                               "B: b\n"
                               "y = 2\n"
                               "END\n"
                               "z = 3\n"
                               "END\n"
                               "C:\n"
                               "END\n";

TEST(VelTree, RemovingALeaf)
{
    const velHandlePtr handle = parsed(nested);
    EXPECT_EQ(removeNode(handle, "/C"), "");
    EXPECT_EQ(removeNode(handle, "/A/z"), ""); // the last child
    EXPECT_EQ(createParam(handle, "/A/new", "4"), "");
    EXPECT_EQ(removeNode(handle, "/A/x"), ""); // the first
    EXPECT_EQ(deleteParam(handle, "/A/B:b/y"), "");
    EXPECT_EQ(removeNode(handle, "/A/B:b"), "");
    EXPECT_EQ(stored(handle), "A:\n  new = 4\nEND\n");
    EXPECT_EQ(velChildCount(velFindNode(handle.get(), "/A")), 1U);
    EXPECT_EQ(removeNode(handle, "/A/new"), "");
    EXPECT_EQ(createParam(handle, "/A/last", "5"), "");
    EXPECT_EQ(stored(handle), "A:\n  last = 5\nEND\n");
}

TEST(VelTree, NodesThatRemovingRefuses)
{
    const velHandlePtr empty(velCreateHandle());
    EXPECT_EQ(removeNode(empty, "/A"), "velRemoveObjectH: no database");
    const velHandlePtr handle = parsed("");
    EXPECT_EQ(removeNode(handle, nullptr), "velRemoveObjectH: full path failed");
    EXPECT_EQ(removeNode(handle, "/A"), "velRemoveObjectH: entry not found");
    EXPECT_EQ(removeNode(handle, "/"), "velRemoveObjectH: parent has no child list");
    EXPECT_EQ(parse(handle, nested), "");
    EXPECT_EQ(removeNode(handle, "/"), "velRemoveObjectH: child not in parent's child list");
    EXPECT_EQ(deleteParam(handle, "/None"), "deleteParamH: unable to find parameter");
    EXPECT_EQ(deleteObject(handle, "/None"), "deleteObjH: unable to find parameter");
    EXPECT_EQ(deleteParam(empty, "/None"), "deleteParamH: unable to find parameter");
}

TEST(VelTree, DeletingASubtreeReportsDeepestFirst)
{
    const velHandlePtr handle = parsed(nested);
    ChangeLog log(handle);
    EXPECT_EQ(deleteObject(handle, "A"), "");
    EXPECT_EQ(log.take(), "/A/x: - <- 1\n"
                          "/A/B:b/y: - <- 2\n"
                          "/A/B:b: deleted\n"
                          "/A/z: - <- 3\n"
                          "/A: deleted\n");
    EXPECT_EQ(stored(handle), "C:\nEND\n");
    for (const char *path : {"/A", "/A/x", "/A/B:b", "/A/B:b/y", "/A/z"}) {
        EXPECT_EQ(havePath(handle.get(), path), 0) << path;
    }
}

TEST(VelTree, DeletingTheRootEmptiesIt)
{
    const velHandlePtr handle = parsed(nested);
    EXPECT_EQ(deleteObject(handle, "/"), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n");
    EXPECT_EQ(deleteObject(handle, "/"), "");
    EXPECT_EQ(parse(handle, nested), "");
    EXPECT_EQ(valueAt(handle, "/A/B:b/y"), "2");
}

TEST(VelTree, DeletingAParameterAsAnObject)
{
    const velHandlePtr handle = parsed(nested);
    EXPECT_EQ(deleteObject(handle, "/A/x"), "");
    EXPECT_EQ(havePath(handle.get(), "/A/x"), 0);
}

// A node with children is refused only after it has left the tree and the table. Its
// descendants are still found by their old paths.
TEST(VelTree, RemovingANonEmptyNode)
{
    const velHandlePtr handle = parsed(nested);
    ChangeLog log(handle);
    constexpr const char *refused =
        "velRemoveObjectH: removal of non-empty object, did you mean deleteObj?";
    EXPECT_EQ(deleteParam(handle, "/A"), refused);
    EXPECT_EQ(log.take(), "/A: deleted\n"); // reported anyway
    EXPECT_EQ(stored(handle), "C:\nEND\n");
    EXPECT_EQ(havePath(handle.get(), "/A"), 0);
    EXPECT_EQ(valueAt(handle, "/A/x"), "1");
    EXPECT_EQ(valueAt(handle, "/A/B:b/y"), "2");
    EXPECT_EQ(deleteParam(handle, "/A/x"), "velRemoveObjectH: parent not found!");
    EXPECT_EQ(deleteObject(handle, "/A/B:b"), "velRemoveObjectH: parent not found!");
    EXPECT_EQ(havePath(handle.get(), "/A/B:b/y"), 0); // what was below it is gone
    EXPECT_EQ(log.take(), "/A/B:b/y: - <- 2\n");
    EXPECT_EQ(createParam(handle, "/A/n", "1"), "velCreateParam: parent object does not exist");

    // A new node at the path has no children. The old ones do not belong to it.
    EXPECT_EQ(createObject(handle, "/A"), "");
    EXPECT_EQ(deleteParam(handle, "/A/x"), "velRemoveObjectH: parent has no child list");
    EXPECT_EQ(createParam(handle, "/A/n", "1"), "");
    EXPECT_EQ(deleteParam(handle, "/A/x"), "velRemoveObjectH: child not in parent's child list");
    EXPECT_EQ(valueAt(handle, "/A/x"), "1");
    EXPECT_EQ(createParam(handle, "/A/x", "9"), ""); // the old node is found, and changed
    EXPECT_EQ(valueAt(handle, "/A/x"), "9");
    EXPECT_EQ(stored(handle), "C:\nEND\nA:\n  n = 1\nEND\n");
    EXPECT_EQ(deleteObject(handle, "/A"), "");
    EXPECT_EQ(valueAt(handle, "/A/x"), "9");
}

// Flags are inherited from the node that is now at the parent's path.
TEST(VelTree, DescendantsOfARemovedNodeHaveNoFlagsFromIt)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, "A:\nx = 1\nB:\nEND\nEND\n", velFlagLibrary), "");
    EXPECT_NE(deleteParam(handle, "/A"), "");
    EXPECT_EQ(isLibrary(handle.get(), "/A/x"), 0); // its parent has no bit
    EXPECT_EQ(isLibrary(handle.get(), "/A/B"), 1);
    EXPECT_EQ(isLibrary(handle.get(), "/A"), -1);
    EXPECT_EQ(said(velCreateObject(handle.get(), "/A", true)), "");
    EXPECT_EQ(isLibrary(handle.get(), "/A/x"), 1);
    EXPECT_EQ(parse(handle, "A:\nEND\n"), "");
    EXPECT_EQ(isLibrary(handle.get(), "/A/x"), 0);
}

TEST(VelTree, TheReplaceMarkComesFromTheNewNode)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nEND\n");
    for (const char *line : {"&replace A:", "x = 2"}) {
        EXPECT_EQ(said(parseVELLineH(handle.get(), line, 0)), "");
    }
    EXPECT_NE(deleteParam(handle, "/A"), ""); // the one with the mark
    EXPECT_EQ(said(velCreateObject(handle.get(), "/A", false)), "");
    EXPECT_EQ(said(velCreateParam(handle.get(), "/A/x", "3")), "");
    const velNodeInfo info = velDescribe(handle.get(), velFindNode(handle.get(), "/A/x"));
    EXPECT_EQ(info.flags, 0U);
}

TEST(VelTree, AChangeInvalidatesTheNewNodesAboveIt)
{
    const velHandlePtr handle = parsed("A:\nB:\nx = 1\nEND\nEND\n");
    EXPECT_NE(deleteParam(handle, "/A"), "");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/A", false)), "");
    for (const char *path : {"/", "/A", "/A/B", "/A/B/x"}) {
        EXPECT_EQ(said(setValid(handle.get(), path, 1)), "");
        EXPECT_EQ(said(setValid(handle.get(), path, 2)), "");
    }
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/B/x", "2")), "");
    EXPECT_EQ(isValid(handle.get(), "/A/B/x"), 2);
    EXPECT_EQ(isValid(handle.get(), "/A/B"), 2);
    EXPECT_EQ(isValid(handle.get(), "/A"), 1);
    EXPECT_EQ(isValid(handle.get(), "/"), 1);
}

// --- The order of siblings -----------------------------------------------------------

TEST(VelTree, PlacesAChildAmongItsSiblings)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(createObject(handle, "/A"), "");
    EXPECT_EQ(createParam(handle, "/A/a"), "");
    EXPECT_EQ(createObject(handle, "/A/B:b"), "");
    EXPECT_EQ(createParam(handle, "/A/c"), "");
    const auto order = [&](const char *path, std::uint32_t position) {
        EXPECT_EQ(said(velPlaceChild(handle.get(), path, position)), "");
        std::vector<velChildInfo> children;
        EXPECT_EQ(said(getChildList(handle.get(), "/A", &children, nullptr)), "");
        std::string names;
        for (const velChildInfo &child : children) {
            names += child.name;
        }
        return names;
    };
    EXPECT_EQ(order("/A/c", 0), "cab");
    EXPECT_EQ(order("/A/c", 0), "cab");
    EXPECT_EQ(order("/A/c", 1), "acb");
    EXPECT_EQ(order("/A/c", 2), "abc");
    EXPECT_EQ(order("/A/B:b", 99), "acb");
    EXPECT_EQ(order("/A/a", 4'000'000'000U), "cba");
    EXPECT_EQ(createParam(handle, "/A/d"), ""); // goes after the last
    EXPECT_EQ(order("/A/c", 0), "cbad");
    EXPECT_EQ(deleteParam(handle, "/A/d"), "");
    EXPECT_EQ(order("/A/B:b", 0), "bca");
}

TEST(VelTree, PlacesOnlyExistingNodes)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(said(velPlaceChild(handle.get(), "/A", 0)), "velPlaceChild: path not found");
    EXPECT_EQ(createObject(handle, "/A"), "");
    EXPECT_EQ(said(velPlaceChild(handle.get(), "/", 0)), "velPlaceChild: the root has no siblings");
    EXPECT_EQ(said(velPlaceChild(handle.get(), "/A", 3)), "");
}

} // namespace
