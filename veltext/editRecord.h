// An edit as bytes, for the bodies of records (record.h).
//
// A byte for the kind, the place as a number (0xffffffff for `Edit::atEnd`), the number
// of parameters before it, then the path, the old text, the new text, the number of
// opening lines, and these as texts.
#pragma once

#include "veltext/edit.h"

#include <string>

namespace veltext {

class FieldReader;

/// Appends the bytes of an edit to a body.
void putEdit(std::string *to, const Edit &edit);

/// Takes an edit off a body. The reader is not good afterwards if there is none.
[[nodiscard]] Edit takeEdit(FieldReader *from);

} // namespace veltext
