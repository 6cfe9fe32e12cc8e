/// ZRListener: an observer made of a function.
#pragma once

#include "zrlib/observation/attachment.h"
#include "zrlib/observation/observed_object_event.h"

#include <functional>
#include <memory>
#include <utility>

/// Calls a function for each event of a subject until it is destroyed.
///
///     const ZRListener errors(*ZRGetMessageHandler(), [&](const ZRObservedObjectEvent& event) {
///         count += event.GetMsg().IsError();
///     });
///
/// The function runs as ZRObjectObserver::OnEvent does: on the sender's thread, one event at a time, under the same
/// rules. It may call Detach of the listener, but must not destroy it. The subject is not owned and must outlive the
/// listener. When the destructor returns, the function is not called any more. A listener may be moved, which does not
/// disturb it.
///
/// Threads: one object is used by one thread at a time.
class [[nodiscard]] ZRListener {
public:
    using Function = std::function<void(const ZRObservedObjectEvent&)>;

    /// Attached to nothing.
    ZRListener() noexcept = default;

    /// Throws std::bad_alloc. An empty function is a no-op.
    [[nodiscard]] ZRListener(ZRObservedObject& subject, Function function)
        : m_observer(std::make_unique<Observer>(std::move(function)))
        , m_attachment(subject, *m_observer)
    {
    }

    /// Listens to the subject of the process, which sends progress (ZRAttachObserver).
    [[nodiscard]] explicit ZRListener(Function function)
        : m_observer(std::make_unique<Observer>(std::move(function)))
        , m_attachment(*m_observer)
    {
    }

    ZRListener(ZRListener&&) noexcept = default;
    ZRListener& operator=(ZRListener&& other) noexcept
    {
        if (this != &other) {
            m_attachment = std::move(other.m_attachment); // first, so that the observer is not called any more
            m_observer = std::move(other.m_observer);
        }
        return *this;
    }
    ~ZRListener() = default;

    /// Detaches before the scope ends.
    void Detach() { m_attachment.Detach(); }

private:
    class Observer : public ZRObjectObserver {
    public:
        explicit Observer(Function function)
            : m_function(std::move(function))
        {
        }

        void OnEvent(ZRObservedObjectEvent* event) override
        {
            if (m_function) {
                m_function(*event);
            }
        }

    private:
        Function m_function;
    };

    std::unique_ptr<Observer> m_observer;
    ZRAttachment m_attachment; // last, so that it is destroyed first
};
