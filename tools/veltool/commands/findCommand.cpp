// veltool find: shows where a text occurs.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/fileLoop.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/textPattern.h"
#include "velapilt/src/velSpace.h"
#include "veltext/error.h"
#include "veltext/statementTree.h"
#include "veltext/treeWalk.h"

#include <optional>

namespace veltool {

namespace {

/// The search: for a text anywhere in a path or value. NAME=VALUE also finds the
/// parameters with this name and value.
class Search
{
public:
    explicit Search(const std::string &text) : text_(text)
    {
        const std::size_t equals = text.find('=');
        if (equals == std::string::npos) {
            return;
        }
        name_.emplace(velTrim(std::string_view(text).substr(0, equals)));
        value_.emplace(velTrim(std::string_view(text).substr(equals + 1)));
    }

    [[nodiscard]] bool matches(const veltext::TreeWalk &walk) const
    {
        const velNodeInfo &info = walk.info();
        // The path ends with the name.
        if (text_.isIn(walk.path()) || ((info.value != nullptr) && text_.isIn(info.value))) {
            return true;
        }
        return name_ && info.value != nullptr && name_->fits(info.name) && value_->fits(info.value);
    }

private:
    TextPattern text_;
    std::optional<TextPattern> name_;
    std::optional<TextPattern> value_;
};

class FindTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--json", json_, "Print an array of objects");
    }

    int run(const Words &words) override
    {
        wanted_.emplace(words.back());
        const std::span<const std::string> files(words.data(), words.size() - 1);
        int status = forEachFile(files, [this](const std::string &file) { return search(file); });
        if (json_) {
            out() << array_.end();
        }
        return status == statusGood && !found_ ? statusFindings : status;
    }

private:
    int search(const std::string &file)
    {
        const veltext::SourceText text = readText(file);
        const velHandlePtr handle = newHandle();
        parseText(handle.get(), text, file);
        requireShallow(handle.get(), file);
        std::optional<veltext::StatementTree> lines; // made for the first match
        veltext::TreeWalk walk(handle.get(), velFindNode(handle.get(), "/"), "/");
        for (walk.step(); walk.node() != nullptr; walk.step()) {
            if (!wanted_->matches(walk)) {
                continue;
            }
            if (!lines) {
                lines.emplace(text);
            }
            print(file, lines->lineOf(walk.path()), walk);
        }
        return statusGood;
    }

    void print(const std::string &file, std::size_t line, const veltext::TreeWalk &walk)
    {
        found_ = true;
        const char *value = walk.info().value;
        if (json_) {
            out() << array_.next() << '{' << jsonMember("file", file) << ','
                  << jsonMember("line", line) << ',' << jsonMember("path", walk.path()) << ','
                  << jsonMember("value", value) << '}';
            return;
        }
        out() << veltext::findingPlace(file, line) << walk.path();
        if (value != nullptr) {
            out() << " = " << value;
        }
        out() << '\n';
    }

    bool json_ = false;
    bool found_ = false;
    std::optional<Search> wanted_;
    JsonArray array_;
};

} // namespace

const Command findTextCommand = {
    .name = "find",
    .words = "FILE... TEXT",
    .fewest = 2,
    .most = anyNumber,
    .passesOn = false,
    .purpose = "Show where a text occurs",
    .details =
        "Finds objects and parameters whose path or value contains TEXT; upper and "
        "lower case are the same, * matches any characters and ? matches one. NAME=VALUE also "
        "finds the parameters with exactly this name and value; both may have wildcards. "
        "Prints FILE:LINE: PATH = VALUE. Status 1 without a match.",
    .make = makeTask<FindTask>,
};

} // namespace veltool
