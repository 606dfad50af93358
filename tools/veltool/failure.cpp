#include "tools/veltool/failure.h"

#include <cstdio>
#include <system_error>

namespace veltool {

std::string messageLine(const std::string &message)
{
    std::string line = "veltool: " + message;
    if (line.back() != '\n')
        line += '\n';
    return line;
}

void report(const std::string &message)
{
    const std::string line = messageLine(message);
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void require(const char *message, const std::string &where)
{
    if (message)
        throw Failure(where.empty() ? message : where + ": " + message);
}

Failure systemFailure(const std::string &what, int error)
{
    return Failure(what + ": " + std::generic_category().message(error));
}

} // namespace veltool
