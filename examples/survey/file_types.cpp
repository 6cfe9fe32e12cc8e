#include "file_types.h"

namespace {

constexpr int kLibrary = 0x5000;
constexpr int kFirstCode = ZRObjectEntry::OBJECTBASE | kLibrary;
constexpr int kLastCode = kFirstCode | 0xFFF;
constexpr const char* kFurtherTypes = "(further types)";

} // namespace

FileTypes::FileTypes()
    : m_registration(kLibrary, "survey")
{
}

int FileTypes::CodeOf(const std::string& type)
{
    const auto found = m_codes.find(type);
    if (found != m_codes.end()) {
        return found->second;
    }
    const int code = kFirstCode + static_cast<int>(m_codes.size());
    if (code >= kLastCode && type != kFurtherTypes) {
        return CodeOf(kFurtherTypes);
    }
    // If this is refused, which is reported, the code has no name.
    m_registration.Add(code, type.c_str(), ZRClassID::MakeExternalID(code));
    m_codes.emplace(type, code);
    return code;
}

const char* FileTypes::NameOf(int code) { return ZRGetObjectName(code, nullptr); }
