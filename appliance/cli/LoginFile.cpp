#include "LoginFile.h"

#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>

#include "Exit.h"
#include "LockWait.h"
#include "RandomText.h"
#include "SiteValues.h"

namespace Tool {

namespace {

namespace fs = std::filesystem;

// Beside the login file, so that it can take its place in one step.
fs::path written(const fs::path& file, const std::string& text)
{
    constexpr std::size_t digits = 16;
    fs::path fresh = file;
    fresh += "." + randomHex(digits);
    std::ofstream out(fresh);
    out << text << "\n";
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

void putBack(const fs::path& file)
{
    std::error_code error;
    fs::rename(keptOf(file), file, error);
    if (!error) {
        fs::remove(keptOf(file), error);  // still there where it was the file itself
    }
}

void createIfMissing(const fs::path& file)
{
    if (!fs::exists(file)) {
        fs::rename(written(file, "login"), file);
    }
}

void logOut(const fs::path& file)
{
    fs::create_hard_link(file, keptOf(file));
    try {
        fs::rename(written(file, "logout"), file);
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

fs::path loginFile()
{
    return CARVOY_RETAILER_LOGIN_FILE;
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
