/// HCPreferenceSystem: the preference store.
#pragma once

#include "hcbase/array.h"
#include "hcbase/export.h"
#include "hcbase/string.h"

/// A value in the preference file.
struct HCPreferenceKey {
    HCString name; // as for GetBooleanValue: "/Libraries/zrlib/Threading"
    int line = 0; // counted from 1
    char isBoolean = 0; // whether the value is true or false
};

/// Access to the preferences of the account, one TOML file: the path in the environment variable HCBASE_PREFERENCES;
/// else `hcbase/preferences.toml` under $XDG_CONFIG_HOME, else under ~/.config; on Windows under %APPDATA%. In a
/// program with the set-user-ID or set-group-ID bit, or file capabilities, all environment variables are ignored, HOME
/// included.
///
/// The file, of at most 16 MiB, is read once, on the first query to the object, so one object answers from one state of
/// the file. A missing file is an empty store. A file that cannot be read or parsed, or nests keys more than 16 deep,
/// or a value of another kind than requested, is reported on standard error in one line that names file, line and
/// reason; the same line is not reported twice.
///
/// Threads: one object is used by one thread at a time, while none changes the environment.
class HC_API HCPreferenceSystem {
public:
    HCPreferenceSystem() noexcept;
    virtual ~HCPreferenceSystem();

    HCPreferenceSystem(const HCPreferenceSystem&) = delete;
    HCPreferenceSystem& operator=(const HCPreferenceSystem&) = delete;

    /// The boolean under a slash-separated key: "/Libraries/zrlib/Threading" is the entry `Threading` of the table
    /// `[Libraries.zrlib]`. 1 or 0; `defaultValue` when the key does not exist, its value is no boolean, the file
    /// cannot be read or parsed, or there is no memory for it, which is reported on standard error too. A null key does
    /// not exist, and an entry with a slash in its name cannot be reached.
    [[nodiscard]] char GetBooleanValue(const char* key, char defaultValue);

    /// The path of the file that is used, whether or not it exists. Empty when no home is known.
    [[nodiscard]] HCString GetPath() const;

    /// 0 when there is a file that cannot be read or parsed, otherwise 1.
    [[nodiscard]] char IsSound();

    /// All values of the file, in its order. Throws std::bad_alloc.
    [[nodiscard]] HCArray<HCPreferenceKey> GetKeys();

private:
    struct Store;

    Store& GetStore();

    Store* m_store; // owned; null until the first query
};
