// How the commands of `veltool ds` print datasets, as lines or as JSON.
#pragma once

#include "io/Src/Main/get_ds_location.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"

#include <string>
#include <vector>

namespace veltool {

/// The name, length and position of a dataset, separated by tabs; no line feed.
[[nodiscard]] std::string lineOf(const located_dataset &dataset);

/// The same as a JSON object.
[[nodiscard]] std::string jsonOf(const located_dataset &dataset);

/// Prints a line for each entry, or one array of objects.
template <typename Entry, typename Line, typename Object>
void printEach(const std::vector<Entry> &entries, bool json, Line line, Object object)
{
    if (!json) {
        for (const Entry &entry : entries) {
            out() << line(entry) << '\n';
        }
        return;
    }
    JsonArray array;
    for (const Entry &entry : entries) {
        out() << array.next() << object(entry);
    }
    out() << array.end();
}

} // namespace veltool
