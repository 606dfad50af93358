// The calls that give what the rules say as records; velValidate.cpp has the calls that
// validate.
#include "velparser/api/velparser.h"

#include "velparser/api/perlRecords_p.h"
#include "velparser/api/perlVariables_p.h"
#include "velparser/api/textRecords_p.h"
#include "velparser/api/velInstance_p.h"
#include "velparser/api/xsinit_p.h"

namespace velparser {

namespace {

constexpr std::string_view faultIdentifier = "bad-rule";

const char *keepText(velInstance *instance, const std::string &text)
{
    pTHX = velInterpreter();
    const PerlFrame frame(aTHX);
    return keepMessage(instance, sv_2mortal(newSVpvn(text.data(), text.size())));
}

/// Checks what must be correct before a method is called for records.
const char *checkQuery(const velInstance *instance, const void *records, const char *noRecords)
{
    if (instance == nullptr) {
        return "Invalid (NULL) instance handle";
    }
    if (instance->api == nullptr) {
        return "Invalid (uninitialized) instance handle";
    }
    return records != nullptr ? nullptr : noRecords;
}

bool givesRecords(const velInstance *instance, const char *method)
{
    pTHX = velInterpreter();
    return hasRecords(aTHX_ instance->api, method);
}

/// Calls METHODRecords with the `words` and an array, and then adds the records in the
/// array, even if the method gives a message.
template <class Record>
const char *callForRecords(velInstance *instance, const char *method,
                           std::initializer_list<const char *> words, std::vector<Record> *records)
{
    pTHX = velInterpreter();
    const PerlLocale locale;
    const PerlFrame frame(aTHX);
    AV *array = newAV();
    const std::span<SV *> arguments = mortalValues(aTHX_ words.size() + 1);
    std::ranges::transform(words, arguments.begin(),
                           [&](const char *word) { return sv_2mortal(newSVpv(word, 0)); });
    arguments.back() = sv_2mortal(newRV_noinc(MUTABLE_SV(array)));
    const char *message = callVELInstanceValues(instance, recordsMethod(method).c_str(), arguments);
    SV *error = addRecords(aTHX_ array, records);
    return message || !error ? message : keepMessage(instance, plainValue(aTHX_ error));
}

// --- Perl code that gives texts only ---------------------------------------------

/// The lines that are not faults of rules are the message.
const char *faultsFromText(velInstance *instance, const char *text, std::vector<Finding> *faults)
{
    std::string message;
    for (const std::string_view line : linesOf(text)) {
        Finding fault = findingFromLine(line);
        if (fault.identifier == faultIdentifier) {
            faults->push_back(std::move(fault));
        } else {
            message.append(line) += '\n';
        }
    }
    if (faults->empty()) {
        return text;
    }
    if (message.empty()) {
        return nullptr;
    }
    message.pop_back();
    return keepText(instance, message);
}

/// A line without a path says what failed.
const char *changesFromText(velInstance *instance, const char *text,
                            std::vector<UpgradeChange> *changes)
{
    for (const std::string_view line : linesOf(text != nullptr ? text : "")) {
        changes->push_back(changeFromLine(line));
        if (changes->back().path.empty()) {
            return keepText(instance, std::string(line));
        }
    }
    return nullptr;
}

const char *explainByTexts(velInstance *instance, const char *path, std::vector<RuleField> *fields)
{
    pTHX = velInterpreter();
    const PerlLocale locale;
    const PerlFrame frame(aTHX);
    AV *array = newAV();
    SV *error = nullptr;
    const std::array arguments{sv_2mortal(newSVpv(path, 0)),
                               sv_2mortal(newRV_noinc(MUTABLE_SV(array)))};
    if (const char *message = callVELInstanceValues(instance, "explainItem", arguments)) {
        return message;
    }
    AV *lines = plainTexts(aTHX_ array, &error);
    if (lines == nullptr) {
        return error != nullptr ? keepMessage(instance, plainValue(aTHX_ error)) : "exit called";
    }
    for (SSize_t i = 0; i <= AvFILLp(lines); ++i) {
        fields->push_back(
            fieldFromLine({SvPVX_const(AvARRAY(lines)[i]), SvCUR(AvARRAY(lines)[i])}));
    }
    return nullptr;
}

} // namespace

const char *readLibraries(Session &session, std::vector<Finding> *faults)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    if (const char *error = initVELInstance(session.instance())) {
        return error;
    }
    velInstance *instance = session.instance();
    if (const char *error = checkQuery(instance, faults, "readLibraries: invalid arguments")) {
        return error;
    }
    return guarded(outOfMemory, [&]() -> const char * {
        faults->clear();
        const PerlVariables entries(velInterpreter(), libraryVariables(instance));
        if (givesRecords(instance, "readLibraries")) {
            return callForRecords(instance, "readLibraries", {}, faults);
        }
        const char *text = callVELInstanceMethod(instance, "readLibraries", {});
        return text != nullptr ? faultsFromText(instance, text, faults) : nullptr;
    });
}

const char *upgrade(Session &session, std::vector<UpgradeChange> *changes)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    velInstance *instance = session.instance();
    if (const char *error = checkQuery(instance, changes, "upgrade: invalid arguments")) {
        return error;
    }
    return guarded(outOfMemory, [&]() -> const char * {
        std::vector<UpgradeChange> made;
        const char *error =
            givesRecords(instance, "updateSolverVEL")
                ? callForRecords(instance, "updateSolverVEL", {}, &made)
                : changesFromText(instance, callVELInstanceMethod(instance, "updateSolverVEL", {}),
                                  &made);
        if (error == nullptr) {
            *changes = std::move(made);
        }
        return error;
    });
}

const char *explainItem(Session &session, const char *path, std::vector<RuleField> *fields)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    velInstance *instance = session.instance();
    if (const char *error = checkQuery(instance, fields, "Invalid text array in explainItem\n")) {
        return error;
    }
    if (path == nullptr) {
        return "Invalid path in getAnyValue";
    }
    return guarded(outOfMemory, [&]() -> const char * {
        std::vector<RuleField> found;
        const char *error = givesRecords(instance, "explainItem")
                                ? callForRecords(instance, "explainItem", {path}, &found)
                                : explainByTexts(instance, path, &found);
        if (error == nullptr) {
            *fields = std::move(found);
        }
        return error;
    });
}

} // namespace velparser
