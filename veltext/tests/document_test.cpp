// Runs the sample of docs/veltext.md, a program that is compiled as it is there,
// and expects what the document says that it prints.
#include "tools/veltool/tests/documentSamples.h"

#include <gtest/gtest.h>

namespace veltool::test {
namespace {

TEST(TextEngineDocument, ItsProgramDoesWhatItSays)
{
    EXPECT_GT(replaySamples("docs/veltext.md",
                            "versions() { \"$VEL_BUILD_DIR\"/tests/veltext_sample \"$@\"; }"),
              3);
}

} // namespace
} // namespace veltool::test
