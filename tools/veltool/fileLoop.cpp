#include "tools/veltool/fileLoop.h"

#include "tools/veltool/loadFiles.h"

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
        } catch (const Failure &failure) {
            report(failure.message());
            status = std::max(status, failure.status());
        }
    }
    return status;
}

} // namespace veltool
