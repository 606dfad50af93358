// Runs the samples of docs/veltool.md and README.md.
#include "tools/veltool/tests/documentSamples.h"

#include <gtest/gtest.h>

namespace veltool::test {
namespace {

TEST(Manual, ItsSamplesAreTrue)
{
    // With the shipped rules, as for a user without own settings.
    EXPECT_GT(replaySamples("docs/veltool.md", "unset ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS; "
                                               "veltool() { \"$VELTOOL\" \"$@\"; }"),
              6);
}

TEST(Readme, ItsSamplesAreTrue)
{
    // With copies of the examples, because some commands change them.
    EXPECT_GT(replaySamples("README.md", "unset ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS; "
                                         "[ -d examples ] || cp -r \"$VEL_SOURCE_DIR/examples\" .; "
                                         "veltool() { \"$VELTOOL\" \"$@\"; }"),
              4);
}

} // namespace
} // namespace veltool::test
