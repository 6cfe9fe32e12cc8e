#include "zrlib/observation/object_observer.h"

#include "zrlib/observation/names.h"

ZRObjectObserver::ZRObjectObserver()
    : m_pSubject(nullptr)
    , m_csName(zr::DefaultName())
{
}

ZRObjectObserver::ZRObjectObserver(const ZRObjectObserver& other) = default;

ZRObjectObserver& ZRObjectObserver::operator=(const ZRObjectObserver& other) = default;

ZRObjectObserver::~ZRObjectObserver() = default;

void ZRObjectObserver::SetName(const HCString& name) { zr::WriteText(m_csName, name); }

HCString ZRObjectObserver::GetName() const { return zr::ReadText(m_csName); }

void ZRObjectObserver::OnEvent(ZRObservedObjectEvent* /*event*/) {}
