// Lists, verifies and rebuilds a container, with its index or by a scan.
#include "io/Src/Main/container_check.h"

#include "io/Src/Main/dataset_scan.h"
#include "io/Src/Main/index_file.h"
#include "io/Src/Main/read_dataset.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_set>

namespace {

/// A reporter that collects messages.
class collecting_reporter
{
public:
    explicit collecting_reporter(io_env &env) : report_(env)
    {
        report_.set_sink([this](std::string_view line) { lines_.emplace_back(line); });
    }

    const io_reporter &reporter() const { return report_; }

    /// The messages since the last call, without line ends.
    std::vector<std::string> take()
    {
        std::vector<std::string> taken;
        taken.swap(lines_);
        for (std::string &line : taken) {
            line.resize(zottrimEnd(line).size());
        }
        return taken;
    }

private:
    io_reporter report_;
    std::vector<std::string> lines_;
};

std::string joined(const std::vector<std::string> &lines)
{
    std::string text;
    for (const std::string &line : lines) {
        text += text.empty() ? "" : "; ";
        text += line;
    }
    return text;
}

std::string name_of(const dataset_header &header)
{
    return header.what + ":" + header.where + ":" + std::to_string(header.when);
}

/// A dataset or deleted dataset that the scan found, to compare with the index.
struct seen_dataset
{
    bool live = true;
    std::int64_t length = 0;
    std::string name; ///< empty if the header could not be read
};

/// Verifies one file. Each check adds the faults that it finds.
class verifier
{
public:
    verifier(io_env &env, std::vector<container_fault> &faults, const container_progress &progress)
        : messages_(env), file_(env, messages_.reporter()), faults_(faults), progress_(progress)
    {
    }

    [[nodiscard]] int run(const io_reporter &report, const char *name)
    {
        open_options options;
        options.load_index = false;
        if (int code = iif_open(file_, name, "r", options)) {
            return report.error(code, "%s", joined(messages_.take()).c_str());
        }
        messages_.take();
        size_ = file_.io.stream.size();
        if (size_ > 0) {
            check_size();
            check_datasets();
            check_index();
        }
        std::stable_sort(faults_.begin(), faults_.end(),
                         [](const container_fault &a, const container_fault &b) {
                             return a.position < b.position;
                         });
        return iif_close(file_);
    }

private:
    void add(std::int64_t position, int code, const std::string &text)
    {
        faults_.push_back({position, code, text});
    }

    void check_size()
    {
        auto at = static_cast<std::int64_t>(IO_TAG_INFO.size()) + 1;
        std::int64_t recorded = 0;
        bool read =
            file_.io.stream.seek(at) && zotreadOffset(file_.io, IO_FORMATTED, recorded) == IO_OK;
        if (!read || recorded != size_) {
            add(at, IO_BAD_FILE,
                "the recorded file size is " + std::to_string(recorded) + ", the file has " +
                    std::to_string(size_) + " bytes");
        }
        messages_.take();
    }

    void check_datasets()
    {
        dataset_scan scan(file_, size_);
        do {
            while (scan.next()) {
                check_item(scan.item());
            }
            if (scan.end() != scan_end::end_of_file) {
                has_index_ = false;
                damaged_.insert(scan.position());
                add(scan.position(), scan.code() != IO_OK ? scan.code() : IO_BAD_FILE,
                    joined(messages_.take()));
            }
        } while (scan.end() != scan_end::end_of_file && scan.resume());
        if (scan.end() == scan_end::end_of_file && !has_index_) {
            add(scan.position(), IO_BAD_FILE, "there is no index");
        }
    }

    void check_item(const scanned_dataset &item)
    {
        bool is_index = item.kind == scan_kind::index;
        if (item.kind == scan_kind::dataset) {
            check_data(item);
        }
        if (is_index && item.end != size_) {
            add(item.position, IO_BAD_FILE, "an index is not at the end of the file");
        }
        has_index_ = is_index;
        index_position_ = item.position;
        if (!is_index) {
            found_[item.position] = {item.kind == scan_kind::dataset, item.length,
                                     item.has_header ? name_of(item.header) : std::string()};
        }
        messages_.take();
        if (progress_) {
            progress_(item.end, size_);
        }
    }

    /// Reads all of a dataset, which must end exactly where its length says.
    void check_data(const scanned_dataset &item)
    {
        located_start start;
        int code = read_located_dataset_start(file_, item.position, start);
        data_shape shape;
        if (code == IO_OK) {
            code = describe_data(file_, start, shape);
        }
        if (code == IO_OK) {
            code = check_data_claim(file_.io, shape);
        }
        if (code == IO_OK) {
            code = read_all(start, shape);
        }
        std::int64_t end = file_.io.stream.tell();
        if (code != IO_OK) {
            add(item.position, code, name_of(item.header) + ": " + joined(messages_.take()));
        } else if (end != item.start + item.length) {
            add(item.position, IO_BAD_FILE,
                name_of(item.header) + ": the data ends at byte " + std::to_string(end) +
                    ", by its length at " + std::to_string(item.start + item.length));
        }
    }

    [[nodiscard]] int read_all(const located_start &start, const data_shape &shape)
    {
        if (int code = skim_data(file_.io, shape)) {
            return code;
        }
        return read_end_tag(file_, start.format);
    }

    void check_index()
    {
        if (!has_index_) {
            return;
        }
        if (int code = create_indextable(file_, size_)) {
            add(index_position_, code, joined(messages_.take()));
            return;
        }
        std::unordered_set<std::int64_t> listed;
        for (std::int32_t slot = 0; slot < file_.index.count(); slot++) {
            located_dataset record = {};
            if (parseindex(*file_.report, file_.index.line(slot), record) != IO_OK) {
                continue;
            }
            check_line(slot, record);
            listed.insert(record.position);
        }
        for (const auto &[position, item] : found_) {
            if (item.live && listed.count(position) == 0) {
                add(position, IO_BAD_FILE, item.name + ": is not in the index");
            }
        }
    }

    void check_line(std::int32_t slot, const located_dataset &record)
    {
        auto found = found_.find(record.position);
        std::string name =
            std::string(record.what) + ":" + record.where + ":" + std::to_string(record.when);
        if (damaged_.count(record.position) > 0) {
            return; // already reported
        }
        if (found == found_.end()) {
            add(index_position_, IO_BAD_FILE,
                name + ": the index points at byte " + std::to_string(record.position) +
                    ", where no dataset begins");
            return;
        }
        const seen_dataset &item = found->second;
        if (item.live != (file_.index.status(slot) == 'Y')) {
            add(record.position, IO_BAD_FILE,
                name + (item.live ? ": is live, but the index marks it as deleted"
                                  : ": is deleted, but the index lists it as live"));
        }
        bool same = record.length == item.length && (item.name.empty() || name == item.name);
        if (!same) {
            add(record.position, IO_BAD_FILE,
                name + ": the index has another name or length than the dataset");
        }
    }

    collecting_reporter messages_;
    open_file file_;
    std::vector<container_fault> &faults_;
    const container_progress &progress_;
    std::int64_t size_ = 0;
    std::int64_t index_position_ = 0;
    bool has_index_ = false;
    std::map<std::int64_t, seen_dataset> found_; ///< by position
    std::set<std::int64_t> damaged_;             ///< where the scan stopped
};

[[nodiscard]] int list_live(open_file &file, std::vector<container_entry> &entries)
{
    for (std::int32_t slot = 0; slot < file.index.count(); slot++) {
        if (file.index.status(slot) != 'Y') {
            continue;
        }
        located_dataset record = {};
        if (int code = parseindex(*file.report, file.index.line(slot), record)) {
            return code;
        }
        container_entry entry;
        entry.position = record.position;
        entries.push_back(std::move(entry));
    }
    std::sort(
        entries.begin(), entries.end(),
        [](const container_entry &a, const container_entry &b) { return a.position < b.position; });
    for (container_entry &entry : entries) {
        located_start start;
        if (int code = read_located_dataset_start(file, entry.position, start)) {
            return code;
        }
        entry.format = start.format;
        entry.length = start.length;
        entry.header = std::move(start.header);
    }
    return IO_OK;
}

[[nodiscard]] int list_all(open_file &file, std::vector<container_entry> &entries)
{
    std::int64_t size = file.io.stream.size();
    if (size == 0) {
        return IO_OK;
    }
    dataset_scan scan(file, size);
    while (scan.next()) {
        const scanned_dataset &item = scan.item();
        if (item.kind == scan_kind::index) {
            continue;
        }
        container_entry entry;
        entry.status = item.kind == scan_kind::deleted ? 'N' : 'Y';
        entry.format = item.format;
        entry.position = item.position;
        entry.length = item.length;
        entry.has_header = item.has_header;
        entry.header = item.header;
        entries.push_back(std::move(entry));
    }
    return scan.code();
}

/// The live datasets of the stored index, if it can still be read.
std::vector<located_dataset> stored_datasets(io_env &env, const char *name, std::int64_t &data_end)
{
    collecting_reporter messages(env);
    open_file file(env, messages.reporter());
    open_options options;
    options.load_index = false;
    std::vector<located_dataset> records;
    if (iif_open(file, name, "r", options) != IO_OK) {
        return records;
    }
    data_end = file.io.stream.size();
    if (create_indextable(file, data_end) == IO_OK) {
        data_end = file.index_position;
    }
    for (std::int32_t slot = 0; slot < file.index.count(); slot++) {
        located_dataset record = {};
        if (file.index.status(slot) == 'Y' &&
            parseindex(*file.report, file.index.line(slot), record) == IO_OK) {
            records.push_back(record);
        }
    }
    static_cast<void>(iif_close(file)); // the file was only read, so nothing can be lost
    return records;
}

bool holds(open_file &file, const located_dataset &record)
{
    located_datasets found;
    if (get_ds_location(*file.report, file.index, IO_SORT_WHAT, record.what, record.where, -1,
                        found) != IO_OK) {
        return false;
    }
    return std::any_of(found.begin(), found.end(), [&](const located_dataset &other) {
        return other.when == record.when && other.position == record.position;
    });
}

} // namespace

int list_container(open_file &file, bool all, std::vector<container_entry> &entries)
{
    entries.clear();
    return all ? list_all(file, entries) : list_live(file, entries);
}

int verify_container(io_env &env, const io_reporter &report, const char *name,
                     std::vector<container_fault> &faults, const container_progress &progress)
{
    faults.clear();
    return verifier(env, faults, progress).run(report, name);
}

int rebuild_container(io_env &env, const io_reporter &report, const char *name,
                      rebuild_result &result)
{
    result = rebuild_result();
    std::int64_t data_end = 0;
    std::vector<located_dataset> before = stored_datasets(env, name, data_end);
    collecting_reporter messages(env);
    open_file file(env, messages.reporter());
    open_options options;
    options.may_create = false;
    options.force_rebuild = true;
    if (int code = iif_open(file, name, "w", options)) {
        return report.error(code, "%s", joined(messages.take()).c_str());
    }
    result.messages = messages.take();
    result.datasets = file.index.count();
    result.dropped_bytes = std::max<std::int64_t>(data_end - file.index_position, 0);
    std::copy_if(before.begin(), before.end(), std::back_inserter(result.lost),
                 [&](const located_dataset &record) { return !holds(file, record); });
    int code = iif_close(file);
    return code == IO_OK ? IO_OK : report.error(code, "%s", joined(messages.take()).c_str());
}
