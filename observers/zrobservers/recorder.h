/// ZRRecorder: records what was sent, for tests.
#pragma once

#include "zrlib/zrlib.h"
#include "zrobservers/export.h"

#include <functional>
#include <memory>
#include <vector>

/// Keeps copies of all messages, of the events of progress and of timers, and of what else its subjects send while it
/// exists.
///
///     ZRRecorder recorder;
///     LoadMap("no such file");
///     ASSERT_EQ(recorder.GetMessages(ZR_MSG_ERROR).size(), 1U);
///     EXPECT_EQ(recorder.GetMessages(ZR_MSG_ERROR)[0].GetText(), "no such file does not exist");
///
/// Messages are on while it exists (ZRSetMessagesEnabled), as otherwise there would be none. Timers and progress are
/// recorded while they are on. A child of `fork` starts with nothing recorded.
class ZR_OBSERVERS_API ZRRecorder {
public:
    using Predicate = std::function<bool(const ZRObservedObjectEvent&)>;

    /// Records the process: messages, progress, the threading switch, timers.
    ZRRecorder();

    /// Records one subject only.
    explicit ZRRecorder(ZRObservedObject& subject);
    ~ZRRecorder();
    ZRRecorder(const ZRRecorder&) = delete;
    ZRRecorder& operator=(const ZRRecorder&) = delete;

    /// Copies of all events so far, in the order in which they came.
    [[nodiscard]] std::vector<ZRObservedObjectEvent> GetEvents() const;

    /// The events of one code (ZR_EVENT_...).
    [[nodiscard]] std::vector<ZRObservedObjectEvent> GetEvents(std::int32_t code) const;

    /// The messages whose type is in a sum of types (ZR_MSG_...).
    [[nodiscard]] std::vector<ZRMsg> GetMessages(
        int types = ZR_MSG_OUT | ZR_MSG_WARN | ZR_MSG_ERROR | ZR_MSG_TRACE) const;

    /// Waits until there is an event for which the predicate is true, beginning with the first that was recorded. False
    /// when there is none after `milliseconds`. The predicate must not use the recorder.
    bool WaitFor(const Predicate& predicate, int milliseconds) const;

    /// Discards what was recorded.
    void Clear();

private:
    class Record;

    std::unique_ptr<Record> m_record;
};
