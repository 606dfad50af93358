// Passes command data from files and from the caller to the Perl object.
#include "velparser/api/perlVariables_p.h"
#include "velparser/api/velContainer_p.h"
#include "velparser/api/velInstance_p.h"
#include "velparser/api/velparser.h"
#include "velparser/api/xsinit_p.h"

namespace velparser {

namespace {

/// Takes ownership of the caller's reference to the array. The argument 0 means user data.
const char *parseLines(Session &session, AV *lines)
{
    pTHX = velInterpreter();
    PerlFrame frame(aTHX);
    const std::array arguments{sv_2mortal(newRV_noinc(MUTABLE_SV(lines))), sv_2mortal(newSViv(0))};
    return callVELInstanceValues(session.instance(), "parseVELData", arguments);
}

const char *loadText(Session &session, const char *file)
{
    if (const char *error = initVELInstance(session.instance())) {
        return error;
    }
    pTHX = velInterpreter();
    AV *lines = newAV();
    if (lines == nullptr) {
        return "Error allocating AV for VEL data";
    }
    if (const char *error = getAnyValue(session.instance(), "readTextFile", file, lines)) {
        return error;
    }
    return parseLines(session, lines);
}

const char *loadContainer(Session &session, const char *file)
{
    pTHX = velInterpreter();
    AV *lines = newAV();
    if (lines == nullptr) {
        return "Error allocating AV for VEL data";
    }
    const char *error = load_vel_from_def(file, lines) != 0 ? "load_vel_from_def failed"
                                                            : initVELInstance(session.instance());
    if (error == nullptr) {
        return parseLines(session, lines);
    }
    SvREFCNT_dec_NN(MUTABLE_SV(lines));
    return error;
}

} // namespace

const char *loadVELFromFile(Session &session, const char *file, const char *type)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    if (file == nullptr || type == nullptr) {
        return "Invalid file or file type";
    }
    const std::string_view word = type;
    if (word == "vel") {
        return loadText(session, file);
    }
    if (word == "def" || word == "res") {
        return loadContainer(session, file);
    }
    return "fileType is invalid (it should be vel, def or res)";
}

const char *loadVELData(Session &session, const char *const *lines, std::int32_t count)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    if (lines == nullptr) {
        return "loadVELData : Invalid arguments";
    }
    if (const char *error = initVELInstance(session.instance())) {
        return error;
    }
    pTHX = velInterpreter();
    AV *array = newAV();
    if (array == nullptr) {
        return "loadVELData: can't allocate perl array";
    }
    if (count > 0) {
        av_extend(array, count - 1);
    }
    for (std::int32_t i = 0; i < count; ++i) {
        av_push(array, newSVpv(lines[i], 0));
    }
    return parseLines(session, array);
}

const char *readVELLibraries(Session &session)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    if (const char *error = initVELInstance(session.instance())) {
        return error;
    }
    return guarded(outOfMemory, [&] {
        const PerlVariables entries(velInterpreter(), libraryVariables(session.instance()));
        return callVELInstanceMethod(session.instance(), "readLibraries", {});
    });
}

} // namespace velparser
