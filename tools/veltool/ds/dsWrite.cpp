// veltool ds write: adds a dataset from a text.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/ds/dsContainer.h"
#include "tools/veltool/ds/dsValues.h"
#include "tools/veltool/support/input.h"
#include "veltext/heldSignals.h"

#include <cstring>

namespace veltool {

namespace {

/// The attributes in slots, as the library needs them. A text that is too long
/// fills its slot without a NUL, and the library refuses it.
std::vector<char> attributeSlots(const std::vector<std::string> &texts)
{
    constexpr auto slot = static_cast<std::size_t>(IO_STRING_SLOT);
    std::vector<char> slots(texts.size() * slot + 1);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::string_view text = zottrimEnd(texts[i]);
        text.copy(slots.data() + i * slot, slot);
        if (text.size() >= slot) {
            slots[(i + 1) * slot - 1] = text.back();
        }
    }
    return slots;
}

class WriteTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.text("--format", "CC", format_, "Letter (F, U, u, L, l) and level (0-9, or none)");
        options.number("--blockfactor", "N", blockfactor_, "Elements of a block");
        options.texts("--attribute", "TEXT", attributes_,
                      "Text to store with the data; may be repeated");
    }

    int run(const Words &words) override
    {
        if (format_.size() > 2) {
            throw Failure("--format must be one or two characters");
        }
        requireFile(words[0]);
        DatasetName name(words[1], words[2], words[3]);
        name.type = words[4];
        name.blockfactor = blockfactor_;
        std::vector<char> slots = attributeSlots(attributes_);
        auto attributeCount = static_cast<std::int32_t>(attributes_.size());

        // Parses the text before the file is opened.
        element_storage storage;
        name.count = readValues(name.type, storage);

        IO_header header = name.header();
        header.attribute_count = &attributeCount;
        header.attributes = slots.data();
        header.attributes_size = attributeCount;
        header.format = format_.data();
        const veltext::HeldSignals held;
        Container container;
        container.open(IO_OPEN_PRIMARY_WRITE, words[0]);
        container.request(IO_WRITE_PRIMARY_DS, header, storage.data());
        container.close();
        return statusGood;
    }

private:
    static std::int32_t readValues(const std::string &typeText, element_storage &storage)
    {
        io_reporter reporter(io_real_env());
        reporter.set_routine(reportMessage);
        data_type type;
        if (const int code = parseStructure(reporter, typeText, type)) {
            throw ContainerFailure(typeText, code);
        }
        const std::string text = readInput(standardInput);
        const std::int32_t count = countElements(type, text);
        if (!storage.allocate(total_counts(type, count), type.string_slot())) {
            throw ContainerFailure({}, IO_NO_MEMORY);
        }
        parseValues(type, text, storage.data());
        return count;
    }

    std::string format_;
    std::int32_t blockfactor_ = 1;
    std::vector<std::string> attributes_;
};

} // namespace

const Command dsWriteCommand = {
    .name = "ds write",
    .words = "FILE WHAT WHERE WHEN TYPE",
    .fewest = 5,
    .most = 5,
    .passesOn = false,
    .purpose = "Add a dataset with data from standard input",
    .details = "The data has the form that ds read prints. FILE is created if it does not exist. "
               "TYPE is INTR, REAL, DBLE, LOGL, CHAR, STRI[:N], or the counts of the items of a "
               "structure, such as STRC{INTR:1 DBLE:3 STRI:1:8}.",
    .make = makeTask<WriteTask>,
};

} // namespace veltool
