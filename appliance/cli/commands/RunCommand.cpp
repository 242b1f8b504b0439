#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

#include "Commands.h"
#include "IndentedJson.h"
#include "Installation.h"
#include "Rig.h"
#include "SearchArguments.h"
#include "SearchOutput.h"
#include "StatusView.h"
#include "VoiceView.h"

namespace Tool {

namespace {

using namespace std::chrono_literals;

// For what a sentence leads to: nobody watches a run, so that a slow machine may have its time.
constexpr auto SayLimit = 30s;

// While it lives no other run makes or removes folders.
class FoldersLock {
  public:
    explicit FoldersLock(const std::filesystem::path& folder)
        : fd_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        if (fd_ < 0) {
            throw std::system_error(errno, std::generic_category(), folder.string());
        }
        while (flock(fd_, LOCK_EX) != 0) {
            if (errno != EINTR) {
                const int error = errno;
                close(fd_);
                throw std::system_error(error, std::generic_category(), "flock");
            }
        }
    }
    ~FoldersLock() { close(fd_); }
    FoldersLock(const FoldersLock&) = delete;
    FoldersLock& operator=(const FoldersLock&) = delete;

  private:
    int fd_;
};

// A folder of its own for one run, gone with the object.
class RunFolder {
  public:
    explicit RunFolder(Appliance::State state);
    ~RunFolder();
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;

    const Root& root() const { return root_; }
    RootLock takeLock() { return std::move(*lock_); }

  private:
    void removeFolders() const;

    Appliance::State state_;
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

RunFolder::RunFolder(Appliance::State state) : state_(std::move(state))
{
    std::string name = (state_.runs / "XXXXXX").string();
    requireFit(name);
    std::filesystem::create_directories(state_.folder);
    const FoldersLock lock(state_.folder);
    std::filesystem::create_directories(state_.runs);
    removeAbandoned(state_.runs);
    if (mkdtemp(name.data()) == nullptr) {
        throw Failure(Exit::Failed, "cannot make a folder in " + state_.runs.string());
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
        const FoldersLock lock(state_.folder);
        removeFolders();
    } catch (const std::system_error&) {
        // Left to the next run, which removes what is abandoned.
    }
}

void RunFolder::removeFolders() const
{
    std::error_code ignored;
    std::filesystem::remove_all(root_.path, ignored);
    std::filesystem::remove(state_.runs, ignored);  // only where no other run has a folder there
}

struct RunArguments {
    SearchArguments search;
    std::string sentence;
    bool withoutSaying = false;
};

struct Findings {
    SearchResult search;
    std::optional<Appliance::StatusRecord> record;
    std::optional<int> flag;
    std::optional<VoiceTurn> turn;

    bool areFine() const { return search.found() && (!turn || turn->isFine()); }
};

// The second product where there is one; nothing where there is no product to choose. Voice chooses among
// what the service found, never at the retailer.
std::string sentenceFor(const RunArguments& arguments, const SearchResult& result)
{
    if (arguments.search.atRetailer) {
        return "";
    }
    if (arguments.withoutSaying || !arguments.sentence.empty()) {
        return arguments.withoutSaying ? "" : arguments.sentence;
    }
    if (!result.found()) {
        return "";
    }
    return result.card.products.size() == 1 ? "show me the first one" : "show me the second one";
}

void printJson(const Findings& findings)
{
    nlohmann::json all = searchJson(findings.search);
    all["status"] = statusJson(findings.record, findings.flag);
    all["voice"] = findings.turn ? turnJson(*findings.turn, findings.search.card) : nlohmann::json();
    std::printf("%s\n", Appliance::indentedJson(all).c_str());
}

void printText(const std::string& text, const RunArguments& arguments)
{
    if (!arguments.search.json) {
        std::printf("\n%s", text.c_str());
        std::fflush(stdout);
    }
}

void search(EventLoop& loop, const Root& root, const RunArguments& arguments, SearchOutput& output,
            Findings& findings)
{
    findings.search = runSearch(loop, root, arguments.search.options(), output);
    if (!findings.search.found() && !arguments.search.json) {
        output.errors(findings.search);
    }
    output.progress().clear();
    findings.record = Appliance::readStatusRecord(root.dataStore());
    findings.flag = Appliance::readSearchFlag();
    printText(statusText(findings.record, findings.flag, styleOf(STDOUT_FILENO)), arguments);
}

void sayOn(EventLoop& loop, const Root& root, const RunArguments& arguments, Findings& findings)
{
    const std::string sentence = sentenceFor(arguments, findings.search);
    if (sentence.empty()) {
        return;
    }
    const auto limit = std::min<std::chrono::milliseconds>(SayLimit, arguments.search.limit);
    findings.turn = say(loop, root, {sentence, {}, limit});
    printText(turnText(*findings.turn, findings.search.card, styleOf(STDOUT_FILENO)), arguments);
    if (!arguments.search.json) {
        std::fputs(turnErrors(*findings.turn, findings.search.card, styleOf(STDERR_FILENO)).c_str(), stderr);
    }
}

Exit searchIn(EventLoop& loop, Rig& rig, const Root& root, const RunArguments& arguments)
{
    SearchOutput output(arguments.search.json);
    output.progress().show("starting the appliance");
    rig.start(
        [&output](const std::string& name, const std::string&) { output.progress().show(name + " is up"); });
    Findings findings;
    search(loop, root, arguments, output, findings);
    sayOn(loop, root, arguments, findings);
    if (arguments.search.json) {
        printJson(findings);
    }
    return findings.areFine() ? Exit::Ok : Exit::Failed;
}

Exit run(const RunArguments& arguments)
{
    RunFolder folder(Appliance::state());
    EventLoop loop;
    Rig rig(loop, folder.takeLock(), {folder.root(), {}, std::nullopt});
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
    const auto arguments = std::make_shared<RunArguments>();
    CLI::App* command =
        app.add_subcommand("run", "Start everything, search, choose a product by voice, end everything");
    addSearchArguments(*command, arguments->search)->default_str("milk");
    command
        ->add_option("--say", arguments->sentence,
                     "What is said in the end (else: show me the second one, or the only one)")
        ->type_name("SENTENCE")
        ->check(notEmpty());
    command->add_flag("--no-say", arguments->withoutSaying, "Say nothing in the end")->excludes("--say");
    command->footer(
        "Examples:\n"
        "  appliance run\n"
        "  appliance run --merchant greengrocer apple\n"
        "  appliance run --retailer 우유\n"
        "  appliance run --retailer --logged-out\n"
        "  appliance run --say \"show me number 3\" bread\n"
        "  appliance run \"milk ~slow-images ~image-404=2\"\n");
    command->callback([arguments, &chosen] {
        if (arguments->search.atRetailer && !arguments->sentence.empty()) {
            throw CLI::ValidationError(
                "--say", "voice chooses among what a merchant's search found, and excludes --retailer");
        }
        chosen = [arguments] { return run(*arguments); };
    });
}

}  // namespace Tool
