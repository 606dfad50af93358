// veltool format: prints the text that the editor would save.
//
// The rule libraries are read without Perl into a separate handle. They decide the
// order of the objects; their data is not in the text.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/fileLoop.h"
#include "tools/veltool/support/input.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/replacement.h"
#include "veltext/backup.h"
#include "veltext/replaceFile.h"
#include "veltext/statementTree.h"

#include <charconv>
#include <filesystem>

namespace veltool {

namespace {

constexpr std::int32_t narrowest = 3;

std::int32_t parseWidth(const std::string &text)
{
    std::int32_t width = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, width);
    if (error != std::errc() || stop != end || width < 0 || (width > 0 && width < narrowest)) {
        throw Failure("--width must be 0 (no wrapping) or 3 or more, not \"" + text + '"');
    }
    return width;
}

class FormatTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.text("--width", "N", width_, "Longest line; 0 for no wrapping",
                     std::to_string(velUsualWidth).c_str());
        options.flag("--in-place,-i", inPlace_, "Replace each FILE and keep FILE.bak");
        options.flag("--check,-c", check_,
                     "List each FILE that is not formatted; status 1 if there is one");
        options.text("--output,-o", "OUT", output_, "Write to OUT");
        replacement_.addOptions(options);
        options.atMostOneOf({"--in-place", "--check", "--output"});
    }

    int run(const Words &files) override
    {
        if (!width_.empty()) {
            columns_ = parseWidth(width_);
        }
        if (files.size() > 1 && !inPlace_ && !check_) {
            throw Failure("several files need --in-place or --check");
        }
        return forEachFile(files, [this](const std::string &file) { return format(file); });
    }

private:
    int format(const std::string &file) const
    {
        if (inPlace_) {
            return formatInPlace(file);
        }
        if (check_) {
            return checkFormat(file);
        }
        const velHandlePtr handle = loadFile(file);
        const std::string text = formatted(handle.get(), file);
        if (output_.empty() || output_ == standardInput) {
            out() << text;
        } else if (isItself(file)) {
            return formatInPlace(file);
        } else {
            veltext::writeFile(output_, text);
        }
        return statusGood;
    }

    int formatInPlace(const std::string &file) const
    {
        if (kindOfFile(file) == FileKind::Container) {
            throw containerRefusal(file);
        }
        requireEditable(file);
        veltext::EditedFile edited(file);
        const veltext::SourceText text = readText(file);
        const std::string result = formattedText(text, file);
        if (result == text.bytes()) {
            return statusGood;
        }
        replacement_.replace(edited, result);
        reportLostComments(veltext::countComments(text), file,
                           replacement_.makesBackup() ? edited.backupName() : "");
        return statusGood;
    }

    /// The file `backup` has the comments; the name is empty if no file has them.
    static void reportLostComments(std::size_t count, const std::string &file,
                                   const std::string &backup)
    {
        if (count == 0) {
            return;
        }
        const bool isOne = count == 1;
        report(file + ": " + (isOne ? "1 comment is" : std::to_string(count) + " comments are") +
               " not in the formatted text" +
               (backup.empty() ? "" : "; " + backup + (isOne ? " has it" : " has them")));
    }

    int checkFormat(const std::string &file) const
    {
        const veltext::SourceText text = readText(file);
        if (formattedText(text, file) == text.bytes()) {
            return statusGood;
        }
        out() << file << ": not formatted\n";
        return statusFindings;
    }

    std::string formattedText(const veltext::SourceText &text, const std::string &file) const
    {
        const velHandlePtr handle = newHandle();
        parseText(handle.get(), text, file);
        return formatted(handle.get(), file);
    }

    std::string formatted(velHandle *handle, const std::string &file) const
    {
        requireShallow(handle, file);
        if (!rules_) {
            rules_ = newHandle(Libraries::Read);
        }
        velStringList lines;
        require(velWrapTextByRules(handle, rules_.get(), "/", columns_, &lines), file);
        std::string text;
        for (const char *line : lines) {
            text.append(line).append(1, '\n');
        }
        return text;
    }

    /// Whether the output file is the input file and a regular file.
    [[nodiscard]] bool isItself(const std::string &file) const
    {
        std::error_code error;
        return veltext::isSameFile(file, output_) && std::filesystem::is_regular_file(file, error);
    }

    Replacement replacement_;
    std::string width_;
    std::int32_t columns_ = velUsualWidth;
    bool inPlace_ = false;
    bool check_ = false;
    std::string output_;
    mutable velHandlePtr rules_; ///< read for the first file
};

} // namespace

const Command formatCommand = {
    .name = "format",
    .words = "FILE...",
    .fewest = 1,
    .most = anyNumber,
    .passesOn = false,
    .purpose = "Print the text that the editor would save",
    .details =
        "In each object, parameters come first; objects are in the order of the rules. Lines "
        "are wrapped, line ends are LF. The text has no comments, because they are not data, "
        "and no byte order mark.",
    .make = makeTask<FormatTask>,
};

} // namespace veltool
