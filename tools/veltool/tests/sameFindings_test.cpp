// Checks that one bad file gives exactly the same findings in veltool check, in the
// editor (through the bridge) and in Perl.
#include "tools/veltool/tests/toolRun.h"
#include "velparser/api/velparser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace veltool::test {
namespace {

std::string mistakes()
{
    return std::string(std::getenv("VEL_SOURCE_DIR")) + "/examples/mistakes.vel";
}

std::vector<std::string> linesOf(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// The findings of veltool check, without "FILE:LINE: ".
std::vector<std::string> fromTool()
{
    const ToolRun run = runTool({"check", mistakes()});
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 1);
    std::vector<std::string> lines = linesOf(run.out);
    for (std::string &line : lines) {
        const std::size_t number = mistakes().size() + 1;
        EXPECT_EQ(line.rfind(mistakes() + ':', 0), 0U) << line;
        EXPECT_GT(std::atoi(line.c_str() + number), 0) << line;
        line.erase(0, line.find(": ", number) + 2);
    }
    return lines;
}

/// The findings after the calls that the editor makes when it opens a file.
std::vector<std::string> fromEditor()
{
    EXPECT_STREQ(velparser::readVELLibraries(), nullptr);
    EXPECT_STREQ(velparser::loadVELFromFile(mistakes().c_str(), "vel"), nullptr);
    EXPECT_STREQ(velparser::setUnitsChecking(1), nullptr);
    EXPECT_STREQ(velparser::setBoundsChecking(1), nullptr);
    EXPECT_STREQ(velparser::updateSolverVEL(), nullptr);
    const char *findings = velparser::validateVELDataH();
    return linesOf(findings != nullptr ? findings : "");
}

/// The findings of the packages under the system's perl, object by object.
std::vector<std::string> fromPerl()
{
    const TemporaryFolder folder;
    const std::string script =
        folder.write("walk.pl", "use strict; use warnings; use API; use VEL::Validate;\n"
                                "my $api = API->new;\n"
                                "my $database = $api->{database};\n"
                                "$api->readLibraries and die;\n"
                                "$api->readTextFile($ARGV[0], \\my @lines) and die;\n"
                                "$api->parseVELData(\\@lines, 0) and die;\n"
                                "my $validator = VEL::Validate->new($database);\n"
                                "$validator->setUnitsChecking(1) and die;\n"
                                "$validator->setBoundsChecking(1) and die;\n"
                                "sub walk {\n"
                                "    my ($path) = @_;\n"
                                "    return if $path eq '/RULES';\n"
                                "    my $said = $validator->validateObject($path || '/');\n"
                                "    print \"$said\\n\" if $said;\n"
                                "    $database->getChildObjectList($path || '/', \\my @objects);\n"
                                "    walk(\"$path/$_\") for @objects;\n"
                                "}\n"
                                "walk('');\n");
    const ToolRun run = runShell("PERL5LIB=\"$VEL_BUILD_DIR/perl\" $VEL_PERL '" + script + "' '" +
                                 mistakes() + "'");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    return linesOf(run.out);
}

TEST(SameFindings, InTheToolTheEditorAndPerl)
{
    const std::vector<std::string> tool = fromTool();
    EXPECT_EQ(tool.size(), 12U);
    for (const std::string &line : tool) {
        EXPECT_EQ(line.front(), '/') << line;
        EXPECT_EQ(line.back(), ']') << line;
    }
    EXPECT_EQ(fromEditor(), tool);
    EXPECT_EQ(fromPerl(), tool);
}

} // namespace
} // namespace veltool::test
