// veltool find: where a text occurs.
#include "tools/veltool/caseFold.h"
#include "tools/veltool/command.h"
#include "tools/veltool/commandData.h"
#include "tools/veltool/fileLoop.h"
#include "tools/veltool/json.h"
#include "tools/veltool/output.h"
#include "tools/veltool/statementIndex.h"
#include "tools/veltool/treeWalk.h"

#include <CLI/App.hpp>

#include <optional>

namespace veltool {

namespace {

class FindTask : public Task
{
public:
    void addOptions(CLI::App &app) override
    {
        app.add_flag("--json", json_, "Print an array of objects");
    }

    int run(const Words &words) override
    {
        wanted_ = foldCase(words.back());
        const std::span<const std::string> files(words.data(), words.size() - 1);
        int status = forEachFile(files, [this](const std::string &file) { return search(file); });
        if (json_)
            out() << array_.end();
        return status == statusGood && !found_ ? statusFindings : status;
    }

private:
    int search(const std::string &file)
    {
        const SourceText text = readText(file);
        const velHandlePtr handle = newHandle();
        parseText(handle.get(), text, file);
        std::optional<StatementIndex> index; // made for the first hit
        TreeWalk walk(handle.get(), velFindNode(handle.get(), "/"), "/");
        for (walk.step(); walk.node(); walk.step()) {
            if (!isHit(walk))
                continue;
            if (!index)
                index.emplace(text, handle.get());
            print(file, index->lineOf(walk.node()), walk);
        }
        return statusGood;
    }

    [[nodiscard]] bool isHit(const TreeWalk &walk) const
    {
        // The path ends in the name.
        if (holds(walk.path()))
            return true;
        const char *value = walk.info().value;
        return value && holds(value);
    }

    [[nodiscard]] bool holds(std::string_view text) const
    {
        return foldCase(text).find(wanted_) != std::string::npos;
    }

    void print(const std::string &file, std::size_t line, const TreeWalk &walk)
    {
        found_ = true;
        const char *value = walk.info().value;
        if (json_) {
            out() << array_.next() << '{' << jsonMember("file", file) << ','
                  << jsonMember("line", line) << ',' << jsonMember("path", walk.path()) << ','
                  << jsonMember("value", value) << '}';
            return;
        }
        out() << file << ':' << std::to_string(line) << ": " << walk.path();
        if (value)
            out() << " = " << value;
        out() << '\n';
    }

    bool json_ = false;
    bool found_ = false;
    std::string wanted_;
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
    .details = "Objects and parameters whose name, path or value holds TEXT; capital and small "
               "letters are the same. Status 1 without a hit.",
    .make = makeTask<FindTask>,
};

} // namespace veltool
