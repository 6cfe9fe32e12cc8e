/// Logical directories and file names.
#pragma once

#include "hcbase/export.h"
#include "hcbase/string.h"

/// The directory that a logical name stands for. The only name is "home": the directory in the environment variable
/// HCBASE_HOME, else in HOME (Windows: USERPROFILE), else the home directory of the account under which the process
/// runs; an empty variable counts as not set. In a program with the set-user-ID or set-group-ID bit, or file
/// capabilities, the environment is ignored. A relative directory is relative to the process's current one. Empty when
/// no home is known, which is reported on standard error once, and for any other name. The environment is read on every
/// call; the account database is seldom asked, as its last answer is kept. Threads: any, while none changes the
/// environment.
[[nodiscard]] HC_API HCString HFTranslateName(const HCString& name);

/// Joins directory, name and extension to a path, with exactly one separator between directory and name, however many
/// they have themselves, and a dot before the extension. An empty directory yields a path without one, an empty
/// extension a path without the dot.
[[nodiscard]] HC_API HCString HFBuildFilename(
    const HCString& directory, const HCString& name, const HCString& extension);
