// veltool extract: prints the command data of a def or res file.
#include "tools/veltool/ds/dsCommandData.h"
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/output.h"
#include "veltext/replaceFile.h"

#include <filesystem>

namespace veltool {

namespace {

class ExtractTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.text("--output,-o", "OUT", output_, "Write to OUT");
    }

    int run(const Words &words) override
    {
        const ReadableFile file(words[0]);
        const std::string lines = readCommandData(file);
        if (output_.empty() || output_ == "-") {
            out() << lines;
        } else {
            write(file.path(), lines);
        }
        return statusGood;
    }

private:
    void write(const std::string &file, const std::string &lines) const
    {
        std::error_code error;
        if (std::filesystem::equivalent(file, output_, error)) {
            throw Failure(output_ + ": is the input file; nothing was written; name another file");
        }
        veltext::writeFile(output_, lines);
    }

    std::string output_;
};

} // namespace

const Command extractCommand = {
    .name = "extract",
    .words = "FILE",
    .fewest = 1,
    .most = 1,
    .passesOn = false,
    .purpose = "Print the command data of a def or res file",
    .details = "Prints the lines as they are stored in FILE. If the container library fails, the "
               "status is its code (1 to 31).",
    .make = makeTask<ExtractTask>,
};

} // namespace veltool
