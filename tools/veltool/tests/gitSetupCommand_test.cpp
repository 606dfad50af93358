// veltool git-setup and git-diff, in real repositories and a separate home folder.
#include "tools/veltool/tests/toolRun.h"

#include <gtest/gtest.h>

namespace veltool::test {
namespace {

const std::string base = "DOMAIN: Pipe\n"
                         "  Kind = Fluid\n"
                         "  Pressure = 1 [bar]\n"
                         "  BOUNDARY: in\n"
                         "    Flow = 0.5\n"
                         "  END\n"
                         "END\n";

class GitTest : public ::testing::Test
{
protected:
    GitTest()
    {
        unsetenv("XDG_CONFIG_HOME");
        setenv("HOME", folder_.path().c_str(), 1);
        setenv("GIT_CONFIG_NOSYSTEM", "1", 1);
        setenv("GIT_CEILING_DIRECTORIES", folder_.path().c_str(), 1);
        EXPECT_EQ(shell("git config --global user.name Tester && "
                        "git config --global user.email tester@example.org && "
                        "git config --global init.defaultBranch main && git init -q case")
                      .status,
                  0);
        std::filesystem::create_directory(folder_.path("case/sub"));
    }

    ToolRun shell(const std::string &line)
    {
        return runShell("cd '" + folder_.path() + "' && " + line);
    }

    /// Runs a line in the repository.
    ToolRun git(const std::string &line) { return shell("cd case && " + line); }

    void commit(const std::string &text, const std::string &message)
    {
        folder_.write("case/pipe.vel", text);
        EXPECT_EQ(git("git add -A && git commit -q -m " + message).status, 0);
    }

    /// Two branches from the same text; the second one is checked out.
    void branch(const std::string &theirs, const std::string &ours)
    {
        EXPECT_EQ(git("$VELTOOL git-setup").status, 0);
        commit(base, "base");
        EXPECT_EQ(git("git checkout -q -b other").status, 0);
        commit(theirs, "theirs");
        EXPECT_EQ(git("git checkout -q main").status, 0);
        commit(ours, "ours");
    }

    static std::string with(std::string text, const std::string &part, const std::string &other)
    {
        return text.replace(text.find(part), part.size(), other);
    }

    TemporaryFolder folder_;
};

const std::string allKeys = "diff.vel.command\n"
                            "diff.vel.xfuncname\n"
                            "diff.veldata.textconv\n"
                            "merge.vel.name\n"
                            "merge.vel.driver\n"
                            "merge.vel.recursive\n";

const std::string allAttributes = "*.vel diff=vel merge=vel\n"
                                  "*.def diff=veldata merge=binary -text\n"
                                  "*.res diff=veldata merge=binary -text\n";

TEST_F(GitTest, SetsUpOnceAndUndoes)
{
    folder_.write("case/.gitattributes", "*.txt text");
    const std::string former = folder_.read("case/.git/config");
    const ToolRun first = git("cd sub && $VELTOOL git-setup");
    EXPECT_EQ(first.status, 0) << first.err;
    EXPECT_NE(first.out.find("set merge.vel.driver\n"), std::string::npos) << first.out;
    EXPECT_EQ(git("git config --local --name-only --get-regexp '^(diff|merge)[.]'").out, allKeys);
    EXPECT_EQ(folder_.read("case/.gitattributes"), "*.txt text\n" + allAttributes);

    const std::string config = folder_.read("case/.git/config");
    const ToolRun second = git("$VELTOOL git-setup");
    EXPECT_EQ(second.out + second.err, "");
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(folder_.read("case/.git/config"), config);
    EXPECT_EQ(folder_.read("case/.gitattributes"), "*.txt text\n" + allAttributes);

    EXPECT_EQ(git("$VELTOOL git-setup --undo").status, 0);
    EXPECT_EQ(folder_.read("case/.git/config"), former);
    EXPECT_EQ(folder_.read("case/.gitattributes"), "*.txt text\n");
    EXPECT_EQ(git("$VELTOOL git-setup --undo").out, "");
}

TEST_F(GitTest, UndoRemovesAnEmptyFile)
{
    EXPECT_EQ(git("$VELTOOL git-setup && $VELTOOL git-setup --undo").status, 0);
    EXPECT_FALSE(folder_.has("case/.gitattributes"));
}

TEST_F(GitTest, SetsUpForAllRepositories)
{
    EXPECT_EQ(shell("$VELTOOL git-setup --global").status, 0);
    EXPECT_EQ(folder_.read(".config/git/attributes"), allAttributes);
    EXPECT_EQ(git("git check-attr merge x.vel").out, "x.vel: merge: vel\n");
    EXPECT_EQ(git("git config merge.vel.recursive").out, "binary\n");
    // git merges temporary files, whose versions nobody needs.
    EXPECT_NE(git("git config merge.vel.driver").out.find(" merge --no-backup "),
              std::string::npos);
    EXPECT_FALSE(folder_.has("case/.gitattributes"));
    EXPECT_EQ(shell("$VELTOOL git-setup --global --undo").status, 0);
    EXPECT_FALSE(folder_.has(".config/git/attributes"));

    EXPECT_EQ(shell("git config --global core.attributesFile '~/mine' && "
                    "$VELTOOL git-setup --global")
                  .status,
              0);
    EXPECT_EQ(folder_.read("mine"), allAttributes);
}

TEST_F(GitTest, ItsFailuresAreFailures)
{
    EXPECT_EQ(shell("$VELTOOL git-setup").status, 2); // not a repository
    EXPECT_EQ(git("$VELTOOL git-setup more").status, 2);
    EXPECT_EQ(git("$VELTOOL git-setup --no").status, 2);
    const ToolRun without = git("PATH=/nowhere $VELTOOL git-setup");
    EXPECT_EQ(without.status, 2);
    EXPECT_EQ(without.err, "veltool: git: No such file or directory\n");
    EXPECT_EQ(git("mkdir .gitattributes; $VELTOOL git-setup").status, 2);
    EXPECT_EQ(git("$VELTOOL git-setup > /dev/full").status, 2);
    EXPECT_EQ(git("touch .git/config.lock; $VELTOOL git-setup --undo").status, 2);
}

TEST_F(GitTest, DiffShowsPaths)
{
    EXPECT_EQ(git("$VELTOOL git-setup").status, 0);
    commit(base, "base");
    const std::string changed = with(base, "  Kind = Fluid\n  Pressure = 1 [bar]\n",
                                     "  Pressure = 2 [bar]  # more\n  Kind = Fluid\n");
    folder_.write("case/pipe.vel", changed);
    const std::string head = "diff --veltool a/pipe.vel b/pipe.vel\n";
    EXPECT_EQ(git("git diff").out, head + "~ /DOMAIN:Pipe/Pressure = 1 [bar] -> 2 [bar]\n");
    const ToolRun text = git("git diff --no-ext-diff -U0");
    EXPECT_NE(text.out.find(" DOMAIN: Pipe\n"), std::string::npos) << text.out; // the hunk's header
    EXPECT_NE(text.out.find("+  Pressure = 2 [bar]  # more\n"), std::string::npos) << text.out;

    folder_.write("case/pipe.vel", "# only a comment\n" + base);
    const ToolRun comment = git("git diff");
    EXPECT_EQ(comment.out.rfind(head, 0), 0U) << comment.out;
    EXPECT_NE(comment.out.find("\n+# only a comment\n"), std::string::npos) << comment.out;

    folder_.write("case/pipe.vel", "DOMAIN: Pipe\n");
    const ToolRun cut = git("git diff");
    EXPECT_EQ(cut.status, 0);
    EXPECT_NE(cut.err.find("1 missing END statement(s) in input"), std::string::npos) << cut.err;
    EXPECT_NE(cut.out.find("\n-  Kind = Fluid\n"), std::string::npos) << cut.out;

    EXPECT_EQ(git("git rm -q --cached pipe.vel; rm pipe.vel; git diff HEAD").out,
              "diff --veltool a/pipe.vel b/pipe.vel\n"
              "- /DOMAIN:Pipe\n"
              "- /DOMAIN:Pipe/Kind = Fluid\n"
              "- /DOMAIN:Pipe/Pressure = 1 [bar]\n"
              "- /DOMAIN:Pipe/BOUNDARY:in\n"
              "- /DOMAIN:Pipe/BOUNDARY:in/Flow = 0.5\n");
}

TEST_F(GitTest, DiffOfAContainerShowsItsData)
{
    EXPECT_EQ(
        git("$VELTOOL git-setup && echo 3 | $VELTOOL ds write -- '-a b.res' Zones EVERY 0 INTR")
            .status,
        0);
    commit(base, "base");
    // Without command data, the list of datasets is compared.
    EXPECT_EQ(git("echo 4 | $VELTOOL ds write -- '-a b.res' More EVERY 0 INTR").status, 0);
    EXPECT_NE(git("git diff").out.find("\n+Y\tMore\t"), std::string::npos);
    folder_.write("case/x", base);
    folder_.write("case/y", with(base, "Fluid", "Solid"));
    EXPECT_EQ(git("$VELTOOL embed -- x '-a b.res' && git commit -q -a -m data && "
                  "$VELTOOL embed -- y '-a b.res'")
                  .status,
              0);
    const ToolRun run = git("git diff");
    EXPECT_NE(run.out.find("\n-  Kind = Fluid\n+  Kind = Solid\n"), std::string::npos)
        << run.out << run.err;
    // A damaged file must not stop git.
    folder_.write("case/-a b.res", "*INFO\nno more");
    EXPECT_EQ(git("git diff").status, 0);
}

TEST_F(GitTest, MergesByPath)
{
    // Neighbouring lines, which are a conflict for a merge by lines.
    branch(with(base, "Pressure = 1", "Pressure = 2"), with(base, "Fluid", "Solid # as built"));
    const ToolRun run = git("git merge -q --no-edit other");
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(folder_.read("case/pipe.vel"),
              with(with(base, "Pressure = 1", "Pressure = 2"), "Fluid", "Solid # as built"));
    EXPECT_EQ(git("git status --porcelain").out, "");
}

TEST_F(GitTest, LeavesAConflictToTheUser)
{
    branch(with(base, "Pressure = 1", "Pressure = 2"), with(base, "Pressure = 1", "Pressure = 3"));
    const ToolRun run = git("git merge -q --no-edit other");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE((run.out + run.err)
                  .find("veltool: pipe.vel: /DOMAIN:Pipe/Pressure: changed on both sides\n"),
              std::string::npos)
        << run.out << run.err;
    EXPECT_EQ(folder_.read("case/pipe.vel"), with(base, "  Pressure = 1 [bar]\n",
                                                  "<<<<<<< ours\n"
                                                  "  Pressure = 3 [bar]\n"
                                                  "=======\n"
                                                  "  Pressure = 2 [bar]\n"
                                                  ">>>>>>> theirs\n"));
    EXPECT_EQ(git("git status --porcelain").out, "UU pipe.vel\n");
}

TEST_F(GitTest, AFileThatCannotBeReadIsMergedByLinesAndStaysAConflict)
{
    branch(with(base, "Flow = 0.5", "Flow"), with(base, "Fluid", "Solid"));
    const ToolRun run = git("git merge -q --no-edit other");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(folder_.read("case/pipe.vel"),
              with(with(base, "Fluid", "Solid"), "Flow = 0.5", "Flow"));
    EXPECT_EQ(git("git status --porcelain").out, "UU pipe.vel\n");
}

TEST_F(GitTest, WorksWithAnyNames)
{
    EXPECT_EQ(shell("mkdir -p \"100%A it's/bin\" && cp \"$VELTOOL\" \"100%A it's/bin\" && "
                    "git init -q \"it's a case\" && cd \"it's a case\" && "
                    "\"../100%A it's/bin/veltool\" git-setup && "
                    "echo 'a = 1' > \"it's.vel\" && git add -A && git commit -q -m base && "
                    "git checkout -q -b other && echo 'a = 2' > \"it's.vel\" && "
                    "git commit -q -a -m theirs && git checkout -q main && "
                    "echo 'a = 3' > \"it's.vel\" && git commit -q -a -m ours")
                  .status,
              0);
    EXPECT_EQ(shell("cd \"it's a case\" && git diff other").out,
              "diff --veltool a/it's.vel b/it's.vel\n~ /a = 2 -> 3\n");
    const ToolRun run = shell("cd \"it's a case\" && git merge -q --no-edit other");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE((run.out + run.err).find("veltool: it's.vel: /a: changed on both sides\n"),
              std::string::npos)
        << run.out << run.err;
}

TEST(GitDiff, AcceptsTheArgumentsOfGit)
{
    const TemporaryFolder folder;
    const std::string a = folder.write("a", "x = 1\n");
    const std::string b = folder.write("b", "x = 2\n");
    EXPECT_EQ(runTool({"git-diff", "--", "p", a, "0", "0", b, "0", "0", "q", "similarity"}).out,
              "diff --veltool a/p b/q\n~ /x = 1 -> 2\n");
    EXPECT_EQ(runTool({"git-diff", "--", "p"}).out, "* Unmerged path p\n");
    EXPECT_EQ(runTool({"git-diff"}).status, 2);
    EXPECT_EQ(runTool({"git-diff", "p", a, "0", "0", b}).status, 2);
    EXPECT_EQ(runTool({"git-diff", "p", a, "0", "0", folder.path("missing"), "0", "0"}).status, 2);
}

} // namespace
} // namespace veltool::test
