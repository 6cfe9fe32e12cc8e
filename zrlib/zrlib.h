/// Everything public of ZRLib, the common frame of a system's libraries and applications.
///
/// Loading the library is all the set-up there is: no function initialises or ends it, and everything may be called
/// from the moment it is loaded until it is unloaded. Messages that come later, from a thread or a static object that
/// outlives the library's own objects, are dropped.
#pragma once

#include "zrlib/export.h"
#include "zrlib/frame/mode.h"
#include "zrlib/frame/text_codes.h"
#include "zrlib/messaging/message_functions.h"
#include "zrlib/messaging/message_handler.h"
#include "zrlib/messaging/message_types.h"
#include "zrlib/messaging/msg.h"
#include "zrlib/observation/event_codes.h"
#include "zrlib/observation/object_observer.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/observation/observed_object_event.h"
#include "zrlib/observation/observer_functions.h"
#include "zrlib/observation/progress.h"
#include "zrlib/profiling/profiler.h"
#include "zrlib/profiling/profiler_state.h"
#include "zrlib/profiling/profiler_state_handler.h"
#include "zrlib/registry/class_id.h"
#include "zrlib/registry/code_map.h"
#include "zrlib/registry/object_entry.h"
#include "zrlib/registry/object_registry.h"
#include "zrlib/registry/registry_functions.h"
#include "zrlib/sync/global_thread_sync.h"
#include "zrlib/sync/lock_trail.h"
#include "zrlib/sync/lock_trail_functions.h"
#include "zrlib/sync/lock_trail_handler.h"
#include "zrlib/sync/relaxed.h"
#include "zrlib/sync/thread_sync.h"
#include "zrlib/sync/threading.h"
#include "zrlib/utilities/array.h"
#include "zrlib/utilities/list.h"
#include "zrlib/utilities/ring.h"
#include "zrlib/utilities/stack.h"
