// Paths that the platform puts together.
#pragma once

#include <string>

#include <tzplatform_config.h>

namespace Util {

/** `path` in the variable's folder; empty where the platform has no such folder. */
inline std::string platformPath(tzplatform_variable variable, const char* path)
{
    const char* found = tzplatform_mkpath(variable, path);
    return found ? found : "";
}

}  // namespace Util
