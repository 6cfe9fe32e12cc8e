#include "zrlib/observation/object_observer.h"

#include "zrlib/observation/default_name.h"

ZRObjectObserver::ZRObjectObserver()
    : m_pSubject(nullptr)
    , m_csName(zr::DefaultName())
{
}

ZRObjectObserver::ZRObjectObserver(const ZRObjectObserver& other) = default;

ZRObjectObserver& ZRObjectObserver::operator=(const ZRObjectObserver& other) = default;

ZRObjectObserver::~ZRObjectObserver() = default;

void ZRObjectObserver::SetName(const HCString& name) { m_csName = name; }

HCString ZRObjectObserver::GetName() const { return m_csName; }

void ZRObjectObserver::OnEvent(ZRObservedObjectEvent* /*event*/) {}
