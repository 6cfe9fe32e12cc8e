#include "file_types.h"

#include <zrlib/zrlib.h>

namespace {

constexpr int kLibrary = 0x5000;
constexpr int kFirstCode = ZRObjectEntry::OBJECTBASE | kLibrary;
constexpr int kLastCode = kFirstCode | 0xFFF;

} // namespace

FileTypes::FileTypes() { ZRRegisterLibrary(kLibrary, "survey"); }

FileTypes::~FileTypes()
{
    for (int code = kFirstCode; code <= kLastCode && ZRObjectIsKnown(code) != 0; ++code) {
        ZRUnregisterObject(code);
    }
    ZRUnregisterLibrary(kLibrary);
}

int FileTypes::CodeOf(const std::string& type)
{
    const auto found = m_codes.find(type);
    if (found != m_codes.end()) {
        return found->second;
    }
    const int code = kFirstCode + static_cast<int>(m_codes.size());
    if (code >= kLastCode) {
        if (ZRObjectIsKnown(kLastCode) == 0) {
            ZRRegisterFactoryObject(kLastCode, "(further types)", ZRClassID::MakeExternalID(kLastCode));
        }
        return kLastCode;
    }
    ZRRegisterFactoryObject(code, type.c_str(), ZRClassID::MakeExternalID(code));
    m_codes.emplace(type, code);
    return code;
}

std::string FileTypes::NameOf(int code) { return ZRGetObjectName(code, nullptr); }
