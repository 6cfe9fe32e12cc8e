#include "zrlib/observation/progress.h"

#include "zrlib/frame/module_lease.h"
#include "zrlib/frame/relaxed.h"
#include "zrlib/frame/short_lock_guard.h"
#include "zrlib/observation/global_subject.h"
#include "zrlib/observation/names.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/observation/observed_object_event.h"
#include "zrlib/observation/progress_texts.h"

#include <atomic>

using zr::kRelaxed;

namespace {

constinit std::atomic<char> g_bProgressEnabled{0};
constinit std::atomic<char> g_bProgressStarted{0};
constinit std::atomic<int> g_nProgressMin{0};
constinit std::atomic<int> g_nProgressMax{100};
constinit std::atomic<int> g_nProgressPercent{0};
constinit std::atomic<char> g_bProgressTextVisible{1};

bool IsEnabled() { return g_bProgressEnabled.load(kRelaxed) != 0; }

bool IsRunning() { return IsEnabled() && g_bProgressStarted.load(kRelaxed) != 0; }

/// Prepares an event and changes the state with it, one command at a time, and sends it outside the lock. A no-op
/// unless `isAllowed()`. The source is set last, so that no half-filled event is sent if memory runs out.
template <typename Change> void Command(std::int32_t code, bool (*isAllowed)(), Change change)
{
    const zr::ModuleLease lease;
    if (!lease.IsAlive() || !isAllowed()) {
        return;
    }
    ZRObservedObjectEvent event(code, nullptr);
    {
        const zr::ShortLockGuard guard(zr::g_dataLock);
        if (!isAllowed()) {
            return;
        }
        change(event);
    }
    event.SetSource(&g_GlobalSubject);
}

} // namespace

void ZRProgressEnable(char enable) { g_bProgressEnabled.store(enable, kRelaxed); }

void ZRProgressStart(const HCString& title)
{
    Command(ZR_EVENT_PROGRESS_START, IsEnabled, [&title](ZRObservedObjectEvent& event) {
        event.SetText(title);
        g_csProgressTitle = title;
        g_bProgressStarted.store(1, kRelaxed);
    });
}

void ZRProgressSetRange(int min, int max)
{
    Command(ZR_EVENT_PROGRESS_RANGE, IsRunning, [=](ZRObservedObjectEvent& event) {
        event.SetMin(min);
        event.SetMax(max);
        g_nProgressMin.store(min, kRelaxed);
        g_nProgressMax.store(max, kRelaxed);
    });
}

void ZRProgressSetTextVisible(char visible)
{
    Command(ZR_EVENT_PROGRESS_TEXT_VISIBLE, IsRunning, [=](ZRObservedObjectEvent& event) {
        event.SetState(visible);
        g_bProgressTextVisible.store(visible, kRelaxed);
    });
}

void ZRProgressUpdate(int percent, HCString* text)
{
    Command(ZR_EVENT_PROGRESS_UPDATE, IsRunning, [=](ZRObservedObjectEvent& event) {
        event.SetCount(percent);
        g_nProgressPercent.store(percent, kRelaxed);
        if (text != nullptr) {
            event.SetText(*text);
            g_csProgressUpdateText = *text;
        }
    });
}

void ZRProgressEnd()
{
    Command(ZR_EVENT_PROGRESS_END, IsRunning, [](ZRObservedObjectEvent& event) {
        constexpr int kAll = 100;
        event.SetCount(kAll);
        g_bProgressStarted.store(0, kRelaxed);
    });
}

char ZRProgressEnabled() { return g_bProgressEnabled.load(kRelaxed); }

int ZRProgressGetRangeMin() { return g_nProgressMin.load(kRelaxed); }

int ZRProgressGetRangeMax() { return g_nProgressMax.load(kRelaxed); }

int ZRProgressGetPercent() { return g_nProgressPercent.load(kRelaxed); }

char ZRProgressGetTextVisible() { return g_bProgressTextVisible.load(kRelaxed); }

// The texts are in static storage; they are not read once they are destroyed.

HCString ZRProgressGetTitle()
{
    const zr::ModuleLease lease;
    return lease.IsAlive() ? zr::ReadText(g_csProgressTitle) : HCString();
}

HCString ZRProgressGetUpdateText()
{
    const zr::ModuleLease lease;
    return lease.IsAlive() ? zr::ReadText(g_csProgressUpdateText) : HCString();
}
