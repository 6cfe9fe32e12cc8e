/// The registry of the process. Not exported: clients reach it through the functions only.
#pragma once

class ZRObjectRegistry;

extern ZRObjectRegistry g_ObjectRegistry;
