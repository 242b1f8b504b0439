// Uses the platform's stores from a process of its own; prints what the calls return.
#include <nuvex-da-db.h>
#include <tzplatform_config.h>
#include <vconf.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

extern const char* const pathBeforeMain;

// Asks for the path again at the very end. It is constructed before the platform is first used, so
// that static objects of the platform would be gone by then.
struct Last {
    ~Last()
    {
        const bool same = tzplatform_mkpath(TZ_USER_CONTENT, "tmp") == pathBeforeMain;
        std::printf("%s\n", same && pathBeforeMain != nullptr ? "same path to the end" : "no path");
        std::fflush(stdout);
    }
} atTheEnd;

const char* const pathBeforeMain = tzplatform_mkpath(TZ_USER_CONTENT, "tmp");

int printFolders()
{
    for (const auto id : {TZ_USER_APP, TZ_USER_CONTENT}) {
        const char* folder = tzplatform_getenv(id);
        std::printf("%s\n", folder == nullptr ? "null" : folder);
    }
    return EXIT_SUCCESS;
}

int createManager()
{
    ndd_manager_h manager = nullptr;
    const int result = ndd_manager_create("Commerce", &manager);
    if (manager != nullptr)
        ndd_manager_destroy(manager);
    return result;
}

int printResults()
{
    std::printf("vconf_set_int %d\n", vconf_set_int("db/probe", 1));
    std::printf("ndd_manager_create %d\n", createManager());
    return EXIT_SUCCESS;
}

int setManyTimes(const char* key, int value, int times)
{
    for (int i = 0; i < times; ++i)
        if (vconf_set_int(key, value) != VCONF_OK)
            return EXIT_FAILURE;
    return EXIT_SUCCESS;
}

// One status update the way the service makes it: a manager of its own, insert, else update.
bool writeStatus(const char* column, int value)
{
    ndd_manager_h manager = nullptr;
    ndd_bundle_h bundle = nullptr;
    if (ndd_manager_create("Commerce", &manager) != NDD_ERROR_NONE)
        return false;
    bool written = ndd_bundle_create(&bundle) == NDD_ERROR_NONE &&
                   ndd_bundle_add_int(bundle, "id", 0) == NDD_ERROR_NONE &&
                   ndd_bundle_add_int(bundle, column, value) == NDD_ERROR_NONE;
    written = written && (ndd_manager_insert(manager, bundle) == NDD_ERROR_NONE ||
                          ndd_manager_update(manager, bundle) == NDD_ERROR_NONE);
    ndd_bundle_destroy(bundle);
    ndd_manager_destroy(manager);
    return written;
}

int countUp(const char* column, int last)
{
    for (int value = 1; value <= last; ++value)
        if (!writeStatus(column, value))
            return EXIT_FAILURE;
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "folders")
        return printFolders();
    if (command == "results")
        return printResults();
    if (command == "set" && argc == 5)
        return setManyTimes(argv[2], std::atoi(argv[3]), std::atoi(argv[4]));
    if (command == "count" && argc == 4)
        return countUp(argv[2], std::atoi(argv[3]));
    return EXIT_FAILURE;
}
