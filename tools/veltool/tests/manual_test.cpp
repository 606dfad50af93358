// Runs the samples of docs/veltool.md.
#include "tools/veltool/tests/documentSamples.h"

#include <gtest/gtest.h>

namespace veltool::test {
namespace {

TEST(Manual, ItsSamplesAreTrue)
{
    // As for a user who has set nothing: with the rules that ship.
    EXPECT_GT(replaySamples("docs/veltool.md",
                            "unset ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS; "
                            "veltool() { \"$VELTOOL\" \"$@\"; }"),
              6);
}

} // namespace
} // namespace veltool::test
