// Walks through the items of two types and converts each value between them.
#include "io/Src/Main/convert_data.h"

#include "io/Src/Main/zot_numbers.h"

#include <algorithm>
#include <cstring>

namespace {

/// False if the value does not fit. Fractions are cut off toward zero.
template <typename From, typename To>
bool convert_value(From from, To &to)
{
    constexpr bool to_integer = std::is_same_v<To, std::int32_t>;
    if constexpr (std::is_same_v<From, double> && std::is_same_v<To, float>) {
        if (!zotfitsReal(from)) {
            return false;
        }
    }
    if constexpr (to_integer && std::is_floating_point_v<From>) {
        auto wide = static_cast<double>(from);
        if (!(wide > -2147483649.0 && wide < 2147483648.0)) {
            return false;
        }
    }
    if constexpr (std::is_same_v<To, std::uint8_t>) {
        to = from != 0 ? 1 : 0;
    } else {
        to = static_cast<To>(from);
    }
    return true;
}

/// Walks through the arrays of both sides in parallel.
class converter
{
public:
    converter(const io_reporter &report, const IO_data &in, IO_data &out)
        : report_(report), in_(in), out_(out)
    {
    }

    [[nodiscard]] int item(const type_entry &from, const type_entry &to, std::int64_t values)
    {
        if (!enough(from.type, values)) {
            return report_.error(IO_NO_ROOM, "convert_data: not enough %s input data",
                                 element_of(from.type).array_name);
        }
        bool good = true;
        switch (from.type) {
        case IO_STRI:
            strings(from.length, to.length, values);
            break;
        case IO_CHAR:
            chars(values);
            break;
        case IO_INTR:
            good = numbers(in_.integers, IO_INTR, to.type, values);
            break;
        case IO_REAL:
            good = numbers(in_.reals, IO_REAL, to.type, values);
            break;
        case IO_DBLE:
            good = numbers(in_.doubles, IO_DBLE, to.type, values);
            break;
        case IO_LOGL:
            good = numbers(in_.logicals, IO_LOGL, to.type, values);
            break;
        }
        return good ? IO_OK
                    : report_.error(IO_NO_CONVERSION,
                                    "convert_data: a number is beyond the range of %s",
                                    element_type_name(to.type));
    }

private:
    /// Returns where the next `values` values of a type are, and moves past them.
    static std::int64_t next(element_counts &positions, element_type type, std::int64_t values)
    {
        std::int64_t &position = positions[static_cast<std::size_t>(type)];
        std::int64_t start = position;
        position += values;
        return start;
    }

    bool enough(element_type type, std::int64_t values)
    {
        return element_array_size(in_, type) - in_next_[static_cast<std::size_t>(type)] >= values;
    }

    void chars(std::int64_t values)
    {
        const char *from = in_.chars + next(in_next_, IO_CHAR, values);
        std::copy(from, from + values, out_.chars + next(out_next_, IO_CHAR, values));
    }

    void strings(std::int32_t in_length, std::int32_t out_length, std::int64_t values)
    {
        auto most = static_cast<std::size_t>(std::min(in_length, out_length));
        std::int64_t from = next(in_next_, IO_STRI, values);
        std::int64_t to = next(out_next_, IO_STRI, values);
        for (std::int64_t i = 0; i < values; i++) {
            put_string(out_, to + i, get_string(in_, from + i, most));
        }
    }

    template <typename From>
    bool numbers(const From *in, element_type from, element_type to, std::int64_t values)
    {
        const From *source = in + next(in_next_, from, values);
        std::int64_t start = next(out_next_, to, values);
        switch (to) {
        case IO_INTR:
            return loop(source, out_.integers + start, values);
        case IO_REAL:
            return loop(source, out_.reals + start, values);
        case IO_DBLE:
            return loop(source, out_.doubles + start, values);
        case IO_LOGL:
            return loop(source, out_.logicals + start, values);
        case IO_STRI:
        case IO_CHAR:
            break; // no number is converted to these types
        }
        return false;
    }

    template <typename From, typename To>
    static bool loop(const From *from, To *to, std::int64_t values)
    {
        for (std::int64_t i = 0; i < values; i++) {
            if (!convert_value(from[i], to[i])) {
                return false;
            }
        }
        return true;
    }

    const io_reporter &report_;
    const IO_data &in_;
    IO_data &out_;
    element_counts in_next_ = {};
    element_counts out_next_ = {};
};

} // namespace

int check_conversion(const io_reporter &report, const std::string &from_text, const data_type &from,
                     const std::string &to_text, const data_type &to)
{
    const char *a = from_text.c_str();
    const char *b = to_text.c_str();
    if (from.entries.size() != to.entries.size()) {
        return report.error(IO_NO_CONVERSION,
                            "convert_data: cannot convert from %s to %s: different total number of"
                            " items",
                            a, b);
    }
    for (std::size_t i = 0; i < from.entries.size(); i++) {
        if (from.entries[i].count != to.entries[i].count) {
            return report.error(IO_NO_CONVERSION,
                                "convert_data: cannot convert from %s to %s: counts differ for item"
                                " %d",
                                a, b, static_cast<int>(i) + 1);
        }
    }
    for (std::size_t i = 0; i < from.entries.size(); i++) {
        if (!element_converts(from.entries[i].type, to.entries[i].type)) {
            return report.error(IO_NO_CONVERSION,
                                "convert_data: cannot convert from %s to %s: incompatible types for"
                                " item %d",
                                a, b, static_cast<int>(i) + 1);
        }
    }
    return IO_OK;
}

int convert_data(const io_reporter &report, const data_type &from, const IO_data &in,
                 const data_type &to, IO_data &out, std::int32_t count)
{
    // A single type is one item of `count` values, not `count` items.
    std::int64_t records = from.structure ? count : 1;
    std::int64_t repeat = from.structure ? 1 : count;
    converter work(report, in, out);
    for (std::int64_t record = 0; record < records; record++) {
        for (std::size_t i = 0; i < from.entries.size(); i++) {
            const type_entry &entry = from.entries[i];
            if (int code = work.item(entry, to.entries[i], entry.values() * repeat)) {
                return code;
            }
        }
    }
    return IO_OK;
}
