/// The subjects of the process. Not exported.
#pragma once

class ZRObservedObject;

/// The subject of progress and of the threading switch.
extern ZRObservedObject& g_GlobalSubject;

namespace zr {

/// Whether a subject is one of the library's own and has been destroyed. Ask within a lease; the answer holds until its
/// end.
bool HasGone(const ZRObservedObject& subject);

/// The same for g_GlobalSubject.
bool GlobalSubjectHasGone();

} // namespace zr
