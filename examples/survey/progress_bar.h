/// A progress bar on the terminal.
#pragma once

#include <chrono>
#include <zrlib/zrlib.h>

/// Draws the progress of the process, at most ten times a second, and keeps out of the way of messages on the console.
/// For as long as it lives it observes both, so it sends no message itself.
class ProgressBar : public ZRObjectObserver {
public:
    ProgressBar();
    ~ProgressBar() override;
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void OnEvent(ZRObservedObjectEvent* event) override;

private:
    void Draw(int percent);
    void Remove();
    void RemoveBehind(const ZRMsg& message);

    std::chrono::steady_clock::time_point m_drawn; // when
    bool m_isShown = false;
};
