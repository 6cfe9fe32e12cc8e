// Any sequence of operations on an object registry, beside a model of it, and on subjects and their observers, which
// attach and detach each other while they handle events.

#include "tests/fuzz/fuzz.h"
#include "tests/registry/registry_model.h"
#include "zrlib/zrlib.h"

#include <algorithm>
#include <array>

namespace {

using test::Require;

void ChangeRegistry(FuzzedDataProvider& data)
{
    const auto random = [&data](unsigned int limit) { return data.ConsumeIntegralInRange(0U, limit - 1); };
    test::RegistryBesideModel both(random, data.ConsumeBool());
    while (data.remaining_bytes() > 0) {
        Require(both.Step(), "the registry agrees with its model");
    }
}

/// Takes from the input what it does with an event.
struct Network {
    static constexpr std::size_t kSubjects = 3;
    static constexpr std::size_t kObservers = 5;

    struct Observer : ZRObjectObserver {
        void OnEvent(ZRObservedObjectEvent* /*event*/) override
        {
            ++network->handled;
            if (network->data.remaining_bytes() > 0) {
                network->Step();
            }
        }
        Network* network = nullptr; // not owned
    };

    explicit Network(FuzzedDataProvider& input)
        : data(input)
    {
        for (Observer& observer : observers) {
            observer.network = this;
        }
    }

    void Step()
    {
        const auto place = data.ConsumeIntegralInRange<std::size_t>(0, kSubjects - 1);
        const auto which = data.ConsumeIntegralInRange<std::size_t>(0, kObservers - 1);
        ZRObservedObject& subject = subjects[place];
        bool& isAttached = attached[place][which];
        switch (data.ConsumeIntegralInRange(0, 2)) {
        case 0:
            Require(subject.AttachObserver(&observers[which], 1) == (isAttached ? 1 : 0), "AttachObserver");
            isAttached = true;
            break;
        case 1:
            subject.DetachObserver(&observers[which], 0);
            isAttached = false;
            break;
        default: {
            const int before = handled;
            const int count = ZRObservedObjectEvent(1).Broadcast(&subject, 0);
            Require(count >= 0 && handled - before >= count, "Broadcast");
        }
        }
        Require((subject.IsAttached(&observers[which]) != 0) == isAttached, "IsAttached");
        const auto count = std::count(attached[place].begin(), attached[place].end(), true);
        Require(subject.GetObserverCount() == count, "GetObserverCount");
    }

    FuzzedDataProvider& data;
    std::array<ZRObservedObject, kSubjects> subjects;
    std::array<Observer, kObservers> observers;
    std::array<std::array<bool, kObservers>, kSubjects> attached{};
    int handled = 0;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    if (data.ConsumeBool()) {
        ChangeRegistry(data);
    } else {
        Network network(data);
        while (data.remaining_bytes() > 0) {
            network.Step();
        }
    }
    return 0;
}
