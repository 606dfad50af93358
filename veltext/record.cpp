// Writes records, and finds the intact ones.
#include "veltext/record.h"

#include "veltext/fields.h"

#include <algorithm>

#include <zlib.h>

namespace veltext {

namespace {

/// Unlikely in a text, and not valid UTF-8.
constexpr std::string_view marker = "\x89VR\n";
constexpr std::size_t lengthPlace = 4;
constexpr std::size_t sumPlace = 8;
constexpr std::size_t kindPlace = 12;

std::uint32_t addToSum(std::uint32_t sum, std::string_view bytes)
{
    return static_cast<std::uint32_t>(
        crc32_z(sum, reinterpret_cast<const Bytef *>(bytes.data()), bytes.size()));
}

std::uint32_t numberAt(std::string_view bytes, std::size_t place)
{
    return FieldReader(bytes.substr(place)).number();
}

/// Whether the bytes are the beginning of a record that is longer than they are.
bool isBeginning(std::string_view bytes)
{
    const std::size_t size = std::min(bytes.size(), marker.size());
    if (bytes.substr(0, size) != marker.substr(0, size)) {
        return false;
    }
    return bytes.size() < recordHeadSize ||
           bytes.size() - recordHeadSize < numberAt(bytes, lengthPlace);
}

} // namespace

std::string recordOf(char kind, std::string_view body)
{
    std::string record;
    record.reserve(recordHeadSize + body.size());
    record = marker;
    putNumber(&record, static_cast<std::uint32_t>(body.size()));
    std::uint32_t sum = addToSum(0, std::string_view(record).substr(lengthPlace));
    sum = addToSum(addToSum(sum, {&kind, 1}), body);
    putNumber(&record, sum);
    return (record += kind).append(body);
}

std::optional<Record> RecordReader::recordAt(std::size_t place) const
{
    const std::string_view rest = bytes_.substr(place);
    if (rest.size() < recordHeadSize || !rest.starts_with(marker)) {
        return {};
    }
    const std::uint32_t length = numberAt(rest, lengthPlace);
    if (length > rest.size() - recordHeadSize) {
        return {};
    }
    const std::string_view body = rest.substr(recordHeadSize, length);
    std::uint32_t sum = addToSum(0, rest.substr(lengthPlace, sumPlace - lengthPlace));
    sum = addToSum(addToSum(sum, rest.substr(kindPlace, 1)), body);
    if (sum != numberAt(rest, sumPlace)) {
        return {};
    }
    return Record{rest[kindPlace], body};
}

std::optional<Record> RecordReader::next()
{
    const std::size_t start = position_;
    for (std::size_t place = start; place != std::string_view::npos;
         place = bytes_.find(marker, place + 1)) {
        if (const std::optional<Record> record = recordAt(place)) {
            skipped_ = place - start;
            position_ = place + recordHeadSize + record->body.size();
            return record;
        }
    }
    skipped_ = bytes_.size() - start;
    isTorn_ = skipped_ > 0 && isBeginning(bytes_.substr(start));
    return {};
}

} // namespace veltext
