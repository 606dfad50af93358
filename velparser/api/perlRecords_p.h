// Records as Perl code gives them: an array of hashes.
//
// For a method METHOD that gives texts, METHODRecords fills an array with the records
// from which the texts are made. If Perl code does not have METHODRecords, the bridge
// asks for the texts (textRecords_p.h).
#pragma once

#include "velparser/api/perlCall_p.h"
#include "velparser/api/velRecords.h"

namespace velparser {

/// The name of the method that gives records.
[[nodiscard]] std::string recordsMethod(const char *method);

/// Whether the object's class has METHODRecords for its METHOD: both must come from one
/// package. If a derived class has only its own METHOD, the inherited METHODRecords gives
/// other records than the texts of METHOD say.
[[nodiscard]] bool hasRecords(pTHX_ SV *object, const char *method);

// Each of these adds the records of an array that Perl code has filled, within a frame
// of the caller. Null, or the reason why they cannot be read (mortal); some of them may
// have been added by then. May throw std::bad_alloc.

[[nodiscard]] SV *addRecords(pTHX_ AV *records, std::vector<Finding> *findings);
[[nodiscard]] SV *addRecords(pTHX_ AV *records, std::vector<UpgradeChange> *changes);
[[nodiscard]] SV *addRecords(pTHX_ AV *records, std::vector<RuleField> *fields);

} // namespace velparser
