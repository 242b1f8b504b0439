#include "Rig.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <signal.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "ScratchRoot.h"
#include "SiteValues.h"

namespace Benchmarks {

namespace {

namespace fs = std::filesystem;
using TestSupport::ChildProcess;
using TestSupport::RawMessage;

constexpr const char* OPERATION_SEARCH = "http://carvoy-service/appcontrol/operation/search";
constexpr const char* OPERATION_RESULT = "http://carvoy-service/appcontrol/operation/result";
constexpr const char* FLAG_FOLDER = "/vconf/db/nuvex/e-commerce";

std::string newFolder(const std::string& parent = {})
{
    std::string folder = (parent.empty() ? TestSupport::ScratchRoot::path() : parent) + "/rig-XXXXXX";
    if (!mkdtemp(folder.data()))
        throw std::runtime_error("no folder for a rig");
    return folder;
}

std::string writeTokens(const std::string& folder)
{
    fs::create_directories(folder);
    const std::string file = folder + "/tokens.txt";
    std::ofstream(file) << Market::SESSION_TOKEN << "," << Market::ACCESS_TOKEN << "\n";
    return file;
}

ChildProcess::Variables environmentOf(const std::string& root, const Market& market)
{
    ChildProcess::Variables all = market.bridge().variables();
    all.emplace_back("APPLIANCE_ROOT", root);
    all.emplace_back("APPLIANCE_DLOG", root + ".log");
    writeTokens(root + "/apps_rw/" CARVOY_PARTNER_APP_ID "/shared/trusted");
    fs::create_directories(root + FLAG_FOLDER);
    return all;
}

ChildProcess::Variables joined(ChildProcess::Variables all, const ChildProcess::Variables& added)
{
    all.insert(all.end(), added.begin(), added.end());
    return all;
}

void expectNone(const std::string& error)
{
    if (!error.empty())
        throw std::runtime_error("a request was refused: " + error);
}

}  // namespace

Market::Market() : mFolder(newFolder()), mBridge(mFolder, writeTokens(mFolder)) {}

Rig::Folder::~Folder()
{
    fs::remove_all(path);
    fs::remove(path + ".log");
}

Rig::Rig(const Market& market, const Options& options)
    : mFolder{newFolder(options.parentFolder)},
      mRoot(mFolder.path),
      mVariables(environmentOf(mRoot, market)),
      mService({CARVOY_SERVICE}, joined(mVariables, options.variables)),
      mUi(UI_ID, options.onUi),
      mFlag(mRoot + FLAG_FOLDER, IN_MOVED_TO)
{
    if (!TestSupport::waitForName(SERVICE_ID, true))
        throw std::runtime_error("the service did not start: " + mService.errors());
    // Answered behind what the service does at start.
    showResult();
}

Rig::~Rig()
{
    mService.signal(SIGTERM);
    mService.wait();
}

void Rig::search(const std::string& term)
{
    const TestSupport::Extras extras = {{"key_merchant", sdbus::Variant(std::string("freshmart"))},
                                        {"key_search_term", sdbus::Variant(term)}};
    expectNone(mClient.launch(SERVICE_ID, OPERATION_SEARCH, 0, extras));
    if (!mFlag.waitFor("response"))
        throw std::runtime_error("a search did not end");
}

RawMessage Rig::nextUiMessage()
{
    auto message = mUi.nextLaunch();
    if (!message)
        throw std::runtime_error("a message to the UI app did not come");
    return *message;
}

RawMessage Rig::showResult()
{
    expectNone(mClient.launch(SERVICE_ID, OPERATION_RESULT));
    return nextUiMessage();
}

void Rig::showCard(int pictures)
{
    const RawMessage result = showResult();
    expectNone(mUi.reply(result.sender, result.id));
    for (int i = 0; i < pictures; ++i)
        nextUiMessage();
}

void Rig::showResults(int count)
{
    for (int i = 0; i < count; ++i)
        mClient.launchInABurst(SERVICE_ID, OPERATION_RESULT);
    for (int i = 0; i < count; ++i)
        nextUiMessage();
    const auto errors = mClient.answersToTheBurst();
    if (!errors || !errors->empty())
        throw std::runtime_error("a request of a burst was refused");
}

std::string memoryFolder()
{
    return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "";
}

long privateMemory(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/smaps_rollup");
    long sum = -1;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string name;
        long size = 0;
        if (words >> name >> size && name == "Private_Dirty:")
            sum = size;
    }
    if (sum < 0)
        throw std::runtime_error("the kernel does not tell what a process needs");
    return sum;
}

}  // namespace Benchmarks
