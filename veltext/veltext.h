// Reads, compares, edits and merges VEL command files, as their authors wrote them.
//
// A program includes this header only, and links `veltext`. Each part has its
// documentation in its own header:
//
//   CommandText    the text and the data of a file               commandText.h
//   SourceText     bytes, lines, line ends, byte order mark      sourceText.h
//   StatementTree  the lines that state each path                statementTree.h
//   TreeWalk       the data, node by node                        treeWalk.h
//   TextEdit       edits that change only their own lines        textEdit.h
//   storageFault   whether a file can hold a value               valueEdit.h
//   diff, merge    versions of a file, path by path              commandText.h
//   EditedFile     lock, backup and atomic replacement           replaceFile.h
//   History        the versions that saves have replaced         history.h
//   findFault      the line with the first mistake               textFault.h
//
// Paths are full paths in normal form: "/FLOW/DOMAIN:Duct/Option" is the
// parameter Option of the object Duct, of type DOMAIN, in the singleton FLOW.
//
// Errors. A function that fails throws an Error (error.h), whose message is for
// the user and names the file or path. Arguments and files are then unchanged.
// Without memory, bad_alloc is thrown.
//
// Several threads may use objects that share nothing at the same time.
// docs/veltext.md has a complete program.
#pragma once

#include "veltext/commandText.h"
#include "veltext/error.h"
#include "veltext/history.h"
#include "veltext/replaceFile.h"
#include "veltext/sourceText.h"
#include "veltext/statementTree.h"
#include "veltext/textEdit.h"
#include "veltext/textFault.h"
#include "veltext/treeDiff.h"
#include "veltext/treeWalk.h"
#include "veltext/valueEdit.h"

#include "velapilt/src/velapilt.h"
