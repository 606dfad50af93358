// Runs veltool with the user's Perl packages, which return only texts.
#include "tools/veltool/tests/ownRules.h"

#include <gtest/gtest.h>

namespace veltool::test {
namespace {

const char *const ownApi = R"perl(
package API;
use strict;
BEGIN { push @INC, "$ENV{VEL_BUILD_DIR}/perl" }
use VEL::Parser::Lite;
sub new { return bless { database => VEL::Parser::Lite::NEW() }, shift }
sub readLibraries {
    my ($self) = @_;
    my $error = $self->{database}->readLibraries;
    return $error if $error;
    return $self->{database}->havePath('/RULES/OBJECT:X')
        ? "/RULES/OBJECT:X/Y: no rule of mine [bad-rule]\n" : '';
}
sub parseVELData { return $_[0]{database}->loadVELData($_[1]) }
sub updateSolverVEL {
    my ($self) = @_;
    my $database = $self->{database};
    return '' if !$database->havePath('/PUMP:a/Lift [m]');
    return "/PUMP:a: looked at\nno luck [1]\nat all" if $database->havePath('/PUMP:a/Bad');
    $database->getStringValue('/PUMP:a/Lift [m]', \my $value);
    $database->deleteParam('/PUMP:a/Lift [m]');
    $database->createParam('/PUMP:a/Head', $value);
    return qq(/PUMP:a/Lift [m]: now "Head" [m]);
}
sub explainItem { @{ $_[2] } = ('Unit = 1 [m] = 100 [cm]', 'Silent'); return }
1;
)perl";

const char *const ownValidator = R"perl(
package VEL::Validate;
use strict;
sub new { return bless { database => $_[1] }, $_[0] }
sub setUnitsChecking { return }
sub setBoundsChecking { return }
sub validateObject {
    my ($self, $path) = @_;
    return "$path/Kind [1]: not known: \"x\" [m] [not-known]\n$path: of another sort [1]" if $path eq '/PUMP:a';
    return 'out of order [always]' if $path eq '/FAN';
    return;
}
1;
)perl";

class OwnPerl : public ::testing::Test
{
protected:
    OwnPerl()
    {
        std::filesystem::create_directory(perl_.path("VEL"));
        perl_.write("VEL/embeddedParserInit.pl", "use API;\n");
        perl_.write("API.pm", ownApi);
        perl_.write("VEL/Validate.pm", ownValidator);
    }

    [[nodiscard]] ToolRun run(const std::string &words) const
    {
        return runShell("ZOT5_VEL_PARSER='" + perl_.path() + "' $VELTOOL " + words);
    }

    OwnRules rules_{"RULES:\nEND\n"};
    TemporaryFolder perl_;
    TemporaryFolder folder_;
};

const char *const pump = "PUMP: a\n  Kind [1] = x\n  Lift [m] = 1\nEND\n";

TEST_F(OwnPerl, FindingsHaveLinePathAndIdentifier)
{
    const std::string file = folder_.write("a.vel", "PUMP: a\n  Kind [1] = x\nEND\n");
    const ToolRun text = run("check " + file);
    EXPECT_EQ(text.status, 1) << text.err;
    EXPECT_EQ(text.out, file + ":2: /PUMP:a/Kind [1]: not known: \"x\" [m] [not-known]\n" + file +
                            ":1: /PUMP:a: of another sort [1]\n");
    const ToolRun json = run("check --json " + file);
    EXPECT_EQ(json.out, "[\n{\"file\":\"" + file +
                            "\",\"line\":2,\"path\":\"/PUMP:a/Kind [1]\",\"message\":\"not known: "
                            "\\\"x\\\" [m]\",\"id\":\"not-known\"},\n{\"file\":\"" +
                            file +
                            "\",\"line\":1,\"path\":\"/PUMP:a\",\"message\":\"of another sort "
                            "[1]\",\"id\":\"\"}\n]\n");
}

TEST_F(OwnPerl, AFindingWithoutAPathIsAFailure)
{
    const std::string file = folder_.write("a.vel", "FAN:\nEND\n");
    const ToolRun text = run("check " + file);
    EXPECT_EQ(text.status, 2);
    EXPECT_EQ(text.out, "");
    EXPECT_EQ(text.err, "veltool: " + file + ": out of order\n");
}

TEST_F(OwnPerl, ChangesAreListedAndMade)
{
    const std::string file = folder_.write("a.vel", pump);
    const ToolRun check = run("check " + file);
    EXPECT_NE(check.err.find("was upgraded in memory before the check (1 change)"),
              std::string::npos)
        << check.err;
    const ToolRun upgrade = run("upgrade " + file);
    EXPECT_EQ(upgrade.err, "");
    EXPECT_EQ(upgrade.out, file + ":3: /PUMP:a/Lift [m]: now \"Head\" [m]\n");
    EXPECT_EQ(folder_.read("a.vel"), "PUMP: a\n  Kind [1] = x\n  Head = 1\nEND\n");
}

TEST_F(OwnPerl, ATextThatIsNotAChangeIsAFailure)
{
    const std::string file = folder_.write("a.vel", "PUMP: a\n  Lift [m] = 1\n  Bad = 1\nEND\n");
    const ToolRun upgrade = run("upgrade " + file);
    EXPECT_EQ(upgrade.status, 2);
    EXPECT_EQ(upgrade.err, "veltool: " + file + ": no luck [1]\n");
}

TEST_F(OwnPerl, FieldsArePrintedAsLines)
{
    const std::string file = folder_.write("a.vel", pump);
    EXPECT_EQ(run("explain --json " + file + " '/PUMP:a/Kind [1]'").out,
              "{\"path\":\"/PUMP:a/Kind [1]\",\"fields\":{\"Unit\":\"1 [m] = 100 [cm]\","
              "\"Silent\":\"\"}}\n");
}

TEST_F(OwnPerl, FaultsOfRulesHaveFileAndLine)
{
    const std::string library =
        folder_.write("own.vel", "RULES:\n  OBJECT: X\n    Y = 1\n  END\nEND\n");
    const ToolRun faults = run("rules check " + library);
    EXPECT_EQ(faults.status, 1) << faults.err;
    EXPECT_EQ(faults.out, library + ":3: /RULES/OBJECT:X/Y: no rule of mine [bad-rule]\n");
}

} // namespace
} // namespace veltool::test
