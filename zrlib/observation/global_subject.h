/// The subjects of the process. Not exported.
#pragma once

class ZRObservedObject;

/// The subject of progress and of the threading switch.
extern ZRObservedObject& g_GlobalSubject;

namespace zr {

/// Whether a subject is one of the library's own, and is not there any more. To be asked within a lease, until whose
/// end it holds.
bool HasGone(const ZRObservedObject& subject);

/// The same of g_GlobalSubject.
bool GlobalSubjectHasGone();

} // namespace zr
