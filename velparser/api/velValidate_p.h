// The validation driver, on any database.
//
// A handle gets its validator (a Perl object of class VEL::Validate) before the
// first call of one, and keeps it in its user-data slot until it is destroyed.
//
// What has been validated is marked on the nodes: 0x100, set by the validator,
// says that the node itself is valid; 0x400, set by the driver, that all below
// it is. A node with both marks is done and is passed by.
#pragma once

#include "velapilt/src/velapilt.h"
#include "velparser/api/velRecords.h"

#include <initializer_list>
#include <vector>

namespace velparser {

/// Gives the handle its validator, unless it has one.
[[nodiscard]] const char *initValidationData(velHandle *handle);

/// Calls a method of the validator; its text, or null for none.
[[nodiscard]] const char *callValidationMethod(velHandle *handle, const char *method,
                                               std::initializer_list<const char *> arguments);

/// Validates the node at `path` and all below it that is not done. The
/// findings, one a line, as the handle's error text; null when there are none.
[[nodiscard]] const char *validateVELData(velHandle *handle, const char *path);

/// Likewise, with the findings as records; null when all was looked at. What failed
/// on the way is among them, without a path.
[[nodiscard]] const char *validateVELData(velHandle *handle, const char *path,
                                          std::vector<Finding> *findings);

} // namespace velparser
