/// A table of where the time went.
#pragma once

#include <map>
#include <string>
#include <zrlib/zrlib.h>

/// Collects the states of all timers of the process for as long as it lives, and turns them on for that time.
class Profile : public ZRObjectObserver {
public:
    Profile();
    ~Profile() override;
    Profile(const Profile&) = delete;
    Profile& operator=(const Profile&) = delete;

    void OnEvent(ZRObservedObjectEvent* event) override;

    /// Sends the table, the place with the most time of its own first. To be called when no timer is running.
    void Report() const;

private:
    std::map<std::string, ZRProfilerState> m_states; // the newest of each place
    ZRAttachment m_attachment;
};
