// Reads and compares the versions in a thread of the pool.
#include "veleditor/src/VersionCounts.h"

#include "veltext/commandText.h"
#include "veltext/error.h"
#include "veltext/textChanges.h"

#include <QMetaObject>
#include <QThreadPool>

#include <mutex>
#include <new>
#include <utility>

namespace velEditor {

namespace {

using Text = std::optional<veltext::CommandText>;

Text parsed(std::string bytes)
{
    try {
        Text text(std::in_place, std::move(bytes));
        veltext::requireComparable(*text, "text");
        return text;
    } catch (const veltext::Error &) {
        return {}; // it is not VEL, or too deep
    }
}

Text parsed(const veltext::History &history, const veltext::Version &version)
{
    try {
        return parsed(history.read(version));
    } catch (const veltext::Error &) {
        return {}; // it is damaged
    }
}

} // namespace

/// What both threads use.
struct VersionCounts::Shared
{
    std::mutex mutex;
    VersionCounts *receiver; ///< null when nobody waits any more

    /// False when nobody waits any more.
    bool report(int version, std::optional<std::size_t> changes)
    {
        const std::lock_guard lock(mutex);
        if (receiver == nullptr) {
            return false;
        }
        return QMetaObject::invokeMethod(
            receiver, [this, version, changes] { emit receiver->counted(version, changes); },
            Qt::QueuedConnection);
    }

    void count(const veltext::History &history, const std::vector<veltext::Version> &versions,
               std::optional<std::string> current)
    {
        Text after = current ? parsed(std::move(*current)) : Text();
        int number = 0;
        for (const veltext::Version &version : versions) {
            Text before = parsed(history, version);
            std::optional<std::size_t> changes;
            if (before && after) {
                changes = veltext::diff(*before, *after).size();
            }
            if (!report(number++, changes)) {
                return;
            }
            after = std::move(before);
        }
    }
};

VersionCounts::VersionCounts(veltext::History history, std::vector<veltext::Version> versions,
                             std::optional<std::string> current, QObject *parent)
    : QObject(parent), shared_(std::make_shared<Shared>())
{
    shared_->receiver = this;
    QThreadPool::globalInstance()->start([shared = shared_, history = std::move(history),
                                          versions = std::move(versions),
                                          current = std::move(current)]() mutable {
        try {
            shared->count(history, versions, std::move(current));
        } catch (const std::bad_alloc &) {
            return; // the rest is not counted
        }
    });
}

VersionCounts::~VersionCounts()
{
    const std::lock_guard lock(shared_->mutex);
    shared_->receiver = nullptr;
}

} // namespace velEditor
