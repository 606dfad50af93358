// Separates options from arguments, writes the help, and runs the command.
#include "tools/veltool/support/commandLine.h"

#include "common/version.h"
#include "tools/veltool/support/closestWord.h"
#include "tools/veltool/support/output.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <algorithm>

namespace veltool {

namespace {

/// Writes the usage line of a command, because CLI11 does not know the arguments.
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
constexpr std::size_t purposeColumn = 26; ///< in the list of commands

/// The text in lines with at most `helpWidth` characters.
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
    if (word.size() < 2 || word[0] != '-') {
        return false;
    }
    return word[1] == '-' || isAsciiLetter(word[1]);
}

bool takesValue(const CLI::Option &option)
{
    return option.get_items_expected_max() > 0;
}

/// Separates the words of a command line into options and arguments.
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
        if (option == nullptr) {
            throw unknownOption(name);
        }
        return *option;
    }

    /// The Failure for an option that the command does not have.
    Failure unknownOption(const std::string &name) const
    {
        std::vector<std::string> known;
        for (const CLI::Option *option : app_.get_options()) {
            known.insert(known.end(), option->get_lnames().begin(), option->get_lnames().end());
        }
        const bool isLong = name.starts_with("--");
        const std::string meant = isLong ? closestWord(name.substr(2), known) : "";
        return Failure("unknown option \"" + name + '"' +
                       (meant.empty() ? "; see " + app_.get_name() + " --help"
                                      : "; did you mean \"--" + meant + "\"?"));
    }

    void longOption(const std::string &word)
    {
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const CLI::Option &option = find(name);
        if (equals == std::string::npos) {
            add(option, name, nullptr);
        } else if (takesValue(option)) {
            addValue(option, name, word.substr(equals + 1));
        } else {
            throw Failure("option " + name + " takes no value");
        }
    }

    /// Accepts "-i", "-o OUT", "-oOUT", and several letters in one word.
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
        if (!takesValue(option)) {
            split_.options.push_back("--" + option.get_lnames().front());
        } else if (value != nullptr) {
            addValue(option, name, *value);
        } else if (position_ + 1 < words_.size()) {
            addValue(option, name, words_[++position_]);
        } else {
            throw Failure("option " + name + " needs a value");
        }
    }

    void addValue(const CLI::Option &option, const std::string &name, const std::string &value)
    {
        if (value.empty()) {
            throw Failure("option " + name + " needs a value");
        }
        split_.options.push_back("--" + option.get_lnames().front() + '=' + value);
    }

    const CLI::App &app_;
    const Words &words_;
    std::size_t position_ = 0;
    SplitWords split_;
};

std::string generalHelp()
{
    std::string text = "veltool: shows, checks and edits VEL command files.\n\n"
                       "Usage: veltool COMMAND [OPTIONS] ARGUMENTS...\n"
                       "       veltool COMMAND --help\n"
                       "       veltool --version\n\nCommands:\n";
    for (const Command *command : allCommands()) {
        std::string line = "  " + std::string(command->name) + ' ' + command->words;
        if (line.size() + 2 > purposeColumn) {
            line += '\n' + std::string(purposeColumn, ' ');
        } else {
            line.resize(purposeColumn, ' ');
        }
        text += line + command->purpose + '\n';
    }
    text += "\nExit status: 0 success; 1 findings, differences or no match; 2 usage error or\n"
            "failed operation.\n"
            "FILE may be - for standard input if the command only reads it.\n"
            "-- ends the options. A VALUE such as -5 [Pa] does not need it.\n";
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
    if (count >= command.fewest && count <= command.most) {
        return;
    }
    throw Failure(std::string(count < command.fewest ? "missing argument" : "too many arguments") +
                  "; usage: " + usageOf(command));
}

int dispatch(const Words &words)
{
    if (words.empty()) {
        throw Failure("missing command; see veltool --help");
    }
    if (words[0] == "--help" || words[0] == "-h") {
        out() << generalHelp();
        return statusGood;
    }
    if (words[0] == "--version") {
        out() << "veltool " VEL_VERSION "\n";
        return statusGood;
    }
    if (isOption(words[0])) {
        throw Failure("unknown option \"" + words[0] + "\"; see veltool --help");
    }
    const Command &command = requireCommand(allCommands(), "", words[0]);
    return runCommand(command, Words(words.begin() + 1, words.end()));
}

/// Runs `work`. An exception becomes a message and a status.
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
    CLI::App app(std::string(command.purpose) + ".\n\n" + wrapWords(command.details),
                 std::string("veltool ") + command.name);
    app.set_help_flag("-h,--help", "Show this text");
    app.set_version_flag("--version", "veltool " VEL_VERSION, "Show the version");
    app.formatter(std::make_shared<CommandFormatter>(usageOf(command)));
    const std::unique_ptr<Task> task = command.make();
    Options options(app);
    task->addOptions(options);

    SplitWords split = splitWords(app, words, command.passesOn);
    // CLI11 reads the list from its end.
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
