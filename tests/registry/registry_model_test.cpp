// A few million random operations on a registry and on a plain model of it, which are to agree in every result.

#include "tests/messaging/message_fixture.h"
#include "tests/registry/registry_model.h"

#include <random>
#include <string>

namespace {

using Model = test::RegistryModel;

class RegistryModel : public test::Messages {
protected:
    unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(m_random() % limit); }

    /// Any code at all, or one of those that matter.
    int AnyCode()
    {
        const unsigned int number = m_isDense ? Below(4) * 0x1000 + Below(12) : Below(0x10000);
        switch (Below(16)) {
        case 0:
            return static_cast<int>(m_random());
        case 1:
            return static_cast<int>(number);
        case 2:
            return static_cast<int>(number & 0xF000);
        case 3:
            return static_cast<int>(0x1234 + Below(2) * 0xA04F0000);
        default:
            return static_cast<int>(0xA04F0000 + number);
        }
    }

    std::string AnyClassID()
    {
        std::string id = "0000000a-0000-0000-0000-000000000000";
        for (unsigned int digits = m_isDense ? 1 : 4; digits > 0; --digits) {
            id[36 - digits] = "0123456789abcdefABCDEF"[Below(22)];
        }
        switch (Below(16)) {
        case 0:
            id[Below(36)] = "0-gG \xC4"[Below(6)];
            break;
        case 1:
            id += Below(2) != 0 ? "tail" : "TAIL";
            break;
        case 2:
            id.resize(Below(37));
            break;
        case 3:
            id[7] = 'A';
            break;
        default:
            break;
        }
        return id;
    }

    void Change()
    {
        const int code = AnyCode();
        const std::string name(Below(60), static_cast<char>('a' + Below(26)));
        const std::string classID = AnyClassID();
        int expected = 0;
        char result = 0;
        switch (Below(12)) {
        case 0:
        case 1: {
            const int library = Below(4) != 0 ? code & 0xF000 : code;
            expected = m_model.AddLibrary(library, name);
            result = m_registry.RegisterLibrary(library, name.c_str());
            break;
        }
        case 2: {
            const int library = Below(4) != 0 ? code & 0xF000 : code;
            expected = m_model.RemoveLibrary(library);
            result = m_registry.UnregisterLibrary(library);
            break;
        }
        case 3:
        case 4:
        case 5:
            expected = m_model.Add(code, name);
            result = m_registry.RegisterObject(code, name.c_str());
            break;
        case 6:
        case 7:
        case 8:
            expected = m_model.Add(code, name, classID);
            result = m_registry.RegisterObject(code, name.c_str(), classID.c_str());
            break;
        default:
            expected = m_model.Remove(code);
            result = m_registry.UnregisterObject(code);
        }
        HCError error;
        ASSERT_EQ(HFErrorGet(error) != 0 ? error.code : 0, expected);
        ASSERT_EQ(result, expected == 0 ? 1 : 0);
        HFErrorClear();
    }

    void LookUp()
    {
        const int code = AnyCode();
        const Model::Object* const object = m_model.Find(code);
        ASSERT_EQ(m_registry.ObjectIsKnown(code), static_cast<char>(m_model.objects.count(code)));
        const ZRObjectEntry* const entry = m_registry.GetObjectEntry(code, 0);
        ASSERT_EQ(entry != nullptr, object != nullptr);
        const int mirror = static_cast<int>(m_random());
        ASSERT_EQ(m_registry.SetObjectMirror(code, mirror), object != nullptr ? 1 : 0);
        if (object != nullptr) {
            m_model.objects[code].mirror = mirror;
            ASSERT_EQ(m_registry.GetObjectName(code, nullptr), object->name);
            ASSERT_EQ(entry->GetClassID(), object->hasClassID ? object->classID.c_str() : ZRClassID::Null);
        }
        HFErrorClear();
    }

    void CompareAll()
    {
        ASSERT_EQ(m_registry.GetLibraryCount(), static_cast<int>(m_model.libraries.size()));
        ASSERT_EQ(m_registry.GetObjectCount(), static_cast<int>(m_model.objects.size()));
        int index = 0;
        for (const auto& [code, object] : m_model.objects) {
            const ZRObjectEntry* const entry = m_registry.GetObjectEntryAt(index++);
            ASSERT_EQ(entry->GetID(), code);
            ASSERT_EQ(entry->GetName(), object.name.c_str());
            ASSERT_EQ(entry->HasClassID() != 0, object.hasClassID);
            ASSERT_EQ(entry->GetMirrorID(), object.mirror);
        }
    }

    void Run(int steps)
    {
        for (int step = 0; step < steps && !HasFatalFailure(); ++step) {
            Below(3) != 0 ? Change() : LookUp();
            if (step % 1000 == 0) {
                CompareAll();
            }
            if (step % 5000 == 0) {
                m_registry.Release();
                m_model = {};
                m_isDense = !m_isDense;
            }
        }
    }

    std::minstd_rand m_random{12345};
    bool m_isDense = false; // few codes, so that they meet often; otherwise all of them
    Model m_model;
    ZRObjectRegistry m_registry;
};

TEST_F(RegistryModel, AgreesWithTheRegistry) { Run(3'000'000); }

} // namespace
