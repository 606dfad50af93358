// The comparisons with other libraries.
#pragma once

#include <cstdint>
#include <string>

namespace velBench {

/// Compares the database with pugixml, RapidJSON and the standard hash map, on
/// the trees that velgenerate has written into a folder. Measures memory first,
/// while the process is still small. Throws a Failure.
void compareTrees(const std::string &directory, std::uint64_t parameters);

/// Compares methods of VEL::Parser::Lite that receive and return a text with the
/// smallest method in C that does the same. Throws a Failure.
void comparePerl();

/// Compares the container library with fwrite and fread, zlib, the same writes
/// with only the C library, and SQLite, on files in a folder. Throws a Failure.
void compareContainers(const std::string &directory);

/// Measures the time for 125,000, 250,000, 500,000 and 1,000,000 datasets. For
/// twice as many, the time must not be much more than twice as long. Throws a
/// Failure.
void compareGrowth(const std::string &directory);

} // namespace velBench
