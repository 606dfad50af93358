// veltool perl: runs a script in the embedded interpreter.
#include "common/writeSignals.h"
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/programPlace.h"
#include "velparser/api/velparser.h"

namespace veltool {

namespace {

class PerlTask : public Task
{
public:
    int run(const Words &words) override
    {
        // The script gets the same signal actions as in any other perl.
        velEditor::restoreWriteSignals();
        int status = statusGood;
        const Words arguments(words.begin() + 1, words.end());
        const Places places = findPlaces();
        if (places.packages) {
            require(velparser::startVELParser(*places.packages));
        }
        require(velparser::runPerlScript(words[0], arguments, variablesOf(places), &status));
        return status;
    }
};

} // namespace

const Command perlCommand = {
    .name = "perl",
    .words = "SCRIPT [ARGS...]",
    .fewest = 1,
    .most = anyNumber,
    .passesOn = true,
    .purpose = "Run a Perl script in the embedded interpreter",
    .details =
        "The script can use VEL::Parser::Lite, VEL::Validate and API, and finds ARGS in @ARGV. "
        "Options after SCRIPT are passed to the script. The exit status is that of the "
        "script, or 2 if it dies.",
    .make = makeTask<PerlTask>,
};

} // namespace veltool
