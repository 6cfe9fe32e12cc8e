/// The subjects of the process. Not exported.
#pragma once

class ZRObservedObject;

/// The subject of progress and of the threading switch.
extern ZRObservedObject& g_GlobalSubject;

namespace zr {

/// Whether a subject is one of the library's own, which go with the module.
bool IsOfProcess(const ZRObservedObject& subject);

} // namespace zr
