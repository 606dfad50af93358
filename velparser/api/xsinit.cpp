// Starts and ends the Perl interpreter, and separates its locale from that of the program.

#include "velparser/api/xsinit_p.h"

#include "velparser/api/Lite_p.h"
#include "velparser/api/environment_p.h"
#include "velparser/api/velInstance_p.h"
#include "velparser/api/velparser.h"

#include <unistd.h>

extern "C" void boot_DynaLoader(pTHX_ CV *cv);

namespace velparser {

namespace {

PerlInterpreter *interpreter = nullptr;

/// Null until the interpreter has chosen one.
locale_t perlLocale = nullptr;

/// The number of PerlLocale objects that exist.
int perlLocaleDepth = 0;

XSPROTO(exitOrDie)
{
    dXSARGS;
    PERL_UNUSED_VAR(cv);
    PERL_UNUSED_VAR(sp);
    const IV status = items > 0 ? SvIV(ST(0)) : 0;
    if (isPerlExitAllowed()) {
        my_exit(static_cast<U32>(status & 0xff));
    }
    croak("exit(%" IVdf ") called", status);
}

/// Perl uses an overriding function only if it was imported. callPerl stops an exit that
/// does not call it (CORE::exit).
void overrideExit(pTHX)
{
    newXS("CORE::GLOBAL::exit", exitOrDie, __FILE__);
    GvIMPORTED_CV_on(gv_fetchpvs("CORE::GLOBAL::exit", GV_ADD, SVt_PVCV));
    allowPerlExit(false);
}

/// Called once in a process. From then on Perl ignores SIGFPE; if the caller has a handler
/// for it, this handler stays.
void initPerlSystem()
{
    static bool done = false;
    if (std::exchange(done, true)) {
        return;
    }
    static char empty[] = "";
    static char *words[] = {empty, nullptr};
    int count = 1;
    char **arguments = words;
    char **environment = environ;
    struct sigaction handler = {};
    sigaction(SIGFPE, nullptr, &handler);
    PERL_SYS_INIT3(&count, &arguments, &environment);
    sigaction(SIGFPE, &handler, nullptr);
}

/// For an interpreter without a locale for its thread, which would write numbers as the
/// process does.
locale_t pointLocale()
{
    static const locale_t locale = newlocale(LC_NUMERIC_MASK, "C", duplocale(LC_GLOBAL_LOCALE));
    return locale;
}

/// Perl sets the locale from the environment. This restores the locale of the process
/// and keeps Perl's for PerlLocale.
class KeptLocale
{
public:
    KeptLocale() : thread_(uselocale(nullptr))
    {
        if (const char *names = setlocale(LC_ALL, nullptr)) {
            process_ = names;
        }
    }
    ~KeptLocale()
    {
        perlLocale = uselocale(thread_);
        if (perlLocale == LC_GLOBAL_LOCALE) {
            perlLocale = pointLocale();
        }
        setlocale(LC_ALL, process_.c_str());
    }
    KeptLocale(const KeptLocale &) = delete;
    KeptLocale &operator=(const KeptLocale &) = delete;

private:
    locale_t thread_;
    std::string process_;
};

/// The arguments of the interpreter. Perl keeps pointers to them and may write to them (to
/// set $0), so they are never freed.
char **perlWords(const std::string &directory)
{
    static std::array<std::string, 4> texts;
    static std::array<char *, 5> words;
    // -I without a folder would use the script as its folder.
    texts = {"", "-w", "-I" + (directory.empty() ? "/" : directory),
             directory + "/VEL/embeddedParserInit.pl"};
    std::ranges::transform(texts, words.begin(), [](std::string &text) { return text.data(); });
    words.back() = nullptr;
    return words.data();
}

/// Writes the buffered output of Perl code before the process ends.
void flushAtExit()
{
    pTHX = interpreter;
    PERL_SET_CONTEXT(aTHX);
    PerlIO_flush(nullptr);
}

const char *startInterpreter(const std::string &directory)
{
    char **words = perlWords(directory);
    initPerlSystem();
    const KeptLocale kept;
    PerlInterpreter *my_perl = perl_alloc();
    if (my_perl == nullptr) {
        return "Error: Cannot parse perl code\n";
    }
    perl_construct(my_perl);
    // A script that exits with status 0 leaves no program to run.
    if (perl_parse(my_perl, xsInit, 4, words, nullptr) == 0 && PL_main_root) {
        interpreter = my_perl;
        std::atexit(flushAtExit);
        return nullptr;
    }
    PL_perl_destruct_level = 1;
    perl_destruct(my_perl);
    perl_free(my_perl);
    return "Error: Cannot parse perl code\n";
}

[[noreturn]] void exitWithoutParser()
{
    std::fputs("Cannot find VEL parser.  Please set ZOT5_VEL_PARSER to point to it.\n", stderr);
    std::exit(1);
}

} // namespace

void xsInit(pTHX)
{
    newXS("DynaLoader::boot_DynaLoader", boot_DynaLoader, __FILE__);
    newXS("VEL::Parser::Lite::bootstrap", boot_VEL__Parser__Lite, __FILE__);
    overrideExit(aTHX);
}

PerlInterpreter *velInterpreter()
{
    return interpreter;
}

PerlLocale::PerlLocale() : outer_(perlLocaleDepth++ == 0 ? uselocale(perlLocale) : nullptr) {}

// Only the outermost object sets a locale. Perl frees its locale when it changes to another
// one, and an inner object would restore the freed locale.
PerlLocale::~PerlLocale()
{
    if (--perlLocaleDepth == 0) {
        perlLocale = uselocale(outer_);
    }
}

const char *startVELParser()
{
    if (interpreter != nullptr) {
        makeDefaultInstance();
        return nullptr;
    }
    const char *directory = packagesOfEnvironment();
    if (directory == nullptr) {
        exitWithoutParser();
    }
    return guarded(outOfMemory, [&] { return startVELParser(std::string(directory)); });
}

const char *startVELParser(const std::string &packages)
{
    if (interpreter == nullptr) {
        if (const char *error = guarded(outOfMemory, [&] { return startInterpreter(packages); })) {
            return error;
        }
    }
    makeDefaultInstance();
    return nullptr;
}

} // namespace velparser
