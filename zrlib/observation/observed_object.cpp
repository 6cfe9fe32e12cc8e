#include "zrlib/observation/observed_object.h"

#include "zrlib/messaging/message_functions.h"
#include "zrlib/observation/default_name.h"
#include "zrlib/observation/object_observer.h"

namespace {

/// Reports a null observer that was to be attached or detached. Gives 0.
char RefuseNull(const ZRObservedObject& subject, const char* location)
{
    HCString text;
    text.Format("Null observer pointer passed to [%s]", static_cast<const char*>(subject.GetName()));
    ZRErrorSet(0, text, location, 0, 1);
    return 0;
}

} // namespace

ZRObservedObject::ZRObservedObject() { Initialise(); }

ZRObservedObject::ZRObservedObject(const ZRObservedObject& other) = default;

ZRObservedObject& ZRObservedObject::operator=(const ZRObservedObject& other) = default;

ZRObservedObject::~ZRObservedObject() = default;

void ZRObservedObject::Initialise()
{
    m_Observers.SetSize(0, 1);
    m_csName = zr::DefaultName();
}

char ZRObservedObject::AttachObserver(ZRObjectObserver* observer, char /*flag*/)
{
    if (observer == nullptr) {
        return RefuseNull(*this, "ZRObservedObject::AttachObserver");
    }
    if (m_Observers.Find(observer) >= 0) {
        return 1;
    }
    m_Observers.Append(observer);
    observer->SetZRSubject(this);
    return 0;
}

char ZRObservedObject::DetachObserver(ZRObjectObserver* observer, char /*flag*/)
{
    if (observer == nullptr) {
        return RefuseNull(*this, "ZRObservedObject::DetachObserver");
    }
    const int index = m_Observers.Find(observer);
    if (index >= 0) {
        m_Observers.RemoveAt(index);
        observer->SetZRSubject(nullptr);
    }
    return 1;
}

char ZRObservedObject::IsAttached(ZRObjectObserver* observer) const
{
    const char* const location = "ZRObservedObject::IsAttached";
    if (observer == nullptr) {
        HCString text;
        text.Format("%s - null observer pointer passed to %s", location, static_cast<const char*>(GetName()));
        ZRErrorSet(0, text, location, 0, 1);
        return 0;
    }
    return m_Observers.Find(observer) >= 0 ? 1 : 0;
}

void ZRObservedObject::Update(int /*value*/) {}

char ZRObservedObject::AdjustEvent(ZRObservedObjectEvent* /*event*/) { return 1; }

void ZRObservedObject::SetName(const HCString& name) { m_csName = name; }

HCString ZRObservedObject::GetName() const { return m_csName; }
