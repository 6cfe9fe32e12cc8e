#include "benchmarks/report.h"
#include "zrlib/zrlib.h"

#include <absl/container/flat_hash_map.h>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <malloc.h>

namespace {

using report::AddFigure;
using report::AddTarget;
using report::Measure;

constexpr int kObjectsOfLibrary = 4096;
constexpr int kMostObjects = 15 * kObjectsOfLibrary;

/// The codes of `count` objects, library after library.
std::vector<int> Codes(int count)
{
    std::vector<int> codes;
    codes.reserve(static_cast<std::size_t>(count));
    for (int number = 0; number < count; ++number) {
        codes.push_back(ZRObjectEntry::OBJECTBASE + 0x1000 + number);
    }
    return codes;
}

/// As many codes, none of them registered: those that follow the registered ones, or short codes when there are none.
std::vector<int> UnknownCodes(int count)
{
    std::vector<int> codes = Codes(count);
    for (int& code : codes) {
        code = count < kMostObjects ? code + count : (code & ZRObjectEntry::SHORTMASK) ^ 1;
    }
    return codes;
}

std::vector<int> Shuffled(std::vector<int> codes)
{
    std::shuffle(codes.begin(), codes.end(), std::minstd_rand(1));
    return codes;
}

void RegisterLibraries(ZRObjectRegistry& registry)
{
    for (int library = 0x1000; library <= 0xF000; library += 0x1000) {
        registry.RegisterLibrary(library, "library");
    }
}

void RegisterAll(ZRObjectRegistry& registry, const std::vector<int>& codes, const std::vector<HCString>& classIDs)
{
    const HCString name("an object");
    for (std::size_t place = 0; place < codes.size(); ++place) {
        registry.RegisterObject(codes[place], name, classIDs[place]);
    }
}

std::vector<HCString> ClassIDs(const std::vector<int>& codes)
{
    std::vector<HCString> classIDs;
    classIDs.reserve(codes.size());
    for (const int code : codes) {
        classIDs.push_back(ZRClassID::MakeExternalID(code));
    }
    return classIDs;
}

// The containers in which codes are looked up.

class Registry {
public:
    explicit Registry(const std::vector<int>& codes)
    {
        RegisterLibraries(m_registry);
        RegisterAll(m_registry, codes, ClassIDs(codes));
    }
    ZRObjectEntry* Find(int code) const { return m_registry.GetObjectEntry(code, 0); }

private:
    ZRObjectRegistry m_registry;
};

template <typename Map> class Peer {
public:
    explicit Peer(const std::vector<int>& codes)
    {
        for (const int code : codes) {
            m_entries.push_back(std::make_unique<ZRObjectEntry>(code, "an object", 0));
            m_map[code] = m_entries.back().get();
        }
    }
    ZRObjectEntry* Find(int code) const
    {
        const auto found = m_map.find(code);
        return found != m_map.end() ? found->second : nullptr;
    }

private:
    std::vector<std::unique_ptr<ZRObjectEntry>> m_entries;
    Map m_map;
};

using FlatHashMap = Peer<absl::flat_hash_map<int, ZRObjectEntry*>>;
using UnorderedMap = Peer<std::unordered_map<int, ZRObjectEntry*>>;
using Map = Peer<std::map<int, ZRObjectEntry*>>;

/// Looks codes up one after the other; the time is that of one lookup.
template <typename Lookup> void LookUp(benchmark::State& state, std::vector<int> (*codesFor)(int count))
{
    const int count = static_cast<int>(state.range(0));
    const Lookup lookup(Shuffled(Codes(count)));
    const std::vector<int> wanted = Shuffled(codesFor(count));
    std::size_t place = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(lookup.Find(wanted[place]));
        place = place + 1 < wanted.size() ? place + 1 : 0;
    }
}

void Sizes(benchmark::internal::Benchmark* benchmark)
{
    for (const int size : {16, 256, 4096, kMostObjects}) {
        benchmark->Arg(size);
    }
}

const AddTarget lookUps[] = {
#define ZR_LOOKUP_TARGETS(size)                                                                                        \
    AddTarget({"GetObjectEntry, known code of " #size ", to flat_hash_map", Measure::kRatio, "RegistryKnown/" #size,   \
        "FlatHashMapKnown/" #size, 1}),                                                                                \
        AddTarget({"GetObjectEntry, unknown code of " #size ", to flat_hash_map", Measure::kRatio,                     \
            "RegistryUnknown/" #size, "FlatHashMapUnknown/" #size, 1})
    ZR_LOOKUP_TARGETS(16),
    ZR_LOOKUP_TARGETS(256),
    ZR_LOOKUP_TARGETS(4096),
    ZR_LOOKUP_TARGETS(61440),
#undef ZR_LOOKUP_TARGETS
};

void RegistryKnown(benchmark::State& state) { LookUp<Registry>(state, Codes); }
void RegistryUnknown(benchmark::State& state) { LookUp<Registry>(state, UnknownCodes); }
void FlatHashMapKnown(benchmark::State& state) { LookUp<FlatHashMap>(state, Codes); }
void FlatHashMapUnknown(benchmark::State& state) { LookUp<FlatHashMap>(state, UnknownCodes); }
void UnorderedMapKnown(benchmark::State& state) { LookUp<UnorderedMap>(state, Codes); }
void UnorderedMapUnknown(benchmark::State& state) { LookUp<UnorderedMap>(state, UnknownCodes); }
void MapKnown(benchmark::State& state) { LookUp<Map>(state, Codes); }
void MapUnknown(benchmark::State& state) { LookUp<Map>(state, UnknownCodes); }
BENCHMARK(RegistryKnown)->Apply(Sizes);
BENCHMARK(RegistryUnknown)->Apply(Sizes);
BENCHMARK(FlatHashMapKnown)->Apply(Sizes);
BENCHMARK(FlatHashMapUnknown)->Apply(Sizes);
BENCHMARK(UnorderedMapKnown)->Apply(Sizes);
BENCHMARK(UnorderedMapUnknown)->Apply(Sizes);
BENCHMARK(MapKnown)->Apply(Sizes);
BENCHMARK(MapUnknown)->Apply(Sizes);

// Filling in random order. The containers are destroyed outside the measured time.

void RegistryFill(benchmark::State& state)
{
    const std::vector<int> codes = Shuffled(Codes(kMostObjects));
    const std::vector<HCString> classIDs = ClassIDs(codes);
    for (auto _ : state) {
        state.PauseTiming();
        auto registry = std::make_unique<ZRObjectRegistry>();
        RegisterLibraries(*registry);
        state.ResumeTiming();
        RegisterAll(*registry, codes, classIDs);
        state.PauseTiming();
        registry.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(RegistryFill)->Unit(benchmark::kMillisecond);

/// The class ID in lower case: class IDs that differ only in case are equal.
std::string Folded(const HCString& classID)
{
    std::string folded(classID, static_cast<std::size_t>(classID.GetLength()));
    std::transform(folded.begin(), folded.end(), folded.begin(),
        [](char character) { return character >= 'A' && character <= 'Z' ? character + 'a' - 'A' : character; });
    return folded;
}

void MapAndSetFill(benchmark::State& state)
{
    struct Peers {
        std::map<int, ZRObjectEntry> entries;
        std::unordered_set<std::string> classIDs;
    };
    const std::vector<int> codes = Shuffled(Codes(kMostObjects));
    const std::vector<HCString> classIDs = ClassIDs(codes);
    const HCString name("an object");
    for (auto _ : state) {
        state.PauseTiming();
        auto peers = std::make_unique<Peers>();
        state.ResumeTiming();
        for (std::size_t place = 0; place < codes.size(); ++place) {
            if (peers->classIDs.insert(Folded(classIDs[place])).second) {
                peers->entries.try_emplace(codes[place], codes[place], name, classIDs[place], 0);
            }
        }
        state.PauseTiming();
        peers.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(MapAndSetFill)->Unit(benchmark::kMillisecond);
const AddTarget fill({"registering 61,440 objects, to std::map and std::unordered_set", Measure::kRatio, "RegistryFill",
    "MapAndSetFill", 1});

// Memory, including what the allocator adds.

double BytesOfRegistry(int objects)
{
    const std::vector<int> codes = Shuffled(Codes(kMostObjects));
    const std::vector<HCString> classIDs = ClassIDs(codes);
    const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    ZRObjectRegistry registry;
    RegisterLibraries(registry);
    RegisterAll(registry, {codes.begin(), codes.begin() + objects}, classIDs);
    return static_cast<double>(mallinfo2().uordblks + mallinfo2().hblkhd - before);
}

const AddFigure bytesOfObject({"memory of one of 61,440 objects with name and class ID", "B",
    [] { return BytesOfRegistry(kMostObjects) / kMostObjects; }, 400});
const AddFigure bytesOfTen({"memory of a registry of ten objects and 15 libraries, all in all", "B",
    [] { return BytesOfRegistry(10); }, 8192});

} // namespace
