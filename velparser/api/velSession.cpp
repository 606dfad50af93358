// Who owns the record of a session, and the default session.
#include "velparser/api/velSession.h"

#include "velparser/api/velInstance_p.h"

namespace velparser {

/// Never destroyed: it may be called until the process has ended.
struct DefaultSession
{
    union {
        Session session;
    };

    constexpr DefaultSession() : session(nullptr) {}
    ~DefaultSession() {}

    void make()
    {
        if (session.instance_ == nullptr) {
            session.instance_ = new (std::nothrow) velInstance{};
        }
    }
};

namespace {

constinit DefaultSession theSession;

} // namespace

Session::Session(const SessionOptions &options)
    : instance_(new velInstance{.libraries = options.libraries})
{
}

Session::Session(Session &&other) noexcept : instance_(std::exchange(other.instance_, nullptr)) {}

Session &Session::operator=(Session &&other) noexcept
{
    if (this != &other) {
        const Session before(std::move(*this));
        instance_ = std::exchange(other.instance_, nullptr);
    }
    return *this;
}

Session::~Session()
{
    if (instance_ == nullptr) {
        return;
    }
    freeInstance(instance_);
    delete instance_;
}

Session &defaultSession()
{
    return theSession.session;
}

velInstance *defaultInstance()
{
    return theSession.session.instance();
}

void makeDefaultInstance()
{
    theSession.make();
}

} // namespace velparser
