// The names of operations, each in the namespace of whoever defines it.
#pragma once

#define PLATFORM_OPERATION(name) "http://tizen.org/appcontrol/operation/" name
#define SERVICE_OPERATION(name) "http://carvoy-service/appcontrol/operation/" name
#define ASSISTANT_OPERATION(name) "http://nuvex-da/appcontrol/operation/" name
