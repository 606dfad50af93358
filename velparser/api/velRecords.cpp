// Records as text: the one place in C++ that composes it.
#include "velparser/api/velRecords.h"

namespace velparser {

std::string lineOf(const Finding &finding)
{
    std::string line = finding.path;
    if (!line.empty()) {
        line += ": ";
    }
    line += finding.text;
    if (!finding.identifier.empty()) {
        line += " [" + finding.identifier + ']';
    }
    return line;
}

std::string lineOf(const UpgradeChange &change)
{
    return change.path + ": " + change.text;
}

} // namespace velparser
