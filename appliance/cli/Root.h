// The folder that holds everything of one running appliance.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "FileLock.h"

namespace Tool {

struct Root {
    std::filesystem::path path;  // absolute

    std::filesystem::path logFolder() const { return path / "log"; }
    std::filesystem::path platformLog() const { return logFolder() / "platform.log"; }
    std::filesystem::path screenFolder() const { return path / "screen"; }
    std::filesystem::path cardFile() const { return screenFolder() / "card.json"; }
    std::filesystem::path partnerFile() const { return screenFolder() / "partner.json"; }
    std::filesystem::path assistantFile() const { return screenFolder() / "assistant.json"; }
    std::filesystem::path sessionFile() const { return path / "session.json"; }
    std::filesystem::path lockFile() const { return path / "lock"; }
    std::filesystem::path sayLockFile() const { return path / "say.lock"; }
    std::filesystem::path dataStore() const { return path / "data-store.sqlite"; }
    std::filesystem::path untrustedFile() const { return path / "untrusted-certificate"; }
};

// Why the service cannot live in this folder, or nothing. The service clears its pictures with a shell
// command and builds their paths in 128 bytes.
std::optional<std::string> whyUnfit(const std::filesystem::path& root);

// Throws Failure (Usage) for an unfit root.
void requireFit(const std::filesystem::path& root);

// The root that is meant: the option, else APPLIANCE_ROOT, else the one of this build or this user. Absolute.
Root chosenRoot(const std::string& option);

// Held by the one process that runs the appliance in a root; the system frees it with the process.
class RootLock {
  public:
    // Makes the folder where needed. Nothing when another process holds the lock.
    // Throws std::system_error when the folder cannot be written.
    static std::optional<RootLock> take(const Root& root);

    // The same for a root that is to be used: throws Failure (Usage) when it is unfit for the service, and
    // Failure (Failed) when another process holds the lock.
    static RootLock claim(const Root& root);

    // Whether a process holds the lock, this one included.
    static bool isTaken(const Root& root);

  private:
    explicit RootLock(FileLock lock) : lock_(std::move(lock)) {}

    FileLock lock_;
};

}  // namespace Tool
