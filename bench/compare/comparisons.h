// What stands beside what.
#pragma once

#include <cstdint>
#include <string>

namespace velBench {

/// The database beside pugixml, RapidJSON and the standard hash map, on the
/// trees that velgenerate made in a folder. Memory is taken first, while the
/// process is still small. Throws a Failure.
void compareTrees(const std::string &directory, std::uint64_t parameters);

/// Methods of VEL::Parser::Lite that take and give a text, beside the least
/// that a method written in C can do with one. Throws a Failure.
void comparePerl();

/// The container library beside fwrite and fread, zlib, the same writes done
/// bare, and SQLite, on files in a folder. Throws a Failure.
void compareContainers(const std::string &directory);

/// What 125,000, 250,000, 500,000 and 1,000,000 datasets take: twice as many
/// must not take much more than twice as long. Throws a Failure.
void compareGrowth(const std::string &directory);

} // namespace velBench
