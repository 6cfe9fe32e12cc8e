// Stops in a debugger where there is something of each kind to look at.

#include <hcbase/hcbase.h>
#include <zrlib/zrlib.h>

static void Stop(const ZRObservedObjectEvent& event) { static_cast<void>(event); }

int main()
{
    ZRArray<int> array;
    ZRStack<HCString> stack;
    ZRList<double> list;
    ZRCodeMap<HCString> map;
    for (const int number : {1, 2, 3}) {
        array.Append(number);
        stack.Push(HCString(std::to_string(number)));
        list.Append(number / 2.0);
        map.Insert(10 * number, HCString(std::to_string(number)));
    }
    ZRProfilerState state("Map::Load");
    static_cast<void>(ZRProfiler(&state));
    ZRRegistration roads(0x3000, "Roads");
    roads.Add(static_cast<int>(0xA04F3001), "Bridge");
    ZRSetMessagesEnabled(1);
    const ZRListener listener(*ZRGetMessageHandler(), Stop);
    ZR_WARN_AT(3, "a message of %s characters, which is more than fit inside the object", "many");
}
