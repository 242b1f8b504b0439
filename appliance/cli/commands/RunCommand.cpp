#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

#include "Commands.h"
#include "IndentedJson.h"
#include "Rig.h"
#include "SearchArguments.h"
#include "SearchOutput.h"
#include "StatusRecord.h"

namespace Tool {

namespace {

// While it lives no other run makes or removes folders.
class Turn {
  public:
    Turn() : fd_(open(buildFolder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        if (fd_ < 0) {
            throw std::system_error(errno, std::generic_category(), buildFolder().string());
        }
        while (flock(fd_, LOCK_EX) != 0) {
            if (errno != EINTR) {
                const int error = errno;
                close(fd_);
                throw std::system_error(error, std::generic_category(), "flock");
            }
        }
    }
    ~Turn() { close(fd_); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

  private:
    int fd_;
};

// A folder of its own for one run, gone with the object.
class RunFolder {
  public:
    explicit RunFolder(const std::filesystem::path& parent);
    ~RunFolder();
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;

    const Root& root() const { return root_; }
    RootLock takeLock() { return std::move(*lock_); }

  private:
    void removeFolders() const;

    Root root_;
    std::optional<RootLock> lock_;
};

// What killed runs have left behind.
void removeAbandoned(const std::filesystem::path& parent)
{
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(parent, ignored)) {
        if (!RootLock::isTaken({entry.path()})) {
            std::filesystem::remove_all(entry.path(), ignored);
        }
    }
}

RunFolder::RunFolder(const std::filesystem::path& parent)
{
    std::string name = (parent / "XXXXXX").string();
    requireFit(name);
    const Turn turn;
    std::filesystem::create_directories(parent);
    removeAbandoned(parent);
    if (mkdtemp(name.data()) == nullptr) {
        throw Failure(Exit::Failed, "cannot make a folder in " + parent.string());
    }
    root_.path = name;
    try {
        lock_.emplace(RootLock::claim(root_));
    } catch (...) {
        removeFolders();
        throw;
    }
}

RunFolder::~RunFolder()
{
    try {
        const Turn turn;
        removeFolders();
    } catch (const std::system_error&) {
        // Left to the next run, which removes what is abandoned.
    }
}

void RunFolder::removeFolders() const
{
    std::error_code ignored;
    std::filesystem::remove_all(root_.path, ignored);
    std::filesystem::remove(root_.path.parent_path(), ignored);  // only where no other run has a folder there
}

void printStatus(const SearchResult& result, const Root& root, bool json)
{
    const auto record = readStatusRecord(root.dataStore());
    const auto flag = readSearchFlag();
    if (json) {
        nlohmann::json all = searchJson(result);
        all["status"] = statusJson(record, flag);
        std::printf("%s\n", indentedJson(all).c_str());
        return;
    }
    std::printf("\n%s", statusText(record, flag, styleOf(STDOUT_FILENO)).c_str());
}

Exit searchIn(EventLoop& loop, Rig& rig, const Root& root, const SearchArguments& arguments)
{
    SearchOutput output(arguments.json);
    output.progress().show("starting the appliance");
    rig.start(
        [&output](const std::string& name, const std::string&) { output.progress().show(name + " is up"); });
    const SearchResult result = runSearch(loop, root, arguments.options("milk"), output);
    if (!result.found() && !arguments.json) {
        output.errors(result);
    }
    output.progress().clear();
    printStatus(result, root, arguments.json);
    return result.found() ? Exit::Ok : Exit::Failed;
}

Exit run(const SearchArguments& arguments)
{
    RunFolder folder(buildFolder() / "run");
    EventLoop loop;
    Rig rig(loop, folder.takeLock(), {folder.root(), {}});
    const auto stop = [&rig] {
        const std::vector<std::string> troubles = rig.stop();
        for (const std::string& trouble : troubles) {
            std::fprintf(stderr, "appliance: %s\n", trouble.c_str());
        }
        return troubles.empty();
    };
    Exit status = Exit::Ok;
    try {
        status = searchIn(loop, rig, folder.root(), arguments);
    } catch (...) {
        stop();
        throw;
    }
    return stop() ? status : Exit::Failed;
}

}  // namespace

void addRunCommand(CLI::App& app, Action& chosen)
{
    const auto arguments = std::make_shared<SearchArguments>();
    CLI::App* command =
        app.add_subcommand("run", "Start everything, search once, show it all, end everything");
    addSearchArguments(*command, *arguments)->default_str("milk");
    command->footer(
        "Examples:\n"
        "  appliance run\n"
        "  appliance run --merchant greengrocer apple\n"
        "  appliance run \"milk ~slow-images ~image-404=2\"\n");
    command->callback([arguments, &chosen] { chosen = [arguments] { return run(*arguments); }; });
}

}  // namespace Tool
