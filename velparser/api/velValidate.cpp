#include "velparser/api/velValidate_p.h"

#include "velparser/api/velInstance_p.h"
#include "velparser/api/velparser.h"
#include "velparser/api/xsinit_p.h"

namespace velparser {

namespace {

constexpr std::uint32_t doneFlags = velFlagValid | velFlagSubtreeValid;

struct ValidationData
{
    SV *validator = nullptr; ///< owned
};

void releaseValidationData(void *data)
{
    pTHX = velInterpreter();
    auto *validation = static_cast<ValidationData *>(data);
    SvREFCNT_dec(validation->validator);
    delete validation;
}

const char *recordText(pTHX_ velHandle *handle, PerlFrame &frame, const std::string &before,
                       SV *text)
{
    return velRecordError(handle, before + byteText(aTHX_ plainValue(aTHX_ frame, text)));
}

const char *createValidator(velHandle *handle, ValidationData *validation)
{
    pTHX = velInterpreter();
    const PerlLocale locale;
    PerlFrame frame(aTHX);
    eval_pv("require VEL::Validate;", FALSE);
    if (isTrue(aTHX_ ERRSV))
        return recordText(aTHX_ handle, frame,
                          "validateVELDataLTH: Internal error: ", sv_mortalcopy(ERRSV));
    SV *database = newLiteObject(handle);
    if (!database)
        return "validateVELDataLTH: memory error";
    const std::array arguments{sv_2mortal(newSVpvs("VEL::Validate")), sv_2mortal(database)};
    const PerlResult result = callPerl(aTHX_ frame, {"new", nullptr}, arguments, G_SCALAR);
    if (result.count != 1)
        return "validateVELDataLTH: Unexpected return value from call_argv";
    if (result.error)
        return recordText(aTHX_ handle, frame,
                          "validateVELDataLTH: Internal error creating validator: ", result.error);
    if (!SvOK(result.value))
        return "validateVELDataLTH: Error creating new validator object";
    validation->validator = newSVsv(result.value);
    return nullptr;
}

/// Collected findings, each ended by a newline.
class Findings
{
public:
    void add(std::string_view text)
    {
        text_ += text;
        if (!text.empty() && text.back() != '\n')
            text_ += '\n';
    }
    [[nodiscard]] const std::string &text() const { return text_; }

private:
    std::string text_;
};

/// One object on the way from the validated node down.
struct WalkLevel
{
    std::size_t pathLength;            ///< of the path up to and with this object
    std::vector<std::string> children; ///< components, in stored order
    std::size_t next = 0;              ///< the child to be looked at next
    bool pending = false;              ///< a child so far is not done
};

/// Walks the tree by paths and not by nodes: the validator is Perl code with
/// the database in its hands and may change what is being walked. The levels
/// stand in a vector, so that the depth of the data is not that of the stack.
class Driver
{
public:
    Driver(velHandle *handle, std::string path) : handle_(handle), path_(std::move(path)) {}

    const Findings &run()
    {
        enter();
        while (!levels_.empty())
            step();
        return findings_;
    }

private:
    [[nodiscard]] const velNode *node() const { return velFindNode(handle_, path_.c_str()); }

    [[nodiscard]] std::uint32_t flags() const
    {
        const velNode *found = node();
        return found ? velDescribe(handle_, found).flags : doneFlags;
    }

    void mark(std::int32_t level) const
    {
        // A node that is gone has nothing to be marked.
        static_cast<void>(setValid(handle_, path_.c_str(), level));
    }

    /// Validates the object at the path, and puts its children in line unless
    /// all of them are known to be valid.
    void enter()
    {
        if (path_ == "/RULES") {
            mark(1);
            mark(2);
            return;
        }
        if (!(flags() & velFlagValid))
            if (const char *text = callValidationMethod(handle_, "validateObject", {path_.c_str()}))
                findings_.add(text);
        if (flags() & velFlagSubtreeValid)
            return;
        WalkLevel level{path_.size(), childComponents(), 0, false};
        if (level.children.empty())
            mark(2);
        else
            levels_.push_back(std::move(level));
    }

    [[nodiscard]] std::vector<std::string> childComponents() const
    {
        std::vector<std::string> components;
        const velNode *found = node();
        for (const velNode *child = found ? velFirstChild(found) : nullptr; child;
             child = velNextSibling(child))
            components.push_back(component(velDescribe(handle_, child)));
        return components;
    }

    static std::string component(const velNodeInfo &info)
    {
        if (info.kind == velParam)
            return info.name;
        return info.name ? std::string(info.type) + ':' + info.name : info.type;
    }

    /// The next child of the innermost level, or, behind the last, its end.
    void step()
    {
        WalkLevel &level = levels_.back();
        if (level.next == level.children.size())
            return leave();
        path_ = makeChildPath(path_.c_str(), level.children[level.next++].c_str());
        if (!enterChild())
            backToParent();
    }

    /// True when the child has become the innermost level.
    bool enterChild()
    {
        const velNode *found = node();
        if (!found)
            return false;
        const velNodeInfo info = velDescribe(handle_, found);
        if (info.kind == velParam || (info.flags & doneFlags) == doneFlags)
            return false;
        const std::size_t depth = levels_.size();
        if (info.kind == velObject || info.kind == velSingleton)
            enter();
        else
            findings_.add("Internal error: unknown object type\n");
        return levels_.size() > depth;
    }

    void leave()
    {
        const bool pending = levels_.back().pending;
        levels_.pop_back();
        if (!pending)
            mark(2);
        if (!levels_.empty())
            backToParent();
    }

    void backToParent()
    {
        if ((flags() & doneFlags) != doneFlags)
            levels_.back().pending = true;
        path_.resize(levels_.back().pathLength);
    }

    velHandle *handle_;
    std::string path_;
    std::vector<WalkLevel> levels_;
    Findings findings_;
};

const char *velValidationDriver(velHandle *handle, const std::string &path)
{
    try {
        Driver driver(handle, path);
        const Findings &findings = driver.run();
        return findings.text().empty() ? nullptr : velRecordError(handle, findings.text());
    } catch (const std::bad_alloc &) {
        return "velValidationDriver: memory error";
    }
}

} // namespace

const char *initValidationData(velHandle *handle)
{
    if (velUserData(handle))
        return nullptr;
    auto *validation = new (std::nothrow) ValidationData;
    if (!validation)
        return "initValidationData: memory error";
    velSetUserData(handle, validation, releaseValidationData);
    const char *error = createValidator(handle, validation);
    // Without a validator the next call has to try, and to complain, again.
    if (error)
        velSetUserData(handle, nullptr, nullptr);
    return error;
}

const char *callValidationMethod(velHandle *handle, const char *method,
                                 std::initializer_list<const char *> arguments)
{
    if (const char *error = initValidationData(handle))
        return error;
    pTHX = velInterpreter();
    const PerlLocale locale;
    PerlFrame frame(aTHX);
    std::vector<SV *> values{static_cast<ValidationData *>(velUserData(handle))->validator};
    for (const char *argument : arguments)
        values.push_back(sv_2mortal(newSVpv(argument, 0)));
    const PerlResult result = callPerl(aTHX_ frame, {method, nullptr}, values, G_SCALAR);
    if (result.count != 1)
        return "Unexpected return value (not 1) from perl_call_method in callValidationMethod";
    if (result.error)
        return recordText(aTHX_ handle, frame,
                          std::string("validateVELDataLTH: Internal error calling ") + method +
                              ": ",
                          result.error);
    if (!SvOK(result.value))
        return nullptr;
    const char *text = recordText(aTHX_ handle, frame, "", result.value);
    return *text ? text : nullptr;
}

const char *validateVELData(velHandle *handle, const char *path)
{
    if (const char *error = initValidationData(handle))
        return error;
    const bool root = std::string_view(path) == "/";
    const std::string fullPath = root ? "/" : velFullPath(handle, path);
    if (!root && !velFindNode(handle, fullPath.c_str()))
        return "validateVELData: path does not exist\n";
    return velValidationDriver(handle, fullPath);
}

const char *validateVELDataH()
{
    velHandle *handle = findLiteHandle();
    if (!handle)
        return "validateVELDataH: error finding Lite API handle";
    return validateVELData(handle, "/");
}

const char *validateVELObjectH(const char *path)
{
    if (!path)
        return "validateObject : Invalid arguments\n";
    velHandle *handle = findLiteHandle();
    if (!handle)
        return "validateVELObjectH: error finding Lite API handle";
    return validateVELData(handle, path);
}

const char *validateParameter(const char *path)
{
    if (!path)
        return "validateParameter : Invalid arguments";
    velHandle *handle = findLiteHandle();
    if (!handle)
        return "validateVELObjectH: error finding Lite API handle";
    return callValidationMethod(handle, "validateParam", {path});
}

const char *setUnitsChecking(int on)
{
    velHandle *handle = findLiteHandle();
    if (!handle)
        return "validateVELObjectH: error finding Lite API handle";
    return callValidationMethod(handle, "setUnitsChecking", {std::to_string(on).c_str()});
}

const char *setBoundsChecking(int on)
{
    velHandle *handle = findLiteHandle();
    if (!handle)
        return "validateVELObjectH: error finding Lite API handle";
    return callValidationMethod(handle, "setBoundsChecking", {std::to_string(on).c_str()});
}

} // namespace velparser
