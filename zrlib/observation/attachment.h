/// ZRAttachment: attaches an observer for the length of a scope.
#pragma once

#include "zrlib/observation/object_observer.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/observation/observer_functions.h"

#include <utility>

/// Attaches an observer to a subject when constructed and detaches it when destroyed.
///
///     Window window;
///     const ZRAttachment attachment(*ZRGetMessageHandler(), window);
///
/// Owns neither of the two; both must outlive the attachment. An observer that was attached before is not attached a
/// second time, and is detached all the same. As with ZRObservedObject::DetachObserver, the observer is not called any
/// more when the destructor returns.
///
/// Threads: one object is used by one thread at a time.
class [[nodiscard]] ZRAttachment {
public:
    /// Attached to nothing.
    ZRAttachment() noexcept = default;

    /// Throws std::bad_alloc.
    [[nodiscard]] ZRAttachment(ZRObservedObject& subject, ZRObjectObserver& observer)
        : m_subject(&subject)
        , m_observer(&observer)
    {
        subject.AttachObserver(&observer, 1);
    }

    /// Attaches to the subject of the process, which sends progress (ZRAttachObserver).
    [[nodiscard]] explicit ZRAttachment(ZRObjectObserver& observer)
        : m_observer(&observer)
    {
        ZRAttachObserver(&observer);
    }

    ZRAttachment(ZRAttachment&& other) noexcept
        : m_subject(std::exchange(other.m_subject, nullptr))
        , m_observer(std::exchange(other.m_observer, nullptr))
    {
    }
    ZRAttachment& operator=(ZRAttachment&& other) noexcept
    {
        ZRAttachment moved(std::move(other));
        std::swap(m_subject, moved.m_subject);
        std::swap(m_observer, moved.m_observer);
        return *this;
    }
    ~ZRAttachment() { Detach(); }

    /// Detaches before the scope ends.
    void Detach()
    {
        ZRObjectObserver* const observer = std::exchange(m_observer, nullptr);
        ZRObservedObject* const subject = std::exchange(m_subject, nullptr);
        if (subject != nullptr) {
            subject->DetachObserver(observer, 1);
        } else if (observer != nullptr) {
            ZRDetachObserver(observer);
        }
    }

    /// Whether there is something to detach.
    [[nodiscard]] bool IsAttached() const noexcept { return m_observer != nullptr; }

private:
    ZRObservedObject* m_subject = nullptr; // not owned; null for that of the process
    ZRObjectObserver* m_observer = nullptr; // not owned; null when there is nothing to detach
};
