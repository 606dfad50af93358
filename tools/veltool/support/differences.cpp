// Prints differences as lines or as JSON.
#include "tools/veltool/support/differences.h"

#include "tools/veltool/support/failure.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"
#include "veltext/treeDiff.h"

namespace veltool {

namespace {

const char *wordOf(veltext::DifferenceKind kind)
{
    switch (kind) {
    case veltext::DifferenceKind::Added:
        return "added";
    case veltext::DifferenceKind::Removed:
        return "removed";
    case veltext::DifferenceKind::Changed:
        break;
    }
    return "changed";
}

void printJson(const veltext::Difference &difference)
{
    out() << '{' << jsonMember("path", difference.path) << ','
          << jsonMember("kind", wordOf(difference.kind)) << ','
          << jsonMember("old", difference.oldValue) << ',' << jsonMember("new", difference.newValue)
          << '}';
}

} // namespace

int printDifferences(velHandle *before, velHandle *after, bool json)
{
    bool isSame = true;
    JsonArray array;
    veltext::compareTrees(before, velFindNode(before, "/"), after, velFindNode(after, "/"), "/",
                          [&](const veltext::Difference &difference) {
                              isSame = false;
                              if (!json) {
                                  out() << lineOf(difference) << '\n';
                                  return;
                              }
                              out() << array.next();
                              printJson(difference);
                          });
    if (json) {
        out() << array.end();
    }
    return isSame ? statusGood : statusFindings;
}

} // namespace veltool
