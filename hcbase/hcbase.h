/// The public headers of hcbase, the foundation layer, except string_stream.h: strings, threads, re-entrant locks,
/// files, the preference store, text tables, version records and the last error.
///
/// No init or shutdown call: the library is ready when loaded. Every function may be called from any thread unless its
/// own documentation says otherwise. No operation throws anything but std::bad_alloc, and std::length_error for texts
/// and arrays that would be too large.
#pragma once

#include "hcbase/array.h"
#include "hcbase/element_storage.h"
#include "hcbase/error.h"
#include "hcbase/export.h"
#include "hcbase/file_status.h"
#include "hcbase/file_system.h"
#include "hcbase/filename.h"
#include "hcbase/format.h"
#include "hcbase/guid.h"
#include "hcbase/preference_system.h"
#include "hcbase/string.h"
#include "hcbase/text_io.h"
#include "hcbase/text_table.h"
#include "hcbase/thread.h"
#include "hcbase/thread_sync.h"
#include "hcbase/time.h"
#include "hcbase/version.h"
