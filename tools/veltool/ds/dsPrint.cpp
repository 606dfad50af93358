// Formats a located dataset.
#include "tools/veltool/ds/dsPrint.h"

namespace veltool {

std::string lineOf(const located_dataset &dataset)
{
    return std::string(dataset.what) + '\t' + dataset.where + '\t' + std::to_string(dataset.when) +
           '\t' + std::to_string(dataset.length) + '\t' + std::to_string(dataset.position);
}

std::string jsonOf(const located_dataset &dataset)
{
    return '{' + jsonMember("what", dataset.what) + ',' + jsonMember("where", dataset.where) +
           ",\"when\":" + std::to_string(dataset.when) +
           ",\"length\":" + std::to_string(dataset.length) +
           ",\"position\":" + std::to_string(dataset.position) + '}';
}

} // namespace veltool
