// A folder of Perl packages of a test, instead of the real packages. It has the real
// VEL::Parser::Lite.
#pragma once

#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>

class FakeParser
{
public:
    /// Makes the folder, with these files, and names it in ZOT5_VEL_PARSER.
    /// If VEL/embeddedParserInit.pl is not among them, one is made that only loads API.
    explicit FakeParser(std::initializer_list<std::pair<const char *, std::string>> files);
    ~FakeParser();
    FakeParser(const FakeParser &) = delete;
    FakeParser &operator=(const FakeParser &) = delete;

    /// Writes a file below the folder and gives its full name.
    std::string write(const std::string &name, const std::string &text) const;

    [[nodiscard]] const std::filesystem::path &folder() const { return folder_; }

private:
    std::filesystem::path folder_;
    int owner_; ///< the process that has made the folder
};

/// Evaluates Perl text in the interpreter; its value as text, or "died: " and
/// the error.
std::string perl(const std::string &code);

/// A message as text; "(null)" for none.
std::string shown(const char *message);
