// Platform paths. Callable from any thread and at any time, static initialisation and destruction included.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

enum tzplatform_variable {
    _TZPLATFORM_VARIABLES_INVALID_ = -1,
    TZ_USER_APP = 50,     // the user's applications: one folder for each package id
    TZ_USER_CONTENT = 55  // the user's media files
};

// The results are absolute, belong to the platform and stay valid for the life of the process: do not
// free them. Equal content gives the same pointer. Only the folders of the variables themselves are made.

// The variable's folder. Null for an id that is none of the above and when memory runs out.
const char* tzplatform_getenv(enum tzplatform_variable id);

// The variable's folder and path, joined with exactly one '/'; "" stands for the folder itself.
// Null as above, and for a null path.
const char* tzplatform_mkpath(enum tzplatform_variable id, const char* path);

#ifdef __cplusplus
}
#endif
