#include "tools/veltool/failure.h"

#include <cstdio>
#include <system_error>

namespace veltool {

Failure::Failure(const std::string &file, std::size_t line, std::string sentence)
    : message_(file + (line ? ':' + std::to_string(line) : "") + ": " + sentence),
      sentence_(std::move(sentence)), line_(line)
{
}

Refusal editRefusal(const std::string &file, const std::string &path, const std::string &message,
                    const std::string &advice)
{
    std::string text = file + ": " + path + ": " + message + "; nothing was written";
    if (!advice.empty())
        text += "; " + advice;
    return Refusal(std::move(text));
}

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
        throw where.empty() ? Failure(message) : Failure(where, 0, message);
}

Failure systemFailure(const std::string &what, int error)
{
    return {what, 0, std::generic_category().message(error)};
}

} // namespace veltool
