// Any sequence of operations on an object registry, beside a model of it, and on subjects and their observers, which
// attach and detach each other while they handle events.

#include "tests/fuzz/fuzz.h"
#include "tests/registry/registry_model.h"
#include "zrlib/zrlib.h"

#include <array>
#include <memory>
#include <vector>

namespace {

using test::Require;

void ChangeRegistry(FuzzedDataProvider& data)
{
    const auto random = [&data](unsigned int limit) { return data.ConsumeIntegralInRange(0U, limit - 1); };
    test::RegistryBesideModel both(random, data.ConsumeBool());
    for (int steps = 0; steps < 100 && data.remaining_bytes() > 0; ++steps) {
        const char* const difference = both.Step();
        Require(difference == nullptr, difference);
    }
    Require(both.CompareAll() == nullptr, "the same contents");
}

constexpr std::size_t kSubjects = 3;
constexpr std::size_t kObservers = 5;

/// Takes from the input what it does with an event.
struct Network {
    class Observer : public ZRObjectObserver {
    public:
        explicit Observer(Network& network)
            : m_network(network)
        {
        }
        void OnEvent(ZRObservedObjectEvent* /*event*/) override
        {
            ++m_network.handled;
            if (m_network.depth < 5 && m_network.data.remaining_bytes() > 0) {
                m_network.Step();
            }
        }

    private:
        Network& m_network;
    };

    explicit Network(FuzzedDataProvider& input)
        : data(input)
    {
        for (auto& observer : observers) {
            observer = std::make_unique<Observer>(*this);
        }
    }

    void Step()
    {
        ++depth;
        const std::size_t subject = data.ConsumeIntegralInRange<std::size_t>(0, kSubjects - 1);
        const std::size_t observer = data.ConsumeIntegralInRange<std::size_t>(0, kObservers - 1);
        ZRObjectObserver* const one = observers[observer].get();
        bool& isAttached = attached[subject][observer];
        switch (data.ConsumeIntegralInRange(0, 4)) {
        case 0:
        case 1:
            Require(subjects[subject].AttachObserver(one, 1) == (isAttached ? 1 : 0), "AttachObserver");
            isAttached = true;
            break;
        case 2:
            subjects[subject].DetachObserver(one, 0);
            isAttached = false;
            break;
        case 3: {
            ZRObservedObjectEvent event(1);
            const int before = handled;
            const int count = event.Broadcast(&subjects[subject], 0);
            Require(count >= 0 && handled - before >= count, "Broadcast");
            break;
        }
        default:
            const ZRObservedObjectEvent event(2, &subjects[subject]);
        }
        Require((subjects[subject].IsAttached(one) != 0) == isAttached || depth > 1, "IsAttached");
        --depth;
    }

    FuzzedDataProvider& data;
    std::array<ZRObservedObject, kSubjects> subjects;
    std::array<std::unique_ptr<Observer>, kObservers> observers;
    std::array<std::array<bool, kObservers>, kSubjects> attached{};
    int handled = 0;
    int depth = 0;
};

void Observe(FuzzedDataProvider& data)
{
    Network network(data);
    for (int steps = 0; steps < 200 && data.remaining_bytes() > 0; ++steps) {
        network.Step();
    }
    for (std::size_t subject = 0; subject < kSubjects; ++subject) {
        int count = 0;
        for (std::size_t observer = 0; observer < kObservers; ++observer) {
            count += network.attached[subject][observer] ? 1 : 0;
            Require((network.subjects[subject].IsAttached(network.observers[observer].get()) != 0)
                    == network.attached[subject][observer],
                "who is attached in the end");
        }
        Require(network.subjects[subject].GetObserverCount() == count, "GetObserverCount");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    if (data.ConsumeBool()) {
        ChangeRegistry(data);
    } else {
        Observe(data);
    }
    return 0;
}
