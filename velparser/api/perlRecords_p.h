// Records as Perl code gives them: an array of hashes.
//
// For a method METHOD that gives texts, METHODRecords fills an array with the records
// that the texts are made of. Perl code that does not offer it is asked for the texts
// (textRecords_p.h).
#pragma once

#include "velparser/api/perlCall_p.h"
#include "velparser/api/velRecords.h"

namespace velparser {

/// The name of the method that gives records.
[[nodiscard]] std::string recordsMethod(const char *method);

/// Whether the object's class offers METHODRecords for its METHOD: both come from one
/// package. Where a derived class has a METHOD of its own, the records of the class
/// above are not what it says.
[[nodiscard]] bool hasRecords(pTHX_ SV *object, const char *method);

// Each of these adds the records of an array that Perl code has filled, within a frame
// of the caller's. Null, or why they cannot be read (mortal); then some of them may have
// been added. May throw std::bad_alloc.

[[nodiscard]] SV *addRecords(pTHX_ AV *records, std::vector<Finding> *findings);
[[nodiscard]] SV *addRecords(pTHX_ AV *records, std::vector<UpgradeChange> *changes);
[[nodiscard]] SV *addRecords(pTHX_ AV *records, std::vector<RuleField> *fields);

} // namespace velparser
