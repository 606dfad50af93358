// The scripting bridge: the calls with which the programs use the command data and the
// rules.
//
// The bridge owns one Perl interpreter. The first call that needs it starts it, and it
// lasts as long as the process. A session (velSession.h) is a Perl object of class `API`
// with its command database. Each call has two forms: one works on the session that it
// gets, the other on the default session. For questions that do not depend on rules, a
// call asks the database directly; for all others it asks the Perl object.
//
// Records. Calls that take a vector give what the rules say as records (velRecords.h);
// calls that give a text give the same as text.
//
// Results. A message, or null for success. A message belongs to the session and is valid
// until the next call with that session, or until its end; calls with other sessions do
// not change it. Integer queries give −1 on failure. Output arguments are written only on
// success. No function throws. If there is no memory, the result is "velparser: out of
// memory", or −1, or what the function says itself. All calls must come from one thread.
//
// Handlers. C++ code changes the data with the functions here: if a change handler written
// in Perl dies or calls `exit`, they return its error. The database's own functions, with
// the handle of findLiteHandle(), give only "a handler died".
//
// Environment. ZOT5_VEL_PARSER names the folder of the Perl packages; without it the first
// call that needs the interpreter ends the process (status 1). A program that knows the
// folder itself first calls startVELParser with it.
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

/// Starts the interpreter and makes the default session, once. If the start-up script does
/// not compile, the result is "Error: Cannot parse perl code\n", and the next call tries
/// again.
[[nodiscard]] const char *startVELParser();
/// The same with the packages of this folder instead of those of the environment.
[[nodiscard]] const char *startVELParser(const std::string &packages);

/// The database of the session. The first use makes it, with the `API` object; null if
/// this fails. It belongs to the Perl object and lasts as long as the session; the
/// database of the default session lasts as long as the process.
[[nodiscard]] velHandle *findLiteHandle();
[[nodiscard]] velHandle *findLiteHandle(Session &session);

// --- Loading --------------------------------------------------------------

/// Reads the rule libraries that the session names, otherwise those that the environment
/// names. The message has a line for each library that cannot be read and each mistake in
/// the rules.
[[nodiscard]] const char *readVELLibraries();
[[nodiscard]] const char *readVELLibraries(Session &session);
/// The same, but `faults` gets the mistakes in the rules, even if a library cannot be read
/// and there is a message.
[[nodiscard]] const char *readLibraries(std::vector<Finding> *faults);
[[nodiscard]] const char *readLibraries(Session &session, std::vector<Finding> *faults);

/// Remembers the data of a session as that of its libraries, for clearData. Call it after
/// the libraries were read and before other data is loaded.
[[nodiscard]] const char *keepLibraries(Session &session);
/// Deletes all data except that of the libraries: the session is as it was at
/// keepLibraries, except for its validation level and its handlers, which are called for
/// the deletions. So a session that works on many texts one after the other reads and
/// compiles its rules only once. Without keepLibraries, it also deletes objects of the
/// libraries that the data has stated again.
[[nodiscard]] const char *clearData(Session &session);

/// Loads command data; `type` is "vel", "def" or "res".
[[nodiscard]] const char *loadVELFromFile(const char *file, const char *type);
[[nodiscard]] const char *loadVELFromFile(Session &session, const char *file, const char *type);

/// Parses the caller's lines into the command data.
[[nodiscard]] const char *loadVELData(const char *const *lines, std::int32_t count);
[[nodiscard]] const char *loadVELData(Session &session, const char *const *lines,
                                      std::int32_t count);

/// Upgrades the data to the current language version. Null if there was nothing to change,
/// otherwise a text that lists the changes.
[[nodiscard]] const char *updateSolverVEL();
[[nodiscard]] const char *updateSolverVEL(Session &session);
/// The same, with the changes as records, in the order in which they were made. After a
/// failure, the data may contain some of the changes.
[[nodiscard]] const char *upgrade(std::vector<UpgradeChange> *changes);
[[nodiscard]] const char *upgrade(Session &session, std::vector<UpgradeChange> *changes);

// --- Validation -------------------------------------------------------------

/// Null if all command data is valid, otherwise the findings, one on each line. Only data
/// that has changed since it was last valid is checked.
[[nodiscard]] const char *validateVELDataH();
[[nodiscard]] const char *validateVELDataH(Session &session);
[[nodiscard]] const char *validateVELObjectH(const char *path);
[[nodiscard]] const char *validateVELObjectH(Session &session, const char *path);
[[nodiscard]] const char *validateParameter(const char *path);
[[nodiscard]] const char *validateParameter(Session &session, const char *path);

/// What is wrong with the object at `path` and everything below it; "/" is all data. As
/// above, only changed data is checked. If something failed during the check, this is also
/// a finding, without a path. A message means that nothing was checked.
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

/// 2 is safe mode: only what a running solver reads again may be changed.
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
/// Deletes an object and everything below it.
[[nodiscard]] const char *deleteObj(const char *path);
[[nodiscard]] const char *deleteObj(Session &session, const char *path);
/// Makes an object or a parameter as the last child of its parent, which must exist. The
/// value is stored as it is.
[[nodiscard]] const char *createObject(const char *path);
[[nodiscard]] const char *createObject(Session &session, const char *path);
[[nodiscard]] const char *createParam(const char *path, const char *value);
[[nodiscard]] const char *createParam(Session &session, const char *path, const char *value);
/// Moves an object or a parameter to a place among its siblings, counted from 0. A place
/// that is too large means the last.
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

// These calls, and updateSolverVEL, ask the Perl object that an earlier call has made.
// Without it they fail with "Invalid (uninitialized) instance handle".

/// 1 yes, 0 no, −1 on any failure.
[[nodiscard]] int isParamEditable(const char *path);
[[nodiscard]] int isParamEditable(Session &session, const char *path);
[[nodiscard]] int isItemExpert(const char *path);
[[nodiscard]] int isItemExpert(Session &session, const char *path);

/// The values that are allowed for a parameter; none if any value is allowed.
[[nodiscard]] const char *getAllowedParamStrings(const char *path, velStringList *values);
[[nodiscard]] const char *getAllowedParamStrings(Session &session, const char *path,
                                                 velStringList *values);

/// What the rules say about an object or parameter, which need not exist: the fields as a
/// rule would write them; none without a rule.
[[nodiscard]] const char *explainItem(const char *path, std::vector<RuleField> *fields);
[[nodiscard]] const char *explainItem(Session &session, const char *path,
                                      std::vector<RuleField> *fields);

/// The parameter names that are allowed in an object: with flag 0 all of them, with flag 1
/// those that it does not have yet, the required ones first. The single entry "-1" means
/// any name. With flag 2 only the required ones that it does not have yet, even if any
/// name is allowed.
[[nodiscard]] const char *getAllowedParams(const char *path, velStringList *names, int flag);
[[nodiscard]] const char *getAllowedParams(Session &session, const char *path, velStringList *names,
                                           int flag);

// --- Scripts --------------------------------------------------------------------

/// Runs a Perl script in the embedded interpreter with @ARGV set to `arguments`. Null on
/// success; `status` then has its `exit` status, or 0 if it did not call `exit`. If the
/// script dies, the result is the text of $@.
[[nodiscard]] const char *runPerlScript(const std::string &script,
                                        const std::vector<std::string> &arguments, int *status);
[[nodiscard]] const char *runPerlScript(Session &session, const std::string &script,
                                        const std::vector<std::string> &arguments, int *status);

/// Names and values of environment variables.
using ScriptVariables = std::vector<std::pair<std::string, std::string>>;
/// The same, with these variables in %ENV while the script runs; programs that it starts
/// get them too. Then the previous values are restored.
[[nodiscard]] const char *runPerlScript(const std::string &script,
                                        const std::vector<std::string> &arguments,
                                        const ScriptVariables &variables, int *status);
[[nodiscard]] const char *runPerlScript(Session &session, const std::string &script,
                                        const std::vector<std::string> &arguments,
                                        const ScriptVariables &variables, int *status);

} // namespace velparser
