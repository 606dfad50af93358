// veltool extract: the command data of a def or res file as VEL text.
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
        if (output_.empty() || output_ == "-")
            out() << lines;
        else
            write(file.path(), lines);
        return statusGood;
    }

private:
    void write(const std::string &file, const std::string &lines) const
    {
        std::error_code error;
        if (std::filesystem::equivalent(file, output_, error))
            throw Failure(output_ + ": is the file that is read");
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
    .purpose = "Take the command data out of a def or res file",
    .details = "Prints its lines as they stand in FILE. A failure of the library ends with its "
               "code (1 to 31).",
    .make = makeTask<ExtractTask>,
};

} // namespace veltool
