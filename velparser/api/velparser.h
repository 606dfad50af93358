// The scripting bridge: the calls with which the programs reach the command
// data and the rules.
//
// The bridge owns one Perl interpreter, started by the first call that needs
// it and never ended. A session (velSession.h) is a Perl object of class `API`
// with its command database. Each call has two forms: one works on the session
// that it is given, the other on the default session. Plain questions go straight
// to the database; those that depend on rules are asked of the Perl object.
//
// Records. What the rules have to say comes as records (velRecords.h) from the calls
// that take a vector; those that give a text give the same as text.
//
// Results. A message, null for success; it belongs to the session and stays
// valid until the next call with that session, or its end. Calls with another
// session leave it alone. Integer queries give −1 on failure. Out-arguments
// are written on success only. No function throws; out of memory is "velparser:
// out of memory", or -1, or what the function says itself. All calls come from
// one thread.
//
// Handlers. Whoever changes the data from C++ uses the functions here: where a
// change handler written in Perl dies, or calls `exit`, they return what it said.
// The database's own functions, with the handle of findLiteHandle(), give only
// "a handler died".
//
// Environment: ZOT5_VEL_PARSER names the folder of the Perl packages; without
// it the first call that needs the interpreter ends the process (status 1). A
// program that has the folder from elsewhere calls startVELParser with it first.
#pragma once

#include "velapilt/src/velArray.h"
#include "velapilt/src/velTypes.h"
#include "velparser/api/velRecords.h"
#include "velparser/api/velSession.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct velHandle;

namespace velparser {

// --- Start-up -------------------------------------------------------------

/// Starts the interpreter and makes the default session, once. "Error: Cannot
/// parse perl code\n" when the start-up script does not compile; the next call
/// then tries again.
[[nodiscard]] const char *startVELParser();
/// The same with the packages of this folder, whatever the environment names.
[[nodiscard]] const char *startVELParser(const std::string &packages);

/// The database of the session, made with its `API` object on first use; null
/// when that fails. It belongs to the Perl object and lives as long as the
/// session, that of the default session as long as the process.
[[nodiscard]] velHandle *findLiteHandle();
[[nodiscard]] velHandle *findLiteHandle(Session &session);

// --- Loading --------------------------------------------------------------

/// Reads the rule libraries that the session names, or else the environment. A
/// message is what could not be read and what is wrong with the rules, a line each.
[[nodiscard]] const char *readVELLibraries();
[[nodiscard]] const char *readVELLibraries(Session &session);
/// The same, but what is wrong with the rules goes to `faults`, also when there is a
/// message about the rest.
[[nodiscard]] const char *readLibraries(std::vector<Finding> *faults);
[[nodiscard]] const char *readLibraries(Session &session, std::vector<Finding> *faults);

/// Remembers the data of a session as that of its libraries, for clearData. To be called
/// after the libraries were read and before other data is loaded.
[[nodiscard]] const char *keepLibraries(Session &session);
/// Deletes all data that is not of the libraries: the session is as it was at
/// keepLibraries, but for its validation level and handlers, which are called for the
/// deletions. A session that works on many texts one after the other thus reads and
/// compiles its rules once. Without keepLibraries, objects of the libraries that data has
/// stated again are deleted.
[[nodiscard]] const char *clearData(Session &session);

/// Loads command data; `type` is "vel", "def" or "res".
[[nodiscard]] const char *loadVELFromFile(const char *file, const char *type);
[[nodiscard]] const char *loadVELFromFile(Session &session, const char *file, const char *type);

/// Parses the caller's lines into the command data.
[[nodiscard]] const char *loadVELData(const char *const *lines, std::int32_t count);
[[nodiscard]] const char *loadVELData(Session &session, const char *const *lines,
                                      std::int32_t count);

/// Brings the data up to the current language version: null when nothing had
/// to be changed, else the text that lists the changes.
[[nodiscard]] const char *updateSolverVEL();
[[nodiscard]] const char *updateSolverVEL(Session &session);
/// The same: the changes in the order in which they were made, none when nothing had
/// to be changed. After a failure some may have been made.
[[nodiscard]] const char *upgrade(std::vector<UpgradeChange> *changes);
[[nodiscard]] const char *upgrade(Session &session, std::vector<UpgradeChange> *changes);

// --- Validation -------------------------------------------------------------

/// Null when all command data is valid, else the findings, one a line. Only
/// what changed since it was last found valid is looked at.
[[nodiscard]] const char *validateVELDataH();
[[nodiscard]] const char *validateVELDataH(Session &session);
[[nodiscard]] const char *validateVELObjectH(const char *path);
[[nodiscard]] const char *validateVELObjectH(Session &session, const char *path);
[[nodiscard]] const char *validateParameter(const char *path);
[[nodiscard]] const char *validateParameter(Session &session, const char *path);

/// What is wrong with the object at `path` and all below it; "/" is all data. As
/// above, only what changed is looked at. What failed on the way is among the
/// findings, without a path; a message says that nothing was looked at.
[[nodiscard]] const char *validate(const char *path, std::vector<Finding> *findings);
[[nodiscard]] const char *validate(Session &session, const char *path,
                                   std::vector<Finding> *findings);
/// What is wrong with the value of one parameter.
[[nodiscard]] const char *validateParameter(const char *path, std::vector<Finding> *findings);
[[nodiscard]] const char *validateParameter(Session &session, const char *path,
                                            std::vector<Finding> *findings);

/// 1 on, 0 off.
[[nodiscard]] const char *setUnitsChecking(int on);
[[nodiscard]] const char *setUnitsChecking(Session &session, int on);
[[nodiscard]] const char *setBoundsChecking(int on);
[[nodiscard]] const char *setBoundsChecking(Session &session, int on);

/// 2 is safe mode: only what a running solver re-reads may be changed.
[[nodiscard]] const char *setValidationLevelH(unsigned level);
[[nodiscard]] const char *setValidationLevelH(Session &session, unsigned level);

// --- Questions to the database ------------------------------------------------

/// No text for an object, or a parameter without a value.
[[nodiscard]] const char *getStringValue(const char *path, std::optional<std::string> *value);
[[nodiscard]] const char *getStringValue(Session &session, const char *path,
                                         std::optional<std::string> *value);
[[nodiscard]] const char *setStringValue(const char *path, const char *value);
[[nodiscard]] const char *setStringValue(Session &session, const char *path, const char *value);
[[nodiscard]] const char *deleteParam(const char *path);
[[nodiscard]] const char *deleteParam(Session &session, const char *path);
/// Deletes an object and all below it.
[[nodiscard]] const char *deleteObj(const char *path);
[[nodiscard]] const char *deleteObj(Session &session, const char *path);
/// Makes an object or a parameter, whose parent exists, as the last child. The
/// value is stored as it is given.
[[nodiscard]] const char *createObject(const char *path);
[[nodiscard]] const char *createObject(Session &session, const char *path);
[[nodiscard]] const char *createParam(const char *path, const char *value);
[[nodiscard]] const char *createParam(Session &session, const char *path, const char *value);
/// Moves an object or a parameter to a place among its siblings, counted from 0;
/// any place after them all is the last.
[[nodiscard]] const char *placeChild(const char *path, std::uint32_t position);
[[nodiscard]] const char *placeChild(Session &session, const char *path, std::uint32_t position);
[[nodiscard]] const char *pushPathH(const char *path);
[[nodiscard]] const char *pushPathH(Session &session, const char *path);
[[nodiscard]] const char *popPathH();
[[nodiscard]] const char *popPathH(Session &session);

/// Children in stored order, and their groups; either may be null.
[[nodiscard]] const char *getChildList(const char *path, std::vector<velChildInfo> *children,
                                       std::vector<velGroupInfo> *groups);
[[nodiscard]] const char *getChildList(Session &session, const char *path,
                                       std::vector<velChildInfo> *children,
                                       std::vector<velGroupInfo> *groups);

/// The command data below `path` as text, wrapped to `lineLength` columns.
[[nodiscard]] const char *getFormattedVEL(const char *path, std::int32_t lineLength,
                                          velStringList *lines);
[[nodiscard]] const char *getFormattedVEL(Session &session, const char *path,
                                          std::int32_t lineLength, velStringList *lines);

/// Library data: 1, user data: 0; −1 for an unknown path or without a database.
[[nodiscard]] int isVELLibrary(const char *path);
[[nodiscard]] int isVELLibrary(Session &session, const char *path);

// --- Questions to the rules -----------------------------------------------------

// They, and updateSolverVEL, ask the Perl object that an earlier call has made;
// without it they fail with "Invalid (uninitialized) instance handle".

/// 1 yes, 0 no, −1 on any failure.
[[nodiscard]] int isParamEditable(const char *path);
[[nodiscard]] int isParamEditable(Session &session, const char *path);
[[nodiscard]] int isItemExpert(const char *path);
[[nodiscard]] int isItemExpert(Session &session, const char *path);

/// The values allowed for a parameter; none where any is.
[[nodiscard]] const char *getAllowedParamStrings(const char *path, velStringList *values);
[[nodiscard]] const char *getAllowedParamStrings(Session &session, const char *path,
                                                 velStringList *values);

/// What the rules say of an object or parameter, there or not: the fields as a rule
/// would write them; none without a rule.
[[nodiscard]] const char *explainItem(const char *path, std::vector<RuleField> *fields);
[[nodiscard]] const char *explainItem(Session &session, const char *path,
                                      std::vector<RuleField> *fields);

/// The names allowed below an object: with flag 1 those that it does not have
/// yet, the required ones first, with 0 all. The single entry "-1" means any name.
[[nodiscard]] const char *getAllowedParams(const char *path, velStringList *names, int flag);
[[nodiscard]] const char *getAllowedParams(Session &session, const char *path, velStringList *names,
                                           int flag);

// --- Scripts --------------------------------------------------------------------

/// Runs a Perl script in the embedded interpreter with @ARGV set to
/// `arguments`. Null when it ended well; its `exit` status goes to `status`
/// (0 without one). A script that dies gives the text of $@.
[[nodiscard]] const char *runPerlScript(const std::string &script,
                                        const std::vector<std::string> &arguments, int *status);
[[nodiscard]] const char *runPerlScript(Session &session, const std::string &script,
                                        const std::vector<std::string> &arguments, int *status);

/// Names and values of environment variables.
using ScriptVariables = std::vector<std::pair<std::string, std::string>>;
/// The same with these in %ENV while the script runs; programs that it starts get
/// them too. Afterwards they are as before.
[[nodiscard]] const char *runPerlScript(const std::string &script,
                                        const std::vector<std::string> &arguments,
                                        const ScriptVariables &variables, int *status);
[[nodiscard]] const char *runPerlScript(Session &session, const std::string &script,
                                        const std::vector<std::string> &arguments,
                                        const ScriptVariables &variables, int *status);

} // namespace velparser
