// System settings: one value under a key, shared by all programs of the appliance.
// Every call is synchronous and may be made from any thread and any process.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

#define VCONF_OK 0
#define VCONF_ERROR (-1)
#define VCONF_ERROR_WRONG_PREFIX (-2)
#define VCONF_ERROR_WRONG_TYPE (-3)
#define VCONF_ERROR_WRONG_VALUE (-4)
#define VCONF_ERROR_NO_MEM (-6)

// A key is "db/...", "file/..." or "memory/..." with no empty, "." or ".." segment and no final "/".

// Stores a value; readers see either the old value or the new one, never a part.
// Returns VCONF_OK, or VCONF_ERROR for a bad key, a key that is not declared where declaring is asked
// for, or a store that cannot be written; vconf_get_ext_errno tells which.
int vconf_set_int(const char* key, const int value);

// Reads a value into *value. Returns VCONF_OK, or VCONF_ERROR (*value is untouched) for a null argument,
// a bad key, a key without a value and a value that is not one signed 32-bit number.
int vconf_get_int(const char* key, int* value);

// Why this thread's last vconf call failed: VCONF_OK after a success; WRONG_PREFIX for a bad key,
// WRONG_TYPE for a stored value that is no such number, WRONG_VALUE for a null out-parameter, NO_MEM;
// VCONF_ERROR for everything else.
int vconf_get_ext_errno(void);

#ifdef __cplusplus
}
#endif
