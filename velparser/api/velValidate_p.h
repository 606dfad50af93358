// The validation driver, on any database.
//
// A handle gets its validator (a Perl object of class VEL::Validate) before the first call
// of a validator, and keeps it in its user-data slot until the handle is destroyed.
//
// Marks on the nodes say what is valid. The validator sets 0x100: the node itself is
// valid. The driver sets 0x400: everything below the node is valid. A node with both marks
// is done, and the driver skips it.
#pragma once

#include "velapilt/src/velapilt.h"
#include "velparser/api/velRecords.h"

#include <initializer_list>
#include <vector>

namespace velparser {

/// Gives the handle its validator, unless it has one.
[[nodiscard]] const char *initValidationData(velHandle *handle);

/// Calls a method of the validator. Returns its text, or null if there is none.
[[nodiscard]] const char *callValidationMethod(velHandle *handle, const char *method,
                                               std::initializer_list<const char *> arguments);

/// Validates the node at `path` and everything below it that is not done. The result is
/// the handle's error text with one finding on each line, or null if there are none.
[[nodiscard]] const char *validateVELData(velHandle *handle, const char *path);

/// The same, with the findings as records. If something failed during the walk, this is
/// also a finding, without a path. Null, or a message if nothing was validated.
[[nodiscard]] const char *validateVELData(velHandle *handle, const char *path,
                                          std::vector<Finding> *findings);

} // namespace velparser
