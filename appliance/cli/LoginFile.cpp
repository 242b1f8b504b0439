#include "LoginFile.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <utility>

#include "Exit.h"
#include "LockWait.h"
#include "SiteValues.h"

namespace Tool {

namespace {

namespace fs = std::filesystem;

const char LoggedOutText[] = "logout\n";

// Beside the login file, so that it can take its place in one step. Only who has the lock writes there, and
// what a killed one has left is written over.
fs::path written(const fs::path& file, const std::string& text)
{
    fs::path fresh = file;
    fresh += ".new";
    std::ofstream out(fresh);
    out << text;
    out.close();
    if (!out) {
        const int error = errno;
        std::error_code ignored;
        fs::remove(fresh, ignored);
        throw std::system_error(error, std::generic_category(), file.string());
    }
    return fresh;
}

fs::path lockOf(const fs::path& file)
{
    fs::create_directories(file.parent_path());
    fs::path lock = file;
    lock += ".lock";
    return lock;
}

// Where the file is kept while another stands in its place. It is there only meanwhile, so that the next one
// sees what a killed one has left.
fs::path keptOf(const fs::path& file)
{
    fs::path kept = file;
    kept += ".kept";
    return kept;
}

bool isOurs(const fs::path& file)
{
    std::ifstream in(file);
    return in && std::string(std::istreambuf_iterator<char>(in), {}) == LoggedOutText;
}

// What somebody has written meanwhile is newer than what was kept, and stays.
void putBack(const fs::path& file)
{
    std::error_code error;
    if (isOurs(file)) {
        fs::rename(keptOf(file), file, error);
    }
    if (!error) {
        fs::remove(keptOf(file), error);  // still there where it was the file itself
    }
}

void createIfMissing(const fs::path& file)
{
    if (!fs::exists(file)) {
        fs::rename(written(file, "login\n"), file);
    }
}

void logOut(const fs::path& file)
{
    fs::create_hard_link(file, keptOf(file));
    try {
        fs::rename(written(file, LoggedOutText), file);
    } catch (const std::system_error&) {
        putBack(file);
        throw;
    }
}

[[noreturn]] void failWith(const std::system_error& error)
{
    throw Failure(Exit::Failed, "the login file cannot be written: " + std::string(error.what()));
}

FileLock lockFor(EventLoop& loop, const fs::path& file, std::chrono::milliseconds limit,
                 const std::function<void()>& onWait)
{
    try {
        return waitForLock(loop, lockOf(file), limit,
                           Failure(Exit::TimedOut, "another search at the retailer is under way"), onWait);
    } catch (const std::system_error& error) {
        failWith(error);
    }
}

}  // namespace

fs::path loginFile(const Root& root)
{
    return root.path / CARVOY_RETAILER_LOGIN_FILE;
}

LoginHold::LoginHold(EventLoop& loop, fs::path file, bool loggedOut, std::chrono::milliseconds limit,
                     const std::function<void()>& onWait)
    : file_(std::move(file)), lock_(lockFor(loop, file_, limit, onWait))
{
    try {
        putBack(file_);
        createIfMissing(file_);
        if (loggedOut) {
            logOut(file_);
        }
    } catch (const std::system_error& error) {
        failWith(error);
    }
}

LoginHold::~LoginHold()
{
    putBack(file_);
}

// As the service reads it.
std::optional<std::string> LoginHold::whyLoggedOut() const
{
    std::ifstream in(file_);
    std::string line;
    if (!in) {
        return file_.string() + " cannot be read";
    }
    std::getline(in, line);
    if (line.find("login") != std::string::npos) {
        return std::nullopt;
    }
    return file_.string() + " begins with “" + line + "”";
}

}  // namespace Tool
