// The validation driver: the walk, the calls of the validator, and what they find.
#include "velparser/api/velValidate_p.h"

#include "velparser/api/Lite_p.h"
#include "velparser/api/perlRecords_p.h"
#include "velparser/api/textRecords_p.h"
#include "velparser/api/velInstance_p.h"
#include "velparser/api/velparser.h"
#include "velparser/api/xsinit_p.h"

#include <unordered_set>

namespace velparser {

namespace {

constexpr std::uint32_t doneFlags = velFlagValid | velFlagSubtreeValid;

/// The name in messages of all operations except validateVELDataH. Users know it, so it
/// stays, although the operations have other names.
constexpr const char *noHandle = "validateVELObjectH: error finding Lite API handle";

struct ValidationData
{
    SV *validator = nullptr; ///< owned
    SV *database = nullptr;  ///< owned; the Perl object by which the validator uses the handle
};

void releaseValidationData(void *data)
{
    pTHX = velInterpreter();
    auto *validation = static_cast<ValidationData *>(data);
    SvREFCNT_dec(validation->validator);
    // If Perl code still has the object, it finds an empty object, not a freed handle.
    if (validation->database != nullptr) {
        static_cast<void>(emptyObject(aTHX_ validation->database));
    }
    SvREFCNT_dec(validation->database);
    delete validation;
}

/// Makes `before` and the text the handle's error text and returns it.
const char *recordText(pTHX_ velHandle *handle, const std::string &before, SV *text)
{
    return velRecordError(handle, before + byteText(aTHX_ plainValue(aTHX_ text)));
}

const char *createValidator(velHandle *handle, ValidationData *validation)
{
    pTHX = velInterpreter();
    const PerlLocale locale;
    const PerlFrame frame(aTHX);
    if (SV *error = requirePackage(aTHX_ "VEL::Validate")) {
        return recordText(aTHX_ handle, "validateVELDataLTH: Internal error: ", error);
    }
    validation->database = newLiteObject(handle);
    if (validation->database == nullptr) {
        return "validateVELDataLTH: memory error";
    }
    const std::array arguments{sv_2mortal(newSVpvs("VEL::Validate")), validation->database};
    const PerlResult result = callPerl(aTHX_{"new", nullptr}, arguments, G_SCALAR);
    if (result.count != 1) {
        return "validateVELDataLTH: Unexpected return value from call_argv";
    }
    if (result.error != nullptr) {
        return recordText(aTHX_ handle,
                          "validateVELDataLTH: Internal error creating validator: ", result.error);
    }
    if (!SvOK(result.value)) {
        return "validateVELDataLTH: Error creating new validator object";
    }
    validation->validator = newSVsv(result.value);
    return nullptr;
}

/// The validator's object, which exists after initValidationData.
SV *validatorOf(velHandle *handle)
{
    return static_cast<ValidationData *>(velUserData(handle))->validator;
}

/// Calls a method of the validator, within a frame of the caller. Returns its text, or null
/// if there is none. Messages contain the path `specified`.
const char *callValidator(pTHX_ velHandle *handle, const char *method, const char *specified,
                          std::span<SV *const> arguments)
{
    const std::span<SV *> values = mortalValues(aTHX_ 1 + arguments.size());
    values[0] = validatorOf(handle);
    std::ranges::copy(arguments, values.begin() + 1);
    const PerlResult result = callPerl(aTHX_{method, nullptr}, values, G_SCALAR);
    if (result.count != 1) {
        return "Unexpected return value (not 1) from perl_call_method in callValidationMethod";
    }
    if (result.error != nullptr) {
        return recordText(aTHX_ handle,
                          std::string("validateVELDataLTH: Internal error calling ") + specified +
                              ": ",
                          result.error);
    }
    if (!SvOK(result.value)) {
        return nullptr;
    }
    const char *text = byteText(aTHX_ plainValue(aTHX_ result.value));
    return *text ? velRecordError(handle, text) : nullptr;
}

/// Collects the findings of the validator.
class Collector
{
public:
    Collector() = default;
    virtual ~Collector() = default;
    Collector(const Collector &) = delete;
    Collector &operator=(const Collector &) = delete;

    /// Lets the validator check the item at the path.
    virtual void validate(const char *path) = 0;
    /// Adds a finding that is not from the validator.
    virtual void addFailure(std::string_view line) = 0;
};

/// Collects them as one text, with a newline after each line.
class TextCollector : public Collector
{
public:
    explicit TextCollector(velHandle *handle) : handle_(handle) {}

    void validate(const char *path) override
    {
        if (const char *text = callValidationMethod(handle_, "validateObject", {path})) {
            add(text);
        }
    }
    void addFailure(std::string_view line) override { add(line); }

    [[nodiscard]] const std::string &text() const { return text_; }

private:
    void add(std::string_view text)
    {
        text_ += text;
        if (!text.empty() && text.back() != '\n') {
            text_ += '\n';
        }
    }

    velHandle *handle_;
    std::string text_;
};

/// Collects them as records. If the validator gives only texts, the texts are converted.
class RecordCollector : public Collector
{
public:
    RecordCollector(velHandle *handle, const char *method)
        : handle_(handle), method_(method), recordsMethod_(recordsMethod(method))
    {
        pTHX = velInterpreter();
        hasRecords_ = hasRecords(aTHX_ validatorOf(handle), method);
    }

    void validate(const char *path) override
    {
        if (hasRecords_) {
            return addRecordsAt(path);
        }
        if (const char *text = callValidationMethod(handle_, method_, {path})) {
            add(findingsFromText(text));
        }
    }
    void addFailure(std::string_view line) override
    {
        findings_.push_back({.path = {}, .identifier = {}, .text = std::string(line)});
    }

    [[nodiscard]] std::vector<Finding> take() { return std::move(findings_); }

private:
    void add(std::vector<Finding> findings)
    {
        std::ranges::move(findings, std::back_inserter(findings_));
    }

    void addRecordsAt(const char *path)
    {
        pTHX = velInterpreter();
        const PerlLocale locale;
        const PerlFrame frame(aTHX);
        AV *records = newAV();
        const std::array arguments{sv_2mortal(newSVpv(path, 0)),
                                   sv_2mortal(newRV_noinc(MUTABLE_SV(records)))};
        const char *failure =
            callValidator(aTHX_ handle_, recordsMethod_.c_str(), method_, arguments);
        if (failure == nullptr && av_count(records) > 0) {
            if (SV *error = addRecords(aTHX_ records, &findings_)) {
                failure = recordText(aTHX_ handle_,
                                     std::string("validateVELDataLTH: Internal error calling ") +
                                         method_ + ": ",
                                     error);
            }
        }
        for (const std::string_view line : linesOf(failure != nullptr ? failure : "")) {
            addFailure(line);
        }
    }

    velHandle *handle_;
    const char *method_;
    std::string recordsMethod_;
    bool hasRecords_ = false;
    std::vector<Finding> findings_;
};

bool isDone(const velNodeInfo &info)
{
    return (info.flags & doneFlags) == doneFlags;
}

/// One object on the way from the validated node down.
struct WalkLevel
{
    std::size_t pathLength;            ///< of the path up to and with this object
    std::vector<std::string> children; ///< components of those to be visited, in stored order
    std::size_t next = 0;              ///< the child to be visited next
};

/// Walks the tree by paths and not by nodes, because the validator is Perl code that may
/// change the tree during the walk. The levels are in a vector, so deep data does not
/// need a deep stack.
///
/// 1. enter() validates an object and lists its child objects.
/// 2. step() enters each child that is not done yet.
/// 3. After the last child, leave() checks all children again. Objects that were added
///    or became invalid since they were listed are visited too, each once. When all
///    children, including parameters, are done, the subtree is done.
class Driver
{
public:
    Driver(velHandle *handle, std::string path, Collector *collector)
        : handle_(handle), path_(std::move(path)), collector_(collector)
    {
    }

    void run()
    {
        enter();
        while (!levels_.empty()) {
            step();
        }
    }

private:
    [[nodiscard]] const velNode *node() const { return velFindFullPath(handle_, path_.c_str()); }

    /// The flags of the node at the path. A deleted node counts as done.
    [[nodiscard]] std::uint32_t flags() const
    {
        const velNode *found = node();
        return found != nullptr ? velDescribe(handle_, found).flags : doneFlags;
    }

    void mark(std::int32_t level) const
    {
        // A deleted node cannot be marked.
        static_cast<void>(setValid(handle_, path_.c_str(), level));
    }

    /// Calls `visit` for each child object that is not done; true if all children are done.
    template <class Visit>
    bool lookAtChildren(Visit visit) const
    {
        bool done = true;
        const velNode *found = node();
        for (const velNode *child = found ? velFirstChild(found) : nullptr; child;
             child = velNextSibling(child)) {
            const velNodeInfo info = velDescribe(handle_, child);
            if (isDone(info)) {
                continue;
            }
            done = false;
            if (info.kind != velParam) {
                visit(velComponentOf(info));
            }
        }
        return done;
    }

    /// Validates the object at the path, and lists its children unless all of them are
    /// known to be valid.
    void enter()
    {
        if (path_ == "/RULES") {
            mark(1);
            mark(2);
            return;
        }
        if (!(flags() & velFlagValid)) {
            collector_->validate(path_.c_str());
        }
        if (flags() & velFlagSubtreeValid) {
            return;
        }
        WalkLevel level{path_.size(), {}};
        lookAtChildren([&](std::string child) { level.children.push_back(std::move(child)); });
        levels_.push_back(std::move(level));
    }

    /// Takes the next child of the innermost level, or ends the level after the last one.
    void step()
    {
        WalkLevel &level = levels_.back();
        if (level.next == level.children.size()) {
            return leave();
        }
        if (makeChildPath(path_.c_str(), level.children[level.next++].c_str(), &path_) != nullptr) {
            throw std::bad_alloc();
        }
        const std::size_t depth = levels_.size();
        enterChild();
        if (levels_.size() == depth) {
            backToParent();
        }
    }

    void enterChild()
    {
        const velNode *found = node();
        if (found == nullptr) {
            return;
        }
        const velNodeInfo info = velDescribe(handle_, found);
        if (info.kind == velParam || isDone(info)) {
            return;
        }
        if (info.kind == velObject || info.kind == velSingleton) {
            enter();
        } else {
            collector_->addFailure("Internal error: unknown object type");
        }
    }

    void leave()
    {
        WalkLevel &level = levels_.back();
        std::vector<std::string> open;
        if (lookAtChildren([&](std::string child) { open.push_back(std::move(child)); })) {
            mark(2);
        }
        if (!open.empty() && addUnvisited(level, std::move(open))) {
            return;
        }
        levels_.pop_back();
        if (!levels_.empty()) {
            backToParent();
        }
    }

    /// True if there were any.
    static bool addUnvisited(WalkLevel &level, std::vector<std::string> open)
    {
        const std::unordered_set<std::string_view> visited(level.children.begin(),
                                                           level.children.end());
        std::erase_if(open, [&](const std::string &child) { return visited.contains(child); });
        level.children.insert(level.children.end(), open.begin(), open.end());
        return !open.empty();
    }

    void backToParent() { path_.resize(levels_.back().pathLength); }

    velHandle *handle_;
    std::string path_;
    std::vector<WalkLevel> levels_;
    Collector *collector_; ///< not owned
};

/// Walks from the path with the collector from `make`; `finish` gives the result.
template <class Make, class Finish>
const char *velValidationDriver(velHandle *handle, const std::string &path, Make make,
                                Finish finish)
{
    return guarded("velValidationDriver: memory error", [&]() -> const char * {
        auto collector = make();
        Driver(handle, path, &collector).run();
        return finish(collector);
    });
}

/// Gives the path in the form that the walk uses; a message if there is nothing to walk.
const char *findStart(velHandle *handle, const char *path, std::string *clean)
{
    if (const char *error = initValidationData(handle)) {
        return error;
    }
    const bool root = std::string_view(path) == "/";
    *clean = root ? "/" : velCleanPath(path); // not resolved: kept
    if (!root && velFindFullPath(handle, clean->c_str()) == nullptr) {
        return "validateVELData: path does not exist\n";
    }
    return nullptr;
}

} // namespace

const char *initValidationData(velHandle *handle)
{
    if (velUserData(handle) != nullptr) {
        return nullptr;
    }
    auto *validation = new (std::nothrow) ValidationData;
    if (validation == nullptr) {
        return "initValidationData: memory error";
    }
    velSetUserData(handle, validation, releaseValidationData);
    const char *error = guarded("initValidationData: memory error",
                                [&] { return createValidator(handle, validation); });
    // Without a validator the next call must try again, and report the failure again.
    if (error != nullptr) {
        velSetUserData(handle, nullptr, nullptr);
    }
    return error;
}

const char *callValidationMethod(velHandle *handle, const char *method,
                                 std::initializer_list<const char *> arguments)
{
    if (const char *error = initValidationData(handle)) {
        return error;
    }
    pTHX = velInterpreter();
    const PerlLocale locale;
    const PerlFrame frame(aTHX);
    const std::span<SV *> values = mortalValues(aTHX_ arguments.size());
    std::ranges::transform(arguments, values.begin(),
                           [&](const char *argument) { return sv_2mortal(newSVpv(argument, 0)); });
    return callValidator(aTHX_ handle, method, method, values);
}

const char *validateVELData(velHandle *handle, const char *path)
{
    std::string start;
    if (const char *error = findStart(handle, path, &start)) {
        return error;
    }
    return velValidationDriver(
        handle, start, [&] { return TextCollector(handle); },
        [&](const TextCollector &collector) {
            return collector.text().empty() ? nullptr : velRecordError(handle, collector.text());
        });
}

const char *validateVELData(velHandle *handle, const char *path, std::vector<Finding> *findings)
{
    std::string start;
    if (const char *error = findStart(handle, path, &start)) {
        return error;
    }
    return velValidationDriver(
        handle, start, [&] { return RecordCollector(handle, "validateObject"); },
        [&](RecordCollector &collector) {
            *findings = collector.take();
            return nullptr;
        });
}

const char *validateVELDataH(Session &session)
{
    return withDatabase(session, "validateVELDataH: error finding Lite API handle",
                        [](velHandle *handle) { return validateVELData(handle, "/"); });
}

const char *validateVELObjectH(Session &session, const char *path)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    if (path == nullptr) {
        return "validateObject : Invalid arguments\n";
    }
    return withDatabase(session, noHandle,
                        [&](velHandle *handle) { return validateVELData(handle, path); });
}

const char *validate(Session &session, const char *path, std::vector<Finding> *findings)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    if (path == nullptr || findings == nullptr) {
        return "validate: invalid arguments";
    }
    return withDatabase(session, noHandle,
                        [&](velHandle *handle) { return validateVELData(handle, path, findings); });
}

const char *validateParameter(Session &session, const char *path, std::vector<Finding> *findings)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    if (path == nullptr || findings == nullptr) {
        return "validateParameter : Invalid arguments";
    }
    return withDatabase(session, noHandle, [&](velHandle *handle) -> const char * {
        if (const char *error = initValidationData(handle)) {
            return error;
        }
        RecordCollector collector(handle, "validateParam");
        collector.validate(path);
        *findings = collector.take();
        return nullptr;
    });
}

const char *validateParameter(Session &session, const char *path)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    if (path == nullptr) {
        return "validateParameter : Invalid arguments";
    }
    return withDatabase(session, noHandle, [&](velHandle *handle) {
        return callValidationMethod(handle, "validateParam", {path});
    });
}

const char *setUnitsChecking(Session &session, int on)
{
    return withDatabase(session, noHandle, [&](velHandle *handle) {
        return callValidationMethod(handle, "setUnitsChecking", {std::to_string(on).c_str()});
    });
}

const char *setBoundsChecking(Session &session, int on)
{
    return withDatabase(session, noHandle, [&](velHandle *handle) {
        return callValidationMethod(handle, "setBoundsChecking", {std::to_string(on).c_str()});
    });
}

} // namespace velparser
