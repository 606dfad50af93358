// Writes, synchronises and closes a text file.
#include "veleditor/src/TextFile.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace velEditor {

namespace {

// For pipes and devices fsync() fails, because they are not on a disk.
bool synchronise(std::FILE *file)
{
    if (std::fflush(file) != 0) {
        return false;
    }
    return ::fsync(::fileno(file)) == 0 || errno == EINVAL || errno == EROFS || errno == ENOTSUP;
}

} // namespace

TextFile::TextFile(const std::string &name) : file_(std::fopen(name.c_str(), "w"))
{
    if (!file_) {
        keepError();
    }
}

TextFile::TextFile(int descriptor) : file_(::fdopen(descriptor, "w"))
{
    if (!file_) {
        keepError();
    }
}

void TextFile::write(std::string_view text)
{
    if (!error_.empty()) {
        return;
    }
    if (std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size()) {
        keepError();
    }
}

bool TextFile::close()
{
    if (file_) {
        if (error_.empty() && !synchronise(file_.get())) {
            keepError();
        }
        if (std::fclose(file_.release()) != 0) {
            keepError();
        }
    }
    return error_.empty();
}

void TextFile::keepError()
{
    if (error_.empty()) {
        error_ = std::strerror(errno);
    }
}

} // namespace velEditor
