// The voice assistant's data store: named stores of records whose columns are integers.
// Calls block (up to 3 s while another process writes). A handle belongs to one thread at a time.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    NDD_ERROR_NONE = 0,
    NDD_ERROR_IO_ERROR = -5,  // the store cannot be opened, read or written, or is damaged
    NDD_ERROR_OUT_OF_MEMORY = -12,
    NDD_ERROR_BUSY = -16,                  // another process kept the store locked for the whole wait
    NDD_ERROR_INVALID_PARAMETER = -22,     // a null or empty argument, or a bundle without the primary key
    NDD_ERROR_NO_SUCH_STORE = -48234495,   // -0x02E00000 | 0x01
    NDD_ERROR_NO_SUCH_COLUMN = -48234494,  // -0x02E00000 | 0x02
    NDD_ERROR_ALREADY_EXISTS = -48234493,  // -0x02E00000 | 0x03
    NDD_ERROR_NO_SUCH_RECORD = -48234492   // -0x02E00000 | 0x04
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
