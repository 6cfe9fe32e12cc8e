/// Logical directories and file names.
#pragma once

#include "hcbase/export.h"
#include "hcbase/string.h"

/// The directory that a logical name stands for. The one name is "home": the directory in the environment variable
/// HCBASE_HOME, else in HOME (Windows: USERPROFILE), else the home directory of the account as which the process runs;
/// a variable set to nothing counts as not set. In a program with the set-user-ID or set-group-ID bit, or file
/// capabilities, the environment does not count. A relative directory is relative to the current one of the process.
/// When nobody knows a home, which is told on standard error once, and for any other name the text is empty. The
/// environment is asked afresh each time, the account database seldom, as its last answer is kept. Threads: any, while
/// none changes the environment.
[[nodiscard]] HC_API HCString HFTranslateName(const HCString& name);

/// Joins directory, name and extension to a path, with just one separator between directory and name, however many they
/// bring along themselves, and a dot before the extension. An empty directory gives a path without one, an empty
/// extension a path without the dot.
[[nodiscard]] HC_API HCString HFBuildFilename(
    const HCString& directory, const HCString& name, const HCString& extension);
