// Runs the sample program of docs/veltext.md, compiled from the document, and expects
// the output that the document shows.
#include "tools/veltool/tests/documentSamples.h"

#include <gtest/gtest.h>

namespace veltool::test {
namespace {

TEST(TextEngineDocument, ItsProgramGivesTheShownOutput)
{
    EXPECT_GT(replaySamples("docs/veltext.md",
                            "versions() { \"$VEL_BUILD_DIR\"/tests/veltext_sample \"$@\"; }"),
              3);
}

} // namespace
} // namespace veltool::test
