/// Logical directories and file names.
#pragma once

#include "hcbase/export.h"
#include "hcbase/string.h"

/// The directory that a logical name stands for. The one name is "home": the directory in the environment variable
/// HCBASE_HOME, else in HOME (Windows: USERPROFILE), else the account's home directory; a variable set to nothing
/// counts as not set. Any other name gives an empty text. The environment is asked afresh each time. Threads: any,
/// while none changes the environment.
HC_API HCString HFTranslateName(const HCString& name);

/// Joins directory, name and extension to a path, with just one separator between directory and name, however many they
/// bring along themselves, and a dot before the extension. An empty directory gives a path without one, an empty
/// extension a path without the dot.
HC_API HCString HFBuildFilename(const HCString& directory, const HCString& name, const HCString& extension);
