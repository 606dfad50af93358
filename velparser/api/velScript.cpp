// Runs a user's scripts in the embedded interpreter.
#include "velparser/api/velInstance_p.h"

#include "velparser/api/perlVariables_p.h"
#include "velparser/api/velparser.h"
#include "velparser/api/xsinit_p.h"

namespace velparser {

namespace {

/// While it exists, Perl has the state that a script expects: its own arguments, name,
/// `exit` and END blocks, and no warnings that it has not enabled.
class ScriptSetting
{
public:
    ScriptSetting(pTHX_ const std::string &script, const std::vector<std::string> &arguments)
        : perl_(aTHX), warnings_(PL_dowarn), endBlocks_(PL_endav)
    {
        AV *words = get_av("ARGV", GV_ADD);
        av_clear(words);
        for (const std::string &argument : arguments) {
            av_push(words, newSVpvn(argument.data(), argument.size()));
        }
        sv_setpv_mg(get_sv("0", GV_ADD), script.c_str());
        PL_dowarn = G_WARN_OFF;
        PL_endav = nullptr;
        allowPerlExit(true);
    }
    ~ScriptSetting()
    {
        pTHX = perl_;
        allowPerlExit(false);
        SvREFCNT_dec(MUTABLE_SV(PL_endav));
        PL_endav = endBlocks_;
        PL_dowarn = warnings_;
        PerlIO_flush(nullptr);
    }
    ScriptSetting(const ScriptSetting &) = delete;
    ScriptSetting &operator=(const ScriptSetting &) = delete;

private:
    PerlInterpreter *perl_;
    U8 warnings_;
    AV *endBlocks_;
};

/// The text of a file, or the reason why it cannot be read.
const char *readScript(velInstance *instance, const std::string &script, std::string *text)
{
    std::FILE *file = std::fopen(script.c_str(), "rb");
    std::array<char, 65536> piece;
    std::size_t got = 0;
    while (file != nullptr && (got = std::fread(piece.data(), 1, piece.size(), file)) > 0) {
        text->append(piece.data(), got);
    }
    const bool failed = (file == nullptr) || std::ferror(file);
    const int reason = errno;
    if (file != nullptr) {
        std::fclose(file);
    }
    if (!failed) {
        return nullptr;
    }
    pTHX = velInterpreter();
    PerlFrame frame(aTHX);
    return keepMessage(instance, sv_2mortal(newSVpvf("runPerlScript: cannot read %s: %s",
                                                     script.c_str(), std::strerror(reason))));
}

/// The text to evaluate for a script: messages have the line numbers and the name of its
/// file.
std::string asCode(const std::string &script, const std::string &text)
{
    return "package main;\n#line 1 \"" + script + "\"\n" + text;
}

/// The text after the first line __END__ or __DATA__, which the script can read as DATA. If
/// such a line is in a quoted text, DATA is opened too, which does no harm.
std::string_view dataPart(std::string_view text)
{
    std::string_view data;
    std::size_t first = std::string_view::npos;
    for (const std::string_view mark : {"\n__END__\n", "\n__DATA__\n"}) {
        const std::size_t at = text.find(mark);
        if (at >= first) {
            continue;
        }
        first = at;
        data = text.substr(at + mark.size());
    }
    return data;
}

void openData(pTHX_ std::string_view data)
{
    if (data.empty()) {
        return;
    }
    sv_setpvn(get_sv("VEL::Parser::scriptData", GV_ADD), data.data(), data.size());
    const PerlFrame frame(aTHX);
    SV *code = sv_2mortal(newSVpvs("open main::DATA, '<', \\$VEL::Parser::scriptData;"));
    static_cast<void>(evalPerlText(aTHX_ code, G_VOID));
}

XSPROTO(runEndBlocks)
{
    dXSARGS;
    PERL_UNUSED_VAR(cv);
    PERL_UNUSED_VAR(items);
    if (PL_endav) {
        call_list(PL_scopestack_ix, PL_endav);
    }
    my_exit(static_cast<U32>(STATUS_EXIT));
}

/// The error with which a step of a script died, owned by the caller; null if it did not
/// die. `status` gets its exit status.
SV *stepError(pTHX_ const PerlResult &result, int *status)
{
    if (result.exited) {
        *status = STATUS_EXIT;
    }
    return result.error != nullptr ? newSVsv(plainValue(aTHX_ result.error)) : nullptr;
}

SV *runCode(pTHX_ const std::string &code, int *status)
{
    const PerlFrame frame(aTHX);
    SV *source = sv_2mortal(newSVpvn(code.data(), code.size()));
    return stepError(aTHX_ evalPerlText(aTHX_ source, G_VOID), status);
}

SV *runEnd(pTHX_ int *status)
{
    const PerlFrame frame(aTHX);
    SV *code = sv_2mortal(MUTABLE_SV(newXS(nullptr, runEndBlocks, __FILE__)));
    return stepError(aTHX_ callPerl(aTHX_{nullptr, code}, {}, G_VOID | G_DISCARD), status);
}

/// Null if everything that the script printed has been written. If the script itself has
/// closed standard output, this is not a failure.
const char *flushOutput(pTHX_ velInstance *instance)
{
    PerlIO *output = PerlIO_stdout();
    if (*output == nullptr) {
        return nullptr;
    }
    errno = 0;
    if (PerlIO_flush(output) == 0 && !PerlIO_error(output)) {
        return nullptr;
    }
    const int reason = errno ? errno : EIO;
    PerlFrame frame(aTHX);
    return keepMessage(instance, sv_2mortal(newSVpvf("runPerlScript: standard output: %s",
                                                     std::strerror(reason))));
}

const char *runScript(Session &session, const std::string &script,
                      const std::vector<std::string> &arguments, const ScriptVariables &variables,
                      int *status)
{
    std::string text;
    if (const char *error = readScript(session.instance(), script, &text)) {
        return error;
    }
    pTHX = velInterpreter();
    const PerlLocale locale;
    const ScriptSetting setting(aTHX_ script, arguments);
    openData(aTHX_ dataPart(text));
    int exitStatus = 0;
    const PerlFrame frame(aTHX);
    const PerlVariables entries(aTHX_ variables);
    SV *error = sv_2mortal(runCode(aTHX_ asCode(script, text), &exitStatus));
    // END blocks can read this as $?, and may change it.
    PL_statusvalue = exitStatus;
    SV *endError = sv_2mortal(runEnd(aTHX_ & exitStatus));
    if (error != nullptr || endError != nullptr) {
        return keepMessage(session.instance(), error != nullptr ? error : endError);
    }
    if (const char *shortWrite = flushOutput(aTHX_ session.instance())) {
        return shortWrite;
    }
    if (status != nullptr) {
        *status = exitStatus & 0xff;
    }
    return nullptr;
}

} // namespace

const char *runPerlScript(Session &session, const std::string &script,
                          const std::vector<std::string> &arguments, int *status)
{
    return runPerlScript(session, script, arguments, {}, status);
}

const char *runPerlScript(Session &session, const std::string &script,
                          const std::vector<std::string> &arguments,
                          const ScriptVariables &variables, int *status)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    return guarded(outOfMemory,
                   [&] { return runScript(session, script, arguments, variables, status); });
}

} // namespace velparser
