// Tests the parser: the nodes that lines make.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

/// The stored form of a new handle that has parsed `text`, or the message.
std::string read(std::string_view text)
{
    const velHandlePtr handle(velCreateHandle());
    const std::string message = parse(handle, text);
    return message.empty() ? stored(handle) : message;
}

std::string line(const velHandlePtr &handle, const char *text, std::uint32_t flags = 0)
{
    return said(parseVELLineH(handle.get(), text, flags));
}

/// "depth path".
std::string state(const velHandlePtr &handle)
{
    std::int32_t depth = -1;
    EXPECT_EQ(said(getVELStateH(handle.get(), &depth)), "");
    return std::to_string(depth) + " " + getCurrentPath(handle.get());
}

// --- Statements --------------------------------------------------------------------------

TEST(VelParser, ASample)
{
    EXPECT_EQ(read("FLOW:\n"
                   "  DOMAIN: Fluid Domain\n"
                   "    Option = Fluid Dependent\n"
                   "    Location = B1, B2, \\\n"
                   "      B3\n"
                   "  END\n"
                   "END\n"),
              "FLOW:\n"
              "  DOMAIN: Fluid Domain\n"
              "    Option = Fluid Dependent\n"
              "    Location = B1, B2, B3\n"
              "  END\n"
              "END\n");
}

TEST(VelParser, WhiteSpaceIsFree)
{
    EXPECT_EQ(read("\t FLOW \t :\r\n"
                   "DOMAIN:Fluid \v\f  Domain\n"
                   "   a=b\n"
                   "\n"
                   "   \t\n"
                   "b  \t =   c   d  \r\n"
                   "END\n"
                   "END \r\n"),
              "FLOW:\n"
              "  DOMAIN: Fluid Domain\n"
              "    a = b\n"
              "    b = c d\n"
              "  END\n"
              "END\n");
}

TEST(VelParser, ParametersSplitAtTheFirstEqualsSign)
{
    EXPECT_EQ(read("a = b = c\n"
                   "empty =\n"
                   "f(x) = 1\n"),
              "invalid parameter name \"f(x)\": contains invalid character '('");
    EXPECT_EQ(read("a = b = c\n"
                   "d = e: f\n"
                   "empty =\n"
                   "high = \xC3\xA4\x7F\xFF\n"),
              "a = b = c\nd = e: f\nempty = \nhigh = \xC3\xA4\x7F\xFF\n");
    EXPECT_EQ(read("= b\n"), "invalid parameter name: must be non-empty.");
    EXPECT_EQ(read(" =\n"), "invalid parameter name: must be non-empty.");
    EXPECT_EQ(read("A: b = c\n"),
              "invalid parameter name \"A: b\": contains invalid character ':'");
}

TEST(VelParser, HeadersSplitAtTheFirstColon)
{
    EXPECT_EQ(read("A: b\nEND\n"), "A: b\nEND\n");
    EXPECT_EQ(read("A:b\nEND\n"), "A: b\nEND\n");
    EXPECT_EQ(read("A: b: c\nEND\n"),
              "invalid object name \"b: c\": contains invalid character ':'");
    EXPECT_EQ(read(": b\nEND\n"), "invalid object type: must be non-empty.");
    EXPECT_EQ(read(":\nEND\n"), "invalid object type: must be non-empty.");
    EXPECT_EQ(read("1A: b\nEND\n"),
              "invalid object type \"1A\": leading character must be alphabetic or '_'");
    EXPECT_EQ(read("A: 1b\nEND\n"),
              "invalid object name \"1b\": leading character must be alphabetic or '_'");
}

TEST(VelParser, BothFormsOfASingleton)
{
    EXPECT_EQ(read("TYPE:\nx = 1\nEND\n"
                   "TYPE: TYPE\ny = 2\nEND\n"),
              "TYPE:\n  x = 1\n  y = 2\nEND\n");
    EXPECT_EQ(read("TYPE: type\nEND\n"), "TYPE: type\nEND\n");
}

TEST(VelParser, RepeatingABlockAddsToIt)
{
    EXPECT_EQ(read("A: b\nx = 1\ny = 1\nEND\n"
                   "A: b\ny = 2\nz = 2\nEND\n"),
              "A: b\n  x = 1\n  y = 2\n  z = 2\nEND\n");
}

TEST(VelParser, TextsThatAreNotStatements)
{
    EXPECT_EQ(read("FLOW\n"), "parseVELLineH: syntax error near \"FLOW\"");
    EXPECT_EQ(read("end\n"), "parseVELLineH: syntax error near \"end\""); // case matters
    EXPECT_EQ(read("A:\nEND OF A\n"), "parseVELLineH: syntax error near \"END OF A\"");
    EXPECT_EQ(read("  a   b  # c\n"), "parseVELLineH: syntax error near \"a b\"");
    EXPECT_EQ(read("100 %s %n\n"), "parseVELLineH: syntax error near \"100 %s %n\"");
    EXPECT_EQ(read("!a = b\n"),
              "parseVELData: unable to handle power syntax with this version of the parser");
    EXPECT_EQ(read("!\n"),
              "parseVELData: unable to handle power syntax with this version of the parser");
    EXPECT_EQ(read(" ! A:\n"),
              "parseVELData: unable to handle power syntax with this version of the parser");
}

TEST(VelParser, UnknownDirectives)
{
    EXPECT_EQ(read("&\n"), "parseVELLineH: unknown directive near \"&\"");
    EXPECT_EQ(read("&replace\n"), "parseVELLineH: unknown directive near \"&replace\"");
    EXPECT_EQ(read("&replaceA: b\n"), "parseVELLineH: unknown directive near \"&replaceA: b\"");
    EXPECT_EQ(read("&Replace A: b\n"), "parseVELLineH: unknown directive near \"&Replace A: b\"");
    EXPECT_EQ(read("& replace  A: b\n"),
              "parseVELLineH: unknown directive near \"& replace A: b\"");
    EXPECT_EQ(read("&include x\n"), "parseVELLineH: unknown directive near \"&include x\"");
}

// --- Comments and continued lines ---------------------------------------------------------

TEST(VelParser, Comments)
{
    EXPECT_EQ(read("# all of it\n"
                   "  # indented = 1\n"
                   "a = b # c\n"
                   "b = c#d\n"
                   "c = d \\# e\n"
                   "d = \\#e#f\n"
                   "e = #\n"
                   "A: # no name\n"
                   "END # of A\n"),
              "a = b\n"
              "b = c\n"
              "c = d \\# e\n"
              "d = \\#e\n"
              "e = \n"
              "A:\n"
              "END\n");
}

TEST(VelParser, ContinuedLines)
{
    EXPECT_EQ(read("a = 1,\\\n  2, \\\n\t3\n"), "a = 1,2, 3\n");
    EXPECT_EQ(read("a \\\n= \\\n1\n"), "a = 1\n");
    EXPECT_EQ(read("A\\\n:\\\nb\nEND\n"), "A: b\nEND\n");
    EXPECT_EQ(read("a = b\\\\\nc\n"), "a = b\\c\n");  // the second one is the marker
    EXPECT_EQ(read("a = b \\ \t\nc\n"), "a = b c\n"); // white space after it is dropped
    EXPECT_EQ(read("\\\n\\\na = 1\n"), "a = 1\n");
    EXPECT_EQ(read("a = b \\\n\nc = d\n"), "a = b\nc = d\n"); // an empty line ends it
}

// The parser checks the joined text again; each further line removes one '\\' from
// its end.
TEST(VelParser, SeveralBackslashesAtTheEnd)
{
    EXPECT_EQ(read("a = b\\\\\n\nc\nd = 1\n"), "a = bc\nd = 1\n");
    EXPECT_EQ(read("a = b\\\\\\\n\n\nc\nd = 1\n"), "a = bc\nd = 1\n");
    EXPECT_EQ(read("a = b\\\\\n\\\nc\n"), "a = b\\c\n");
}

TEST(VelParser, CommentsAndContinuedLines)
{
    EXPECT_EQ(read("# comment \\\na = 1\nb = 2\n"), "b = 2\n"); // a comment continues too
    EXPECT_EQ(read("a = 1, \\\n2 # two \\\n3\nb = 2\n"), "a = 1, 2\nb = 2\n");
    EXPECT_EQ(read("a = 1 \\\n# comment\nb = 2\n"), "a = 1\nb = 2\n");
    EXPECT_EQ(read("a = 1\\\n#2\n"), "a = 1\n");
    EXPECT_EQ(read("a = 1\\\\\n#2\n"), "a = 1\\#2\n"); // the joined text decides
}

// Whether a line is END is decided after the pieces are joined.
TEST(VelParser, EndIsRecognisedOnTheJoinedLine)
{
    EXPECT_EQ(read("A:\nEN\\\nD\n"), "A:\nEND\n");
    EXPECT_EQ(read("A:\nE\\\n  N\\\n  D\nx = 1\n"), "A:\nEND\nx = 1\n");
    EXPECT_EQ(read("A:\nEND\\\n\n"), "A:\nEND\n");
    EXPECT_EQ(read("A:\nEND # of \\\nA\n"), "A:\nEND\n");
    EXPECT_EQ(read("&replace A:\nEN\\\nD\n"), "A:\nEND\n");
    EXPECT_EQ(read("EN\\\nD\n"), "parseVELLineH: unmatched END");
}

TEST(VelParser, AnEndAfterTextOnTheJoinedLineIsNotAnEnd)
{
    EXPECT_EQ(read("A:\nx \\\nEND\n"), "parseVELLineH: syntax error near \"x END\"");
    EXPECT_EQ(read("A:\nx = \\\nEND\nEND\n"), "A:\n  x = END\nEND\n");
}

// END is saved in such pieces if its indentation is wider than the line.
TEST(VelParser, EndAfterPiecesOfIndentationIsAnEnd)
{
    EXPECT_EQ(read("A:\nB:\n      \\\n    \\\n  END\n  \\\nEND\n"), "A:\n  B:\n  END\nEND\n");
}

TEST(VelParser, TheNextCallContinuesAPendingLine)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, "a = 1, \\\n"), "");
    EXPECT_EQ(stored(handle), "");
    EXPECT_EQ(parse(handle, "2\nb = 3\\\n"), "");
    EXPECT_EQ(line(handle, "4"), "");
    EXPECT_EQ(stored(handle), "a = 1, 2\nb = 34\n");
}

TEST(VelParser, ABadLineDoesNotAffectTheNext)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(line(handle, "bad \\"), "");
    EXPECT_EQ(line(handle, "line"), "parseVELLineH: syntax error near \"bad line\"");
    EXPECT_EQ(line(handle, "a = 1"), "");
    EXPECT_EQ(line(handle, "-b = \\"), "");
    EXPECT_EQ(line(handle, "2"),
              "invalid parameter name \"-b\": leading character must be alphabetic or '_'");
    EXPECT_EQ(line(handle, "b = 2"), "");
    EXPECT_EQ(stored(handle), "a = 1\nb = 2\n");
}

// --- Blocks -------------------------------------------------------------------------------

TEST(VelParser, UnmatchedEnd)
{
    EXPECT_EQ(read("END\n"), "parseVELLineH: unmatched END");
    EXPECT_EQ(read("A:\nEND\nEND\n"), "parseVELLineH: unmatched END");
}

TEST(VelParser, MissingEnds)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, "A:\nB:\nEND\n"), "1 missing END statement(s) in input");
    EXPECT_EQ(state(handle), "0 /");
    EXPECT_EQ(parse(handle, "C:\nD:\nE: f\n"), "3 missing END statement(s) in input");
    EXPECT_EQ(state(handle), "0 /");
    EXPECT_EQ(line(handle, "X:"), "");
    EXPECT_EQ(parse(handle, "Y:\n"), "1 missing END statement(s) in input");
    EXPECT_EQ(state(handle), "1 /X"); // as before the call
    EXPECT_EQ(stored(handle), "A:\n  B:\n  END\nEND\n"
                              "C:\n  D:\n    E: f\n    END\n  END\nEND\n"
                              "X:\n  Y:\n  END\nEND\n");
}

TEST(VelParser, TooManyEnds)
{
    const velHandlePtr handle(velCreateHandle());
    for (const char *header : {"A:", "B:", "C:"}) {
        EXPECT_EQ(line(handle, header), "");
    }
    EXPECT_EQ(parse(handle, "END\nx = 1\nEND\n"), "2 too many END statement(s) in input");
    EXPECT_EQ(state(handle), "1 /A"); // the lower depth remains
    EXPECT_EQ(valueAt(handle, "/A/B/x"), "1");
    EXPECT_EQ(parse(handle, "END\nEND\n"), "parseVELLineH: unmatched END");
    EXPECT_EQ(state(handle), "0 /");
}

TEST(VelParser, AnErrorClosesTheBlocksOpenedSinceEntry)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(line(handle, "A:"), "");
    EXPECT_EQ(parse(handle, "B:\nC:\nx = 1\nbad\ny = 2\nEND\nEND\n"),
              "parseVELLineH: syntax error near \"bad\"");
    EXPECT_EQ(state(handle), "1 /A");
    EXPECT_EQ(line(handle, "END"), "");
    // The nodes before the error remain.
    EXPECT_EQ(stored(handle), "A:\n  B:\n    C:\n      x = 1\n    END\n  END\nEND\n");
}

TEST(VelParser, ARefusedHeaderOpensNothing)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nEND\n");
    EXPECT_EQ(line(handle, "A:"), "");
    EXPECT_EQ(line(handle, "x:"), "parseVELLineH: velUpdateObject failed"); // a parameter's path
    EXPECT_EQ(state(handle), "1 /A");
    EXPECT_EQ(line(handle, "1B:"),
              "invalid object type \"1B\": leading character must be alphabetic or '_'");
    EXPECT_EQ(state(handle), "1 /A");
    EXPECT_EQ(line(handle, "END"), "");
    EXPECT_EQ(state(handle), "0 /");
}

TEST(VelParser, AFileMayBeParsedLineByLine)
{
    const velHandlePtr handle(velCreateHandle());
    for (const char *text : {"A:", "B: b", "x = 1", "END", "END", "# comment", ""}) {
        EXPECT_EQ(line(handle, text), "") << text;
    }
    EXPECT_EQ(state(handle), "0 /");
    EXPECT_EQ(stored(handle), "A:\n  B: b\n    x = 1\n  END\nEND\n");
}

TEST(VelParser, MoreBlocksThanTheFirstFlagWords)
{
    std::string text;
    for (int i = 0; i < 45; ++i) {
        text += "T: n" + std::to_string(i) + "\n";
    }
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, text, velFlagLibrary), "45 missing END statement(s) in input");
    std::string path;
    for (int i = 0; i < 45; ++i) {
        path += "/T:n" + std::to_string(i);
        EXPECT_EQ(isLibrary(handle.get(), path.c_str()), 1);
    }
}

// --- Flags --------------------------------------------------------------------------------

TEST(VelParser, TheFlagsOfALineCountAtDepthZeroOnly)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(line(handle, "A:", velFlagLibrary), "");
    EXPECT_EQ(line(handle, "B:", 0), "");
    EXPECT_EQ(line(handle, "x = 1", 0), "");
    EXPECT_EQ(line(handle, "END", 0), "");
    EXPECT_EQ(line(handle, "END", 0), "");
    EXPECT_EQ(line(handle, "y = 1", 0), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n"
                               "/A Singleton 0x1\n"
                               "/A/B Singleton 0x1\n"
                               "/A/B/x Param 0x1\n"
                               "/y Param 0\n");
}

TEST(VelParser, UserAndLibraryLists)
{
    const char *const lines[] = {"A:", "x = 1", "END"};
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(said(loadLibraryData(handle.get(), lines, 3)), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n/A Singleton 0x1\n/A/x Param 0x1\n");
    EXPECT_EQ(said(loadVELData(handle.get(), lines, 3)), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n/A Singleton 0\n/A/x Param 0\n");
    EXPECT_EQ(said(loadVELData(handle.get(), lines, 1)), "1 missing END statement(s) in input");
    EXPECT_EQ(said(loadVELData(handle.get(), lines, 0)), "");
    const char *const withNull[] = {"A:", nullptr, "END"};
    EXPECT_EQ(said(loadVELData(handle.get(), withNull, 3)), ""); // an empty line
    EXPECT_EQ(said(loadVELData(handle.get(), nullptr, 0)), "loadVELData: Invalid arguments");
    EXPECT_EQ(said(loadLibraryData(handle.get(), nullptr, 0)),
              "loadLibraryData: Invalid arguments");
    EXPECT_EQ(said(parseVELData(handle.get(), nullptr, 0)), "parseVELData: Invalid arguments");
}

// --- Digests ------------------------------------------------------------------------------

std::string hexadecimal(const velDigest &digest)
{
    std::string text;
    for (const unsigned char byte : digest.bytes) {
        std::array<char, 3> pair{};
        std::snprintf(pair.data(), pair.size(), "%02x", byte);
        text += pair.data();
    }
    return text;
}

std::string digestOf(std::string_view text)
{
    const velHandlePtr handle(velCreateHandle());
    velArray lines(velArrayKind::Strings);
    for (const std::string &one : linesOf(text)) {
        lines.addString(one);
    }
    velDigest digest{};
    // The digest is stored even if parsing fails.
    static_cast<void>(parseVELData(handle.get(), &lines, 0, nullptr, &digest));
    return hexadecimal(digest);
}

// Known answers are those of RFC 1321.
TEST(VelParser, TheDigestIsMd5OfTheLinesWithoutTheirEnds)
{
    EXPECT_EQ(digestOf(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(digestOf("\n\n"), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(digestOf("message digest\n"), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_EQ(digestOf("mess\nage\n\n digest"), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_NE(digestOf("message digest \n"), "f96b697d7cb7938d525a2f31aaf161d0");
}

TEST(VelParser, DataOfTheExpectedDigestIsMarked)
{
    const char *const lines[] = {"A:", "B:", "x = 1", "END", "END", "y = 2"};
    const velHandlePtr handle(velCreateHandle());
    velDigest digest{};
    EXPECT_EQ(said(loadVELData(handle.get(), lines, 6, nullptr, &digest)), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n"
                               "/A Singleton 0\n"
                               "/A/B Singleton 0\n"
                               "/A/B/x Param 0\n"
                               "/y Param 0\n");
    // Each line clears the mark of its node and of all subtrees above it, so only
    // leaves stay marked. Clients rely on that.
    EXPECT_EQ(said(loadVELData(handle.get(), lines, 6, &digest, nullptr)), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n"
                               "/A Singleton 0\n"
                               "/A/B Singleton 0x400\n"
                               "/A/B/x Param 0x400\n"
                               "/y Param 0x400\n");
    velDigest other = digest;
    other.bytes[15] ^= 1;
    velDigest again{};
    EXPECT_EQ(said(loadVELData(handle.get(), lines, 6, &other, &again)), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n"
                               "/A Singleton 0\n"
                               "/A/B Singleton 0\n"
                               "/A/B/x Param 0\n"
                               "/y Param 0\n");
    EXPECT_EQ(std::memcmp(&again, &digest, sizeof digest), 0);
}

TEST(VelParser, LibraryDataOfTheExpectedDigest)
{
    const char *const lines[] = {"A:", "END"};
    const velHandlePtr handle(velCreateHandle());
    velDigest digest{};
    EXPECT_EQ(said(loadLibraryData(handle.get(), lines, 2, nullptr, &digest)), "");
    EXPECT_EQ(said(loadLibraryData(handle.get(), lines, 2, &digest, nullptr)), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n/A Singleton 0x401\n");
}

// --- &replace -----------------------------------------------------------------------------

TEST(VelParser, AReplaceBlockDeletesWhatItDoesNotContain)
{
    const velHandlePtr handle = parsed("A: a\n"
                                       "x = 1\n"
                                       "y = 2\n"
                                       "B: old\nz = 1\nEND\n"
                                       "B: kept\nz = 1\nw = 2\nEND\n"
                                       "C:\nEND\n"
                                       "END\n"
                                       "A: other\nx = 1\nEND\n");
    ChangeLog log(handle);
    EXPECT_EQ(parse(handle, "&replace A: a\n"
                            "y = 2\n"
                            "v = 3\n"
                            "B: kept\nz = 9\nEND\n"
                            "END\n"),
              "");
    // The block contains this object too, so END deletes w.
    EXPECT_EQ(log.take(), "/A:a/v: 3 <- -\n"
                          "/A:a/B:kept/z: 9 <- 1\n"
                          "/A:a/B:kept/w: - <- 2\n"
                          "/A:a/x: - <- 1\n" // parameters first
                          "/A:a/B:old/z: - <- 1\n"
                          "/A:a/B:old: deleted\n"
                          "/A:a/C: deleted\n");
    EXPECT_EQ(stored(handle), "A: a\n"
                              "  y = 2\n"
                              "  B: kept\n"
                              "    z = 9\n"
                              "  END\n"
                              "  v = 3\n"
                              "END\n"
                              "A: other\n"
                              "  x = 1\n"
                              "END\n");
    EXPECT_EQ(flagsOf(handle).find("0x2"), std::string::npos); // no mark remains
}

TEST(VelParser, AReplaceBlockMakesMissingNodes)
{
    EXPECT_EQ(read("&replace A: a\nx = 1\n&replace B:\ny = 2\nEND\nEND\n"),
              "A: a\n  x = 1\n  B:\n    y = 2\n  END\nEND\n");
    EXPECT_EQ(read("A:\nx = 1\nEND\n&replace A:\nEND\n"), "A:\nEND\n");
    EXPECT_EQ(read("A:\nx = 1\nEND\n&replace A: A\nEND\n"), "A:\nEND\n");
}

TEST(VelParser, ReplaceInsideAnOrdinaryBlock)
{
    EXPECT_EQ(read("A:\nx = 1\nB:\ny = 2\nz = 3\nEND\nEND\n"
                   "A:\n&replace B:\nz = 4\nEND\nEND\n"),
              "A:\n  x = 1\n  B:\n    z = 4\n  END\nEND\n");
}

TEST(VelParser, ReplaceInsideReplace)
{
    const velHandlePtr handle = parsed("A:\n"
                                       "B:\nC:\nx = 1\ny = 1\nEND\nz = 1\nEND\n"
                                       "D:\nw = 1\nEND\n"
                                       "END\n");
    EXPECT_EQ(parse(handle, "&replace A:\n"
                            "&replace B:\n"
                            "&replace C:\n"
                            "x = 2\n"
                            "END\n"
                            "END\n"
                            "END\n"),
              "");
    EXPECT_EQ(stored(handle), "A:\n  B:\n    C:\n      x = 2\n    END\n  END\nEND\n");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n"
                               "/A Singleton 0\n"
                               "/A/B Singleton 0\n"
                               "/A/B/C Singleton 0\n"
                               "/A/B/C/x Param 0\n");
}

TEST(VelParser, TheMarkOfANestedObjectLastsUntilTheOuterEnd)
{
    const velHandlePtr handle(velCreateHandle());
    const auto flags = [&](const char *path) {
        return velDescribe(handle.get(), velFindNode(handle.get(), path)).flags;
    };
    for (const char *text : {"&replace A:", "B:", "x = 1"}) {
        EXPECT_EQ(line(handle, text), "");
    }
    EXPECT_EQ(flags("/A"), velFlagReplace);
    EXPECT_EQ(flags("/A/B"), velFlagReplace);
    EXPECT_EQ(flags("/A/B/x"), velFlagReplace);
    EXPECT_EQ(line(handle, "END"), "");
    EXPECT_EQ(flags("/A/B/x"), 0U);
    EXPECT_EQ(flags("/A/B"), velFlagReplace); // for A, the block contains it
    EXPECT_EQ(line(handle, "END"), "");
    EXPECT_EQ(flags("/A/B"), 0U);
    EXPECT_EQ(flags("/A"), 0U);
}

TEST(VelParser, AReplacedObjectMayBeOpenedTwice)
{
    EXPECT_EQ(read("A:\nB:\nx = 1\ny = 1\nEND\nEND\n"
                   "&replace A:\n"
                   "B:\nx = 2\nEND\n" // deletes y
                   "B:\ny = 3\nEND\n" // deletes x
                   "END\n"),
              "A:\n  B:\n    y = 3\n  END\nEND\n");
}

TEST(VelParser, ReplaceBeforeOtherStatements)
{
    const velHandlePtr handle = parsed("A:\nx = 1\ny = 1\nEND\n");
    EXPECT_EQ(parse(handle, "A:\n&replace x = 2\nEND\n"), ""); // replaces only x
    EXPECT_EQ(stored(handle), "A:\n  x = 2\n  y = 1\nEND\n");
    EXPECT_EQ(parse(handle, "A:\n&replace END\n"), "");
    EXPECT_EQ(stored(handle), "A:\n  x = 2\n  y = 1\nEND\n");
    EXPECT_EQ(parse(handle, "&replace bad\n"), "parseVELLineH: syntax error near \"bad\"");
    EXPECT_EQ(parse(handle, "&replace >go\n"), "no handler was found for action line");
    EXPECT_EQ(parse(handle, "&replace END\n"), "parseVELLineH: unmatched END");
    EXPECT_EQ(parse(handle, "&replace &replace A:\nEND\n"),
              "invalid object type \"&replace A\": leading character must be alphabetic or '_'");
    EXPECT_EQ(parse(handle, "&replace   A: # comment\nEND\n"), "");
    EXPECT_EQ(stored(handle), "A:\nEND\n");
}

TEST(VelParser, AReplaceBlockEndedByAnErrorIsNotSwept)
{
    const velHandlePtr handle = parsed("A:\nx = 1\ny = 1\nEND\n");
    EXPECT_EQ(parse(handle, "&replace A:\nx = 2\nbad\nEND\n"),
              "parseVELLineH: syntax error near \"bad\"");
    EXPECT_EQ(stored(handle), "A:\n  x = 2\n  y = 1\nEND\n");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n" // its marks remain
                               "/A Singleton 0x200\n"
                               "/A/x Param 0x200\n"
                               "/A/y Param 0\n");
    EXPECT_EQ(parse(handle, "&replace A:\ny = 2\nEND\n"), "");
    // The old mark counts once, as if the block contained x.
    EXPECT_EQ(stored(handle), "A:\n  x = 2\n  y = 2\nEND\n");
    EXPECT_EQ(parse(handle, "&replace A:\ny = 2\nEND\n"), "");
    EXPECT_EQ(stored(handle), "A:\n  y = 2\nEND\n");
}

// A mark from an earlier block has no effect; only &replace at the block counts.
TEST(VelParser, AnOldMarkDoesNotSweep)
{
    const velHandlePtr handle = parsed("A:\nB:\nx = 1\nEND\nEND\n");
    EXPECT_NE(parse(handle, "&replace A:\nbad\n"), "");
    EXPECT_EQ(said(pushPath(handle.get(), "/A")), "");
    EXPECT_EQ(parse(handle, "B:\ny = 2\nEND\n"), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n"
                               "/A Singleton 0x200\n"
                               "/A/B Singleton 0x200\n" // from its parent
                               "/A/B/x Param 0\n"
                               "/A/B/y Param 0x200\n");
}

TEST(VelParser, ReplacingLibraryData)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, "RULES:\nA: a\nx = 1\ny = 1\nEND\nEND\n", velFlagLibrary), "");
    EXPECT_EQ(parse(handle, "RULES:\n&replace A: a\ny = 2\nEND\nEND\n", velFlagLibrary), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n"
                               "/RULES Singleton 0x1\n"
                               "/RULES/A:a Object 0x1\n"
                               "/RULES/A:a/y Param 0x1\n");
}

TEST(VelParser, ReplacingAmongManyChildren)
{
    std::string before;
    std::string after;
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        const std::string number = std::to_string(i);
        const bool isObject = i % 3 == 0;
        const std::string text =
            isObject ? "O: o" + number + "\nz = 1\nEND\n" : "p" + number + " = 1\n";
        before += text;
        if (i % 7 == 0) {
            after += text;
            expected +=
                isObject ? "  O: o" + number + "\n    z = 1\n  END\n" : "  p" + number + " = 1\n";
        }
    }
    EXPECT_EQ(read("A:\n" + before + "END\n&replace A:\n" + after + "END\n"),
              "A:\n" + expected + "END\n");
}

} // namespace
