#include "tools/veltool/fileResult.h"

namespace veltool {

FileResult guardedResult(const FileWork &work, const std::string &file)
{
    try {
        return work(file);
    } catch (const Failure &failure) {
        return {failure.status(), {}, messageLine(failure.message())};
    } catch (const std::bad_alloc &) {
        return {statusFailed, {}, messageLine(file + ": memory error")};
    }
}

} // namespace veltool
