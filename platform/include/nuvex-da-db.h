// The voice assistant's data store: named stores of records whose columns are integers.
// Calls block (up to 3 s while another process writes). A handle belongs to one thread at a time.
#pragma once

#include <tizen.h>

#ifdef __cplusplus
extern "C" {
#endif

#define NDD_ERROR_CLASS (-0x02E00000)

typedef enum {
    NDD_ERROR_NONE = TIZEN_ERROR_NONE,
    NDD_ERROR_IO_ERROR = TIZEN_ERROR_IO_ERROR,  // the store cannot be opened, read or written, or is damaged
    NDD_ERROR_OUT_OF_MEMORY = TIZEN_ERROR_OUT_OF_MEMORY,
    NDD_ERROR_BUSY = TIZEN_ERROR_RESOURCE_BUSY,  // another process kept the store locked for the whole wait
    NDD_ERROR_INVALID_PARAMETER =
        TIZEN_ERROR_INVALID_PARAMETER,  // a null or empty argument, or a bundle without the primary key
    NDD_ERROR_NO_SUCH_STORE = NDD_ERROR_CLASS | 0x01,
    NDD_ERROR_NO_SUCH_COLUMN = NDD_ERROR_CLASS | 0x02,
    NDD_ERROR_ALREADY_EXISTS = NDD_ERROR_CLASS | 0x03,
    NDD_ERROR_NO_SUCH_RECORD = NDD_ERROR_CLASS | 0x04
} ndd_error_e;

typedef struct ndd_manager_s* ndd_manager_h;  // access to one store
typedef struct ndd_bundle_s* ndd_bundle_h;    // some columns of one record

// Every function returns an ndd_error_e. On failure out-parameters are left as they were.

// Opens the store of that name, for example "Commerce". The caller owns the manager.
int ndd_manager_create(const char* store_name, ndd_manager_h* manager);

// The name of the store's primary key column; the caller frees it with free().
int ndd_manager_get_primary_key(ndd_manager_h manager, char** name);

// Adds the record that the bundle describes; columns that it does not name stay null.
// NDD_ERROR_ALREADY_EXISTS when a record with that primary key is there: nothing changes then.
int ndd_manager_insert(ndd_manager_h manager, ndd_bundle_h bundle);

// Changes the record that the bundle's primary key names: only the columns in the bundle.
// NDD_ERROR_NO_SUCH_RECORD when there is none.
int ndd_manager_update(ndd_manager_h manager, ndd_bundle_h bundle);

int ndd_manager_destroy(ndd_manager_h manager);

// An empty bundle, owned by the caller; it may serve several calls and several managers.
int ndd_bundle_create(ndd_bundle_h* bundle);

// Puts a column's value into the bundle, in place of an earlier one. Whether the store has such a
// column shows at insert or update (NDD_ERROR_NO_SUCH_COLUMN).
int ndd_bundle_add_int(ndd_bundle_h bundle, const char* column, int value);

int ndd_bundle_destroy(ndd_bundle_h bundle);

#ifdef __cplusplus
}
#endif
