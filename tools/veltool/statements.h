// The statements of a text, under the names by which the commands use them.
#pragma once

#include "tools/veltool/sourceText.h"
#include "veltext/statementTree.h"

namespace veltool {

using veltext::countRemarks;
using veltext::isBlank;
using veltext::LineRange;
using veltext::Positions;
using veltext::readStatement;
using veltext::replaceWord;
using veltext::Statement;
using veltext::StatementKind;
using veltext::StatementTree;

} // namespace veltool
