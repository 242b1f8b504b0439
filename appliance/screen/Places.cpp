#include "Places.h"

#include <tzplatform_config.h>

#include <cstdlib>

namespace Screen {

namespace {

std::string variable(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

}  // namespace

Places placesHere()
{
    const char* media = tzplatform_getenv(TZ_USER_CONTENT);
    return {std::filesystem::path(media == nullptr ? "." : media).parent_path(), variable("APPLIANCE_DLOG"),
            variable("DBUS_SESSION_BUS_ADDRESS")};
}

}  // namespace Screen
