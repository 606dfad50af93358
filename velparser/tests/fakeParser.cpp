// Folders with Perl code of a test, instead of the real packages.

#include "velparser/tests/fakeParser.h"

#include "velparser/api/velBench.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <unistd.h>

namespace {

std::filesystem::path makeFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "velparser-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    return name;
}

std::filesystem::path realLite()
{
    return std::filesystem::path(std::getenv("VEL_SOURCE_DIR")) /
           "velparser/perl/VEL/Parser/Lite.pm";
}

} // namespace

FakeParser::FakeParser(std::initializer_list<std::pair<const char *, std::string>> files)
    : folder_(makeFolder()), owner_(getpid())
{
    write("VEL/embeddedParserInit.pl", "use API;\n");
    std::filesystem::create_directories(folder_ / "VEL/Parser");
    std::filesystem::copy(realLite(), folder_ / "VEL/Parser/Lite.pm");
    for (const auto &[name, text] : files) {
        write(name, text);
    }
    setenv("ZOT5_VEL_PARSER", folder_.c_str(), 1);
}

FakeParser::~FakeParser()
{
    // The child of a death test ends too.
    if (getpid() != owner_) {
        return;
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string FakeParser::write(const std::string &name, const std::string &text) const
{
    const std::filesystem::path file = folder_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
    return file.string();
}

std::string perl(const std::string &code)
{
    std::string result;
    const char *error = velparser::evalPerl(code, &result);
    return error != nullptr ? std::string("died: ") + error : result;
}

std::string shown(const char *message)
{
    return message != nullptr ? message : "(null)";
}
