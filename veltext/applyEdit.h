// Makes an edit in a database, without the editor.
#pragma once

#include "veltext/edit.h"

struct velHandle;

namespace veltext {

/// Makes a complete edit (edit.h): the data is afterwards what the editor made of the
/// same data, with the same order. Throws an Error that says what is wrong; part of
/// the change may have been made then.
void applyEdit(velHandle *handle, const Edit &edit);

} // namespace veltext
