// The service's real main in front of a platform loop that does what the test asks for:
//
//     main-probe EXIT-STATUS STEP...     a STEP is create, result, show or terminate
//
// Linked in place of service_app_main with --wrap.
#include <service_app.h>

#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" int __wrap_service_app_main(int argc, char** argv, service_app_lifecycle_callback_s* callbacks,
                                       void* userData);

namespace {

void request(const service_app_lifecycle_callback_s& callbacks, const std::string& name)
{
    app_control_h handle = nullptr;
    app_control_create(&handle);
    app_control_set_operation(handle, ("http://carvoy-service/appcontrol/operation/" + name).c_str());
    callbacks.app_control(handle, nullptr);
    app_control_destroy(handle);
}

void run(const service_app_lifecycle_callback_s& callbacks, const std::string& step)
{
    if (step == "create")
        std::printf("create returned %s\n", callbacks.create(nullptr) ? "true" : "false");
    else if (step == "terminate")
        callbacks.terminate(nullptr);
    else
        request(callbacks, step);
}

}  // namespace

int __wrap_service_app_main(int argc, char** argv, service_app_lifecycle_callback_s* callbacks,
                            void* userData)
{
    const bool isComplete = callbacks->create && callbacks->terminate && callbacks->app_control;
    std::printf("callbacks %s, user data %s\n", isComplete ? "set" : "missing", userData ? "set" : "null");
    for (int i = 2; i < argc; ++i)
        run(*callbacks, argv[i]);
    return std::atoi(argv[1]);
}
