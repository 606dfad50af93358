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

} // namespace velBench
