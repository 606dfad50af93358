// Composes the messages of failures and writes them to standard error.
#include "tools/veltool/support/failure.h"

#include <cstdio>

namespace veltool {

int statusOf(const veltext::Error &error)
{
    const auto *failure = dynamic_cast<const Failure *>(&error);
    return failure != nullptr ? failure->status() : statusFailed;
}

Refusal editRefusal(const std::string &file, const std::string &path, const std::string &message,
                    const std::string &advice)
{
    std::string text = file + ": " + path + ": " + message + "; nothing was written";
    if (!advice.empty()) {
        text += "; " + advice;
    }
    return Refusal(text);
}

std::string messageLine(const std::string &message)
{
    std::string line = "veltool: " + message;
    if (line.back() != '\n') {
        line += '\n';
    }
    return line;
}

void report(const std::string &message)
{
    const std::string line = messageLine(message);
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace veltool
