// A folder of Perl packages of a test's own, in place of those that are
// installed. VEL::Parser::Lite in it is the real one.
#pragma once

#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>

class FakeParser
{
public:
    /// Makes the folder, with these files, and names it in ZOT5_VEL_PARSER.
    /// Unless among them, VEL/embeddedParserInit.pl loads API and nothing else.
    explicit FakeParser(std::initializer_list<std::pair<const char *, std::string>> files);
    ~FakeParser();
    FakeParser(const FakeParser &) = delete;
    FakeParser &operator=(const FakeParser &) = delete;

    /// Writes a file below the folder and gives its full name.
    std::string write(const std::string &name, const std::string &text) const;

    [[nodiscard]] const std::filesystem::path &folder() const { return folder_; }

private:
    std::filesystem::path folder_;
    int owner_; ///< the process that made it
};

/// Evaluates Perl text in the interpreter; its value as text, or "died: " and
/// the error.
std::string perl(const std::string &code);

/// A message as text; "(null)" for none.
std::string shown(const char *message);
