// veltool get: prints the value of a parameter.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/fileLoop.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"

namespace veltool {

namespace {

class GetTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--json", json_, "Print an array of objects");
    }

    int run(const Words &words) override
    {
        path_ = words.back();
        const std::span<const std::string> files(words.data(), words.size() - 1);
        const bool named = files.size() > 1;
        const int status =
            forEachFile(files, [&](const std::string &file) { return print(file, named); });
        if (json_) {
            out() << array_.end();
        }
        return status;
    }

private:
    int print(const std::string &file, bool named)
    {
        const velHandlePtr handle = loadFile(file);
        const char *path = path_.c_str();
        std::optional<std::string> value;
        require(getStringValue(handle.get(), path, &value), file);
        if (isObject(handle.get(), path)) {
            throw Failure(file + ": " + velFullPath(handle.get(), path) +
                          " is an object; use veltool tree to show it");
        }
        if (json_) {
            out() << array_.next() << '{' << jsonMember("file", file) << ','
                  << jsonMember("path", velFullPath(handle.get(), path)) << ','
                  << jsonMember("value", value.value_or("")) << '}';
        } else {
            out() << (named ? file + ": " : "") << value.value_or("") << '\n';
        }
        return statusGood;
    }

    bool json_ = false;
    std::string path_;
    JsonArray array_;
};

} // namespace

const Command getCommand = {
    .name = "get",
    .words = "FILE... PATH",
    .fewest = 2,
    .most = anyNumber,
    .passesOn = false,
    .purpose = "Print the value of a parameter",
    .details = "Prints the value on one line, without its comment. With several files, each line "
               "begins with the name of the file.",
    .make = makeTask<GetTask>,
};

} // namespace veltool
