// veltool git-setup: configures git to compare and merge command files by path.
#include "tools/veltool/git/gitProgram.h"
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/environment.h"
#include "tools/veltool/support/input.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/programPlace.h"
#include "veltext/replaceFile.h"
#include "veltext/sourceText.h"

#include <cerrno>
#include <filesystem>
#include <unistd.h>

namespace veltool {

namespace {

/// The drivers for files, by their endings. A def or res file is never merged by
/// lines, and its line ends never change.
constexpr const char *attributeLines[] = {
    "*.vel diff=vel merge=vel",
    "*.def diff=veldata merge=binary -text",
    "*.res diff=veldata merge=binary -text",
};

struct Setting
{
    const char *key;
    std::string value;
};

std::string replaced(const std::string &text, char part, const char *other)
{
    std::string result;
    for (const char c : text) {
        result += c == part ? std::string(other) : std::string(1, c);
    }
    return result;
}

/// The text as one word for the shell that runs the drivers of git.
std::string quoted(const std::string &text)
{
    return '\'' + replaced(text, '\'', "'\\''") + '\'';
}

std::string ownProgram()
{
    const std::string folder = programFolder();
    return folder.empty() ? "veltool" : quoted(folder + "/bin/veltool");
}

std::vector<Setting> settings()
{
    const std::string veltool = ownProgram();
    return {
        {"diff.vel.command", veltool + " git-diff --"},
        // The block around a change, for git's comparison by lines.
        {"diff.vel.xfuncname", "^[ \t]*((&replace[ \t]+)?[A-Za-z_%][^=#]*:.*)$"},
        // The command data. Without command data the list of datasets, otherwise
        // a checksum.
        {"diff.veldata.textconv", "f() { " + veltool + " extract -- \"$1\" 2>/dev/null || " +
                                      veltool +
                                      " ds list -- \"$1\" 2>/dev/null || cksum <\"$1\"; }; f"},
        {"merge.vel.name", "VEL command data by path"},
        // A file that does not contain command data is merged by lines, and
        // always reported as a conflict.
        {"merge.vel.driver",
         // git replaces %O, %A and so on. So other percent signs are doubled.
         replaced(veltool, '%', "%%") +
             " merge --no-backup --marker-size=%L --name=%P --output=%A -- %O %A %B || { s=$?; "
             "[ $s -eq 1 ] || git merge-file -q --marker-size=%L -L ours -L base -L theirs "
             "%A %O %B; exit $s; }"},
        // A base that git makes from several commits must not contain conflict
        // markers.
        {"merge.vel.recursive", "binary"},
    };
}

std::string withoutLineEnd(std::string text)
{
    while (text.ends_with('\n')) {
        text.pop_back();
    }
    return text;
}

class GitSetupTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--global", global_, "Configure all repositories of the user");
        options.flag("--undo", undo_, "Remove the changes of git-setup");
    }

    int run(const Words &) override
    {
        const std::string attributes = global_ ? userAttributes() : repositoryAttributes();
        for (const Setting &setting : settings()) {
            configure(setting);
        }
        changeAttributes(attributes);
        return statusGood;
    }

private:
    [[nodiscard]] Words config(const Words &words) const
    {
        Words all{"config", global_ ? "--global" : "--local"};
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }

    static std::string repositoryAttributes()
    {
        return withoutLineEnd(requireGit({"rev-parse", "--show-toplevel"})) + "/.gitattributes";
    }

    /// The file that git reads for every repository of the user.
    static std::string userAttributes()
    {
        const GitResult named =
            runGit({"config", "--global", "--type=path", "core.attributesFile"});
        if (named.status == 0) {
            return withoutLineEnd(named.out);
        }
        const std::string settings = environment::settingsFolder();
        if (settings.empty()) {
            throw Failure("cannot find the user's git attributes: HOME is not set");
        }
        return settings + "/git/attributes";
    }

    void configure(const Setting &setting) const
    {
        const GitResult former = runGit(config({"--get", setting.key}));
        const bool isThere = former.status == 0;
        if (undo_ ? !isThere : isThere && former.out == setting.value + '\n') {
            return;
        }
        if (undo_) {
            requireGit(config({"--unset-all", setting.key}));
        } else {
            requireGit(config({"--replace-all", setting.key, setting.value}));
        }
        out() << (undo_ ? "removed " : "set ") << setting.key << '\n';
    }

    /// Adds our lines to the end of the file, or with --undo removes them.
    void changeAttributes(const std::string &file) const
    {
        std::error_code error;
        const bool exists = std::filesystem::exists(file, error);
        const std::string former = exists ? readInput(file) : "";
        const std::string text = undo_ ? withoutOurLines(former) : withOurLines(former);
        if (text == former) {
            return;
        }
        if (text.empty()) {
            if (unlink(file.c_str()) != 0) {
                throw systemError(file, errno);
            }
        } else {
            std::filesystem::create_directories(std::filesystem::path(file).parent_path(), error);
            veltext::writeFile(file, text);
        }
        out() << (undo_ ? "removed from " : "added to ") << file << '\n';
    }

    static bool isOurs(std::string_view line)
    {
        for (const char *ours : attributeLines) {
            if (line == ours) {
                return true;
            }
        }
        return false;
    }

    static std::string withoutOurLines(const std::string &text)
    {
        const veltext::SourceText source(text);
        std::string rest;
        for (std::size_t i = 0; i < source.lineCount(); ++i) {
            if (!isOurs(source.line(i))) {
                rest +=
                    text.substr(source.lineStart(i), source.lineStart(i + 1) - source.lineStart(i));
            }
        }
        return rest;
    }

    static std::string withOurLines(std::string text)
    {
        const veltext::SourceText source(text);
        for (const char *ours : attributeLines) {
            bool isThere = false;
            for (std::size_t i = 0; i < source.lineCount(); ++i) {
                isThere = isThere || source.line(i) == ours;
            }
            if (isThere) {
                continue;
            }
            if (!text.empty() && text.back() != '\n') {
                text += '\n';
            }
            text.append(ours).append(1, '\n');
        }
        return text;
    }

    bool global_ = false;
    bool undo_ = false;
};

} // namespace

const Command gitSetupCommand = {
    .name = "git-setup",
    .words = "",
    .fewest = 0,
    .most = 0,
    .passesOn = false,
    .purpose = "Let git compare and merge command files by path",
    .details = "Adds the drivers to the configuration of the repository around the current folder, "
               "and sets them for *.vel, *.def and *.res in its .gitattributes. Lists each change; "
               "a second run changes nothing.",
    .make = makeTask<GitSetupTask>,
};

} // namespace veltool
