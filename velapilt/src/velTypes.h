// The plain records that the database hands to its callers, and to theirs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The columns to which a command file is wrapped unless its writer is
/// asked for others. The documents state the number too.
inline constexpr std::int32_t velUsualWidth = 79;

/// What a node is.
enum velKind : std::uint32_t {
    velNone = 0,
    velParam = 1,     ///< a name and a value
    velObject = 2,    ///< a type and a name
    velSingleton = 3, ///< a type only; at most one of it below a parent
};

/// A child, as lists of children describe it.
struct velChildInfo
{
    std::string name;      ///< of a Singleton its type
    const char *className; ///< "Param", "Object" or "Singleton"
    std::string type;      ///< "String" for a Parameter
};

/// The children that share kind and type.
struct velGroupInfo
{
    const char *className; ///< "Parameter", "Object" or "Singleton"
    std::string type;
    std::vector<std::int32_t> indices; ///< positions among the children, descending
};
