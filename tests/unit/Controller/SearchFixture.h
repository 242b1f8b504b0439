// What the tests of every search controller have in common: the UI app, the stores, the log, the pictures.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Calls.h"
#include "Latch.h"
#include "ScriptedServer.h"

/** A message to the UI app. */
struct SentMessage : TestSupport::Launch {
    /** The text under `key`; the test fails where there is none. */
    std::string text(const std::string& key) const;
    std::vector<std::string> list(const std::string& key) const;

    bool isResult() const;
    bool isImage() const;
};

/** The fields of the assistant's status record; none where the store has null. */
struct StatusRecord {
    std::optional<int> isLoggedIn;
    std::optional<int> isLinked;
    std::optional<int> totalCount;
    std::optional<int> productCountInCart;
    std::optional<int> currentViewType;

    bool operator==(const StatusRecord& other) const;
};
std::ostream& operator<<(std::ostream& out, const StatusRecord& record);

/** The record as it stands in the store; none where there is no store or no record. */
std::optional<StatusRecord> statusRecord();

/** The value of the flag that every search sets; none where it was never set. */
std::optional<int> responseFlag();

/** The errors logged so far, each as "function: text". */
std::vector<std::string> loggedErrors();

/** The same for every level. */
std::vector<std::string> logged();

/** Whether `texts` holds `text`. */
bool holds(const std::vector<std::string>& texts, const std::string& text);

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& content);

/** Where the pictures lie. */
std::string imageFile(const std::string& name);

/**
 * Each test begins with no status record, no flag and no pictures. The test's thread is the main loop's. The
 * controllers of a test must be gone when TearDown() is called here.
 */
class SearchFixture : public testing::Test {
  protected:
    explicit SearchFixture(ScriptedServer& server);

    void SetUp() override;
    void TearDown() override;

    /** Waits until the sender has nothing more to send. */
    static void settle();

    /** All messages to the UI app so far. Settles first. */
    static std::vector<SentMessage> sent();
    static std::vector<SentMessage> sentImages();

    /** The result message that `ask` has a controller send. Waits until it is sent. */
    static SentMessage resultOf(const std::function<void()>& ask);

    /** Waits until so many image messages were sent since the test began. */
    static bool waitForImages(size_t count);

    /** Open after openLatches() at the latest, so that nothing waits for a test that has failed. */
    std::shared_ptr<Latch> newLatch();
    void openLatches();

    /** The server has this picture. Returns its URL. */
    std::string addPicture(const std::string& path, const std::string& content);

    /** The server sends half of this picture, tells so, and waits for `release` before the other half. */
    std::string addHeldPicture(const std::string& path, const std::string& content,
                               const std::shared_ptr<Latch>& reached, const std::shared_ptr<Latch>& release);

    /**
     * Holds the first download thread that calls `function` where it does so, and no other and nowhere else.
     * It tells `reached` and goes on after `release`.
     */
    static void holdDownloadIn(const std::string& function, const std::shared_ptr<Latch>& reached,
                               const std::shared_ptr<Latch>& release);

  private:
    ScriptedServer& server_;
    std::vector<std::shared_ptr<Latch>> latches_;
};
