// Any sequence of operations on an object registry, beside a model of it, and on subjects and their observers, which
// attach and detach each other while they handle events.

#include "hcbase/hcbase.h"
#include "tests/fuzz/fuzz.h"
#include "tests/registry/registry_model.h"
#include "zrlib/zrlib.h"

#include <array>
#include <memory>
#include <vector>

namespace {

using test::Require;
using test::TextFrom;

int AnyCode(FuzzedDataProvider& data)
{
    const std::uint32_t small = data.ConsumeIntegral<std::uint16_t>();
    switch (data.ConsumeIntegralInRange(0, 4)) {
    case 0:
        return static_cast<int>(data.ConsumeIntegral<std::uint32_t>());
    case 1:
        return static_cast<int>(small & 0xF000);
    case 2:
        return 0x1234;
    default:
        return static_cast<int>(0xA04F0000U | (small & 0xF00FU));
    }
}

void ChangeRegistry(FuzzedDataProvider& data)
{
    ZRObjectRegistry registry;
    test::RegistryModel model;
    for (int steps = 0; steps < 40 && data.remaining_bytes() > 0; ++steps) {
        const int code = AnyCode(data);
        const std::string name = TextFrom(data, 50);
        std::string classID = static_cast<const char*>(ZRClassID::MakeExternalID(AnyCode(data)));
        if (data.ConsumeIntegralInRange(0, 7) == 0) {
            classID = TextFrom(data, 40);
        }
        int error = 0;
        char result = 0;
        switch (data.ConsumeIntegralInRange(0, 4)) {
        case 0:
            error = model.AddLibrary(code, name);
            result = registry.RegisterLibrary(code, name.c_str());
            break;
        case 1:
            error = model.RemoveLibrary(code);
            result = registry.UnregisterLibrary(code);
            break;
        case 2:
            error = model.Add(code, name);
            result = registry.RegisterObject(code, name.c_str());
            break;
        case 3:
            error = model.Add(code, name, classID);
            result = registry.RegisterObject(code, name.c_str(), classID.c_str());
            break;
        default:
            error = model.Remove(code);
            result = registry.UnregisterObject(code);
        }
        HCError reported;
        Require((HFErrorGet(reported) != 0 ? reported.code : 0) == error, "the error of the registry");
        Require(result == (error == 0 ? 1 : 0), "the result of the registry");
        HFErrorClear();
    }
    const ZRObjectRegistry copy(registry);
    registry.Release();
    Require(copy.GetObjectCount() == static_cast<int>(model.objects.size()), "the number of objects");
    Require(copy.GetLibraryCount() == static_cast<int>(model.libraries.size()), "the number of libraries");
    int index = 0;
    for (const auto& [code, object] : model.objects) {
        Require(
            copy.GetObjectIDAt(index) == code && copy.GetObjectNameAt(index) == object.name, "the order of objects");
        ++index;
    }
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
