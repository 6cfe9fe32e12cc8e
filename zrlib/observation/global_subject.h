/// The subject of the process. Not exported.
#pragma once

class ZRObservedObject;

extern ZRObservedObject& g_GlobalSubject;
