// Reads a file or standard input, and refuses to edit standard input.
#include "tools/veltool/support/input.h"

#include "tools/veltool/support/failure.h"
#include "veltext/readFile.h"

#include <unistd.h>

namespace veltool {

std::string readInput(const std::string &file)
{
    return file == standardInput ? veltext::readBytes(STDIN_FILENO, "standard input")
                                 : veltext::readBytes(file);
}

void requireEditable(const std::string &file)
{
    if (file == standardInput) {
        throw Failure("cannot edit standard input in place; name a file");
    }
}

} // namespace veltool
