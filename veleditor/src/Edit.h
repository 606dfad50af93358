// The edits of a document: those of the text engine, which can make them without an
// editor too.
#pragma once

#include "veltext/edit.h"

namespace velEditor {

using veltext::addingObject;
using veltext::addingParameter;
using veltext::deletingObject;
using veltext::deletingParameter;
using veltext::Edit;
using veltext::inverse;
using veltext::positionAmong;
using veltext::settingValue;

} // namespace velEditor
