#include "zrlib/observation/observed_object.h"

#include "zrlib/frame/module_lease.h"
#include "zrlib/frame/report.h"
#include "zrlib/observation/global_subject.h"
#include "zrlib/observation/names.h"
#include "zrlib/observation/object_observer.h"

namespace {

/// Reports a null observer. Returns 0.
char RefuseNull(const ZRObservedObject& subject, const char* location)
{
    HCString text;
    text.Format("Null observer pointer passed to [%s]", static_cast<const char*>(subject.GetName()));
    zr::ReportErrorSet(0, text, location);
    return 0;
}

/// Whether a subject is alive: one of the library's own may have been destroyed at the end of the process. Needs a
/// lease, until whose end the answer holds.
bool IsThere(const zr::ModuleLease& /*lease*/, const ZRObservedObject& subject) { return !zr::HasGone(subject); }

} // namespace

ZRObservedObject::ZRObservedObject()
    : m_csName(zr::DefaultName())
{
}

ZRObservedObject::ZRObservedObject(const ZRObservedObject& other)
    : m_Observers(other.m_Observers)
    , m_csName(zr::ReadText(other.m_csName))
{
}

ZRObservedObject& ZRObservedObject::operator=(const ZRObservedObject& other)
{
    if (this != &other) {
        m_Observers = other.m_Observers;
        zr::WriteText(m_csName, zr::ReadText(other.m_csName));
    }
    return *this;
}

ZRObservedObject::~ZRObservedObject()
{
    m_Observers.End(); // before the name is destroyed, for which an observer may ask
}

void ZRObservedObject::Initialise()
{
    m_Observers.Clear();
    ZRObservedObject::SetName(zr::DefaultName());
}

char ZRObservedObject::AttachObserver(ZRObjectObserver* observer, char /*flag*/)
{
    if (observer == nullptr) {
        return RefuseNull(*this, "ZRObservedObject::AttachObserver");
    }
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    return IsThere(lease, *this) && !m_Observers.Append(*observer, *this) ? 1 : 0;
}

char ZRObservedObject::DetachObserver(ZRObjectObserver* observer, char /*flag*/)
{
    if (observer == nullptr) {
        return RefuseNull(*this, "ZRObservedObject::DetachObserver");
    }
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    if (IsThere(lease, *this)) {
        m_Observers.Remove(*observer);
        m_Observers.AwaitCalls(*observer);
    }
    return 1;
}

char ZRObservedObject::IsAttached(ZRObjectObserver* observer) const
{
    const char* const location = "ZRObservedObject::IsAttached";
    if (observer == nullptr) {
        HCString text;
        text.Format("%s - null observer pointer passed to %s", location, static_cast<const char*>(GetName()));
        zr::ReportErrorSet(0, text, location);
        return 0;
    }
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    return IsThere(lease, *this) && m_Observers.Contains(observer) ? 1 : 0;
}

ZRObjectObserver* ZRObservedObject::GetObserver(int index) const
{
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    return IsThere(lease, *this) ? m_Observers.At(index) : nullptr;
}

void ZRObservedObject::Update(int /*value*/) {}

char ZRObservedObject::AdjustEvent(ZRObservedObjectEvent* /*event*/) { return 1; }

void ZRObservedObject::SetName(const HCString& name)
{
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    if (IsThere(lease, *this)) {
        zr::WriteText(m_csName, name);
    }
}

HCString ZRObservedObject::GetName() const
{
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    return IsThere(lease, *this) ? zr::ReadText(m_csName) : HCString();
}
