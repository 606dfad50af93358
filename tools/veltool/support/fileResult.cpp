// Runs the work on one file and turns an exception into a result.
#include "tools/veltool/support/fileResult.h"

namespace veltool {

FileResult guardedResult(const FileWork &work, const std::string &file)
{
    try {
        return work(file);
    } catch (const veltext::Error &failure) {
        return {statusOf(failure), {}, messageLine(failure.message())};
    } catch (const std::bad_alloc &) {
        return {statusFailed, {}, messageLine(file + ": memory error")};
    }
}

} // namespace veltool
