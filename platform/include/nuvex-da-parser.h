// The voice assistant's response parser: reads what its language understanding answers.
#pragma once

#include <tizen.h>

#ifdef __cplusplus
extern "C" {
#endif

#define NDP_ERROR_CLASS (-0x02F60000)

typedef enum {
    NDP_ERROR_NONE = TIZEN_ERROR_NONE,
    NDP_ERROR_OUT_OF_MEMORY = TIZEN_ERROR_OUT_OF_MEMORY,
    NDP_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER,  // a null argument
    NDP_ERROR_PARSE_JSON_FAILED = NDP_ERROR_CLASS | 0x11,  // not JSON, or nested more than 1024 levels deep
    NDP_ERROR_NO_SUCH_VALUE = NDP_ERROR_CLASS | 0x12,      // the member is missing, or null
    NDP_ERROR_INVALID_TYPE = NDP_ERROR_CLASS | 0x13,       // the member is of another JSON type
    NDP_ERROR_INTERNAL_ERROR = NDP_ERROR_CLASS | 0x14
} ndp_error_e;

/**
 * A response owns everything that is read from it: action data and commerce data are valid until
 * ndp_response_data_destroy(), and are not destroyed by the caller. A response is used by one thread at a
 * time. Every function returns an ndp_error_e; on error no out-pointer is written. A text handed out through
 * a char** is the caller's to free().
 *
 *     {"actionName": "Commerce Searched Item",
 *      "actionData": {"representativeCommerceData": {"id": "2"}}}
 */
typedef struct ndp_response_data_s* ndp_response_data_h;
typedef struct ndp_action_data_s* ndp_action_data_h;
typedef struct ndp_commerce_data_s* ndp_commerce_data_h;

/** Reads a response, a JSON object, out of a text; the caller's until ndp_response_data_destroy(). */
int ndp_response_data_parse(const char* json, ndp_response_data_h* response);

int ndp_response_data_destroy(ndp_response_data_h response);

/** Hands out a copy of the text `actionName`. */
int ndp_response_data_get_action_name(ndp_response_data_h response, char** name);

/** Hands out the object `actionData`. */
int ndp_response_data_get_action_data(ndp_response_data_h response, ndp_action_data_h* action_data);

/** Hands out the object `representativeCommerceData` of a commerce action. */
int ndp_commerce_action_data_get_representative_commerce_data(ndp_action_data_h action_data,
                                                              ndp_commerce_data_h* commerce_data);

/** Hands out a copy of the text `id`. */
int ndp_commerce_data_get_id(ndp_commerce_data_h commerce_data, char** id);

#ifdef __cplusplus
}
#endif
