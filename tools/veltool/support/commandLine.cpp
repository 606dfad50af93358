// Sorts the words of the command line, writes the help, and runs the command.
#include "tools/veltool/support/commandLine.h"

#include "common/version.h"
#include "tools/veltool/support/output.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <algorithm>

namespace veltool {

namespace {

/// The usage line of a command, whose plain words CLI11 does not know.
class CommandFormatter : public CLI::Formatter
{
public:
    explicit CommandFormatter(std::string usage) : usage_(std::move(usage)) {}

    std::string make_usage(const CLI::App *, std::string) const override
    {
        return "\nUsage: " + usage_ + "\n";
    }

private:
    std::string usage_;
};

constexpr std::size_t helpWidth = 79;
constexpr std::size_t purposeColumn = 26; ///< in the list of the commands

/// The text broken into lines behind its blanks.
std::string wrapWords(const std::string &text)
{
    std::string wrapped;
    std::size_t column = 0;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        const std::size_t length = end - begin;
        const bool fits = column == 0 || column + 1 + length <= helpWidth;
        wrapped.append(column == 0 ? "" : fits ? " " : "\n").append(text, begin, length);
        column = fits && column ? column + 1 + length : length;
        begin = end + 1;
    }
    return wrapped;
}

bool isAsciiLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isOption(const std::string &word)
{
    if (word.size() < 2 || word[0] != '-')
        return false;
    return word[1] == '-' || isAsciiLetter(word[1]);
}

bool takesValue(const CLI::Option &option)
{
    return option.get_items_expected_max() > 0;
}

/// Walks over the words and sorts each into options and plain words.
class Splitter
{
public:
    Splitter(const CLI::App &app, const Words &words) : app_(app), words_(words) {}

    SplitWords run(bool passesOn)
    {
        bool optionsEnded = false;
        for (; position_ < words_.size(); ++position_) {
            const std::string &word = words_[position_];
            if (optionsEnded || !isOption(word)) {
                split_.plain.push_back(word);
                optionsEnded = optionsEnded || passesOn;
            } else if (word == "--") {
                optionsEnded = true;
            } else if (word[1] == '-') {
                longOption(word);
            } else {
                shortOptions(word);
            }
        }
        return std::move(split_);
    }

private:
    const CLI::Option &find(const std::string &name) const
    {
        const CLI::Option *option = app_.get_option_no_throw(name);
        if (!option)
            throw Failure("unknown option " + name);
        return *option;
    }

    void longOption(const std::string &word)
    {
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const CLI::Option &option = find(name);
        if (equals == std::string::npos)
            add(option, name, nullptr);
        else if (takesValue(option))
            addValue(option, name, word.substr(equals + 1));
        else
            throw Failure("option " + name + " takes no value");
    }

    /// "-i", "-o OUT", "-oOUT" or several letters in one word.
    void shortOptions(const std::string &word)
    {
        for (std::size_t i = 1; i < word.size(); ++i) {
            const std::string name{'-', word[i]};
            const CLI::Option &option = find(name);
            const std::string rest = word.substr(i + 1);
            if (takesValue(option)) {
                add(option, name, rest.empty() ? nullptr : &rest);
                return;
            }
            add(option, name, nullptr);
        }
    }

    void add(const CLI::Option &option, const std::string &name, const std::string *value)
    {
        if (!takesValue(option))
            split_.options.push_back("--" + option.get_lnames().front());
        else if (value)
            addValue(option, name, *value);
        else if (position_ + 1 < words_.size())
            addValue(option, name, words_[++position_]);
        else
            throw Failure("option " + name + " needs a value");
    }

    void addValue(const CLI::Option &option, const std::string &name, const std::string &value)
    {
        if (value.empty())
            throw Failure("option " + name + " needs a value");
        split_.options.push_back("--" + option.get_lnames().front() + '=' + value);
    }

    const CLI::App &app_;
    const Words &words_;
    std::size_t position_ = 0;
    SplitWords split_;
};

std::string generalHelp()
{
    std::string text = "veltool: looks at, checks and edits VEL command files.\n\n"
                       "Usage: veltool COMMAND [OPTIONS] WORDS...\n"
                       "       veltool COMMAND --help\n"
                       "       veltool --version\n\nCommands:\n";
    for (const Command *command : allCommands()) {
        std::string line = "  " + std::string(command->name) + ' ' + command->words;
        if (line.size() + 2 > purposeColumn)
            line += '\n' + std::string(purposeColumn, ' ');
        else
            line.resize(purposeColumn, ' ');
        text += line + command->purpose + '\n';
    }
    text += "\nExit status: 0 good; 1 findings, differences or no hit; 2 misuse or a failed "
            "operation.\nFILE may be - for standard input where a command only reads.\n"
            "-- ends the options; a VALUE that begins with a minus sign and a digit needs none.\n";
    return text;
}

std::string usageOf(const Command &command)
{
    const std::string words = command.words;
    return std::string("veltool ") + command.name + " [OPTIONS]" + (words.empty() ? "" : " ") +
           words;
}

void checkCount(const Command &command, std::size_t count)
{
    if (count >= command.fewest && count <= command.most)
        return;
    throw Failure(std::string(count < command.fewest ? "too few" : "too many") +
                  " words; usage: " + usageOf(command));
}

int dispatch(const Words &words)
{
    if (words.empty())
        throw Failure("no command given; see veltool --help");
    if (words[0] == "--help" || words[0] == "-h") {
        out() << generalHelp();
        return statusGood;
    }
    if (words[0] == "--version") {
        out() << "veltool " VEL_VERSION "\n";
        return statusGood;
    }
    const Command *command = findCommand(words[0]);
    if (!command)
        throw Failure("unknown command \"" + words[0] + "\"; see veltool --help");
    return runCommand(*command, Words(words.begin() + 1, words.end()));
}

/// Runs `work`; what it throws becomes a message and a status.
template <typename Work>
int guarded(Work work)
{
    try {
        return work();
    } catch (const veltext::Error &failure) {
        report(failure.message());
        return statusOf(failure);
    } catch (const std::bad_alloc &) {
        report("memory error");
    } catch (const std::exception &error) {
        report(error.what());
    }
    return statusFailed;
}

} // namespace

SplitWords splitWords(const CLI::App &app, const Words &words, bool passesOn)
{
    return Splitter(app, words).run(passesOn);
}

int runCommand(const Command &command, const Words &words)
{
    CLI::App app(std::string(command.purpose) + ".\n\n" + wrapWords(command.details));
    app.set_help_flag("-h,--help", "Show this text");
    app.set_version_flag("--version", "veltool " VEL_VERSION, "Show the version");
    app.formatter(std::make_shared<CommandFormatter>(usageOf(command)));
    const std::unique_ptr<Task> task = command.make();
    Options options(app);
    task->addOptions(options);

    SplitWords split = splitWords(app, words, command.passesOn);
    // CLI11 takes its words from the back of the list.
    std::reverse(split.options.begin(), split.options.end());
    try {
        app.parse(split.options);
    } catch (const CLI::CallForHelp &) {
        out() << app.help();
        return statusGood;
    } catch (const CLI::CallForVersion &version) {
        out() << version.what() << '\n';
        return statusGood;
    } catch (const CLI::Error &error) {
        throw Failure(error.what());
    }
    checkCount(command, split.plain.size());
    return task->run(split.plain);
}

int runCommandLine(const Words &words)
{
    const int status = guarded([&] { return dispatch(words); });
    const int written = guarded([] {
        out().finish();
        return statusGood;
    });
    return written == statusGood ? status : statusFailed;
}

} // namespace veltool
