// Works on files one after the other, and returns the highest status.
#include "tools/veltool/support/fileLoop.h"

#include "tools/veltool/support/loadFiles.h"

#include <algorithm>

namespace veltool {

int forEachFile(std::span<const std::string> files,
                const std::function<int(const std::string &file)> &work)
{
    requireOneStandardInput(files);
    int status = statusGood;
    for (const std::string &file : files) {
        try {
            status = std::max(status, work(file));
        } catch (const veltext::Error &failure) {
            report(failure.message());
            status = std::max(status, statusOf(failure));
        }
    }
    return status;
}

} // namespace veltool
