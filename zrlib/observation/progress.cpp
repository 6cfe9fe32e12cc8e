#include "zrlib/observation/progress.h"

#include "zrlib/frame/module.h"
#include "zrlib/observation/global_subject.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/observation/observed_object_event.h"
#include "zrlib/observation/progress_texts.h"

#include <atomic>

namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;

constinit std::atomic<char> g_bProgressEnabled{0};
constinit std::atomic<char> g_bProgressStarted{0};
constinit std::atomic<int> g_nProgressMin{0};
constinit std::atomic<int> g_nProgressMax{100};
constinit std::atomic<int> g_nProgressPercent{0};
constinit std::atomic<char> g_bProgressTextVisible{1};

bool IsEnabled() { return g_bProgressEnabled.load(kRelaxed) != 0; }

bool IsRunning() { return IsEnabled() && g_bProgressStarted.load(kRelaxed) != 0; }

} // namespace

void ZRProgressEnable(char enable) { g_bProgressEnabled.store(enable, kRelaxed); }

// Each event is sent when its scope ends. It gets its source last, so that it is not sent half filled if memory runs
// out.

void ZRProgressStart(const HCString& title)
{
    const ZRModuleUse module;
    if (module.Stands() && IsEnabled()) {
        ZRObservedObjectEvent event(ZR_EVENT_PROGRESS_START, nullptr);
        event.SetText(title);
        g_csProgressTitle = title;
        g_bProgressStarted.store(1, kRelaxed);
        event.SetSource(&g_GlobalSubject);
    }
}

void ZRProgressSetRange(int min, int max)
{
    const ZRModuleUse module;
    if (module.Stands() && IsRunning()) {
        ZRObservedObjectEvent event(ZR_EVENT_PROGRESS_RANGE, nullptr);
        event.SetMin(min);
        event.SetMax(max);
        g_nProgressMin.store(min, kRelaxed);
        g_nProgressMax.store(max, kRelaxed);
        event.SetSource(&g_GlobalSubject);
    }
}

void ZRProgressSetTextVisible(char visible)
{
    const ZRModuleUse module;
    if (module.Stands() && IsRunning()) {
        ZRObservedObjectEvent event(ZR_EVENT_PROGRESS_TEXT_VISIBLE, nullptr);
        event.SetState(visible);
        g_bProgressTextVisible.store(visible, kRelaxed);
        event.SetSource(&g_GlobalSubject);
    }
}

void ZRProgressUpdate(int percent, HCString* text)
{
    const ZRModuleUse module;
    if (module.Stands() && IsRunning()) {
        ZRObservedObjectEvent event(ZR_EVENT_PROGRESS_UPDATE, nullptr);
        event.SetCount(percent);
        g_nProgressPercent.store(percent, kRelaxed);
        if (text != nullptr) {
            event.SetText(*text);
            g_csProgressUpdateText = *text;
        }
        event.SetSource(&g_GlobalSubject);
    }
}

void ZRProgressEnd()
{
    const ZRModuleUse module;
    if (module.Stands() && IsRunning()) {
        constexpr int kAll = 100;
        ZRObservedObjectEvent event(ZR_EVENT_PROGRESS_END, nullptr);
        event.SetCount(kAll);
        g_bProgressStarted.store(0, kRelaxed);
        event.SetSource(&g_GlobalSubject);
    }
}

char ZRProgressEnabled() { return g_bProgressEnabled.load(kRelaxed); }

int ZRProgressGetRangeMin() { return g_nProgressMin.load(kRelaxed); }

int ZRProgressGetRangeMax() { return g_nProgressMax.load(kRelaxed); }

int ZRProgressGetPercent() { return g_nProgressPercent.load(kRelaxed); }

char ZRProgressGetTextVisible() { return g_bProgressTextVisible.load(kRelaxed); }

HCString ZRProgressGetTitle()
{
    const ZRModuleUse module;
    return module.Stands() ? g_csProgressTitle : HCString();
}

HCString ZRProgressGetUpdateText()
{
    const ZRModuleUse module;
    return module.Stands() ? g_csProgressUpdateText : HCString();
}
