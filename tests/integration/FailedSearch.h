// What a search that fails is to leave behind.
#pragma once

#include <string>
#include <vector>

#include "ServiceWorld.h"

namespace ServiceTest {

// The search's own lines, as they are to be logged; some of them lack their end.
namespace Logged {
inline const std::string Perform = "Curl.cpp:69 perform error: curl_easy_perform() failed: ";
inline const std::string Send = "SearchControl.cpp:233 searchProduct error: ";
inline const std::string Parse = "SearchControl.cpp:382 parseResult error: ";
inline const std::string NoTokenFile = "SearchControl.cpp:241 checkMCLogin debug: Not Open MC Login File!";

/** Both lines of a search that got no answer. */
std::vector<std::string> noAnswer(const std::string& reason);

/** The line of one that was answered with that status. */
std::vector<std::string> status(int code);
}  // namespace Logged

/** Starts with the service, the UI app, and a merchant who has three products. */
class FailedSearch : public ServiceWorld {
  protected:
    void SetUp() override;

    /** What the service has in its environment beside its world. */
    virtual TestSupport::ChildProcess::Variables added() const { return {}; }

    /**
     * Searches for `term`, and expects that this is logged, that the failure is kept in the status record,
     * and that the next search works once everything is put right. Ends the service.
     */
    void expectFailure(const std::vector<std::string>& logged, bool isLoggedIn, bool isLinked);

    /** What anything but the dispatch of requests has logged from this line on. */
    std::vector<std::string> loggedSince(std::size_t line) const;

    std::string term = "milk";
    std::string shop = "freshmart";

    /** The merchant and the tokens are as they are to be. */
    virtual void putRight();
};

}  // namespace ServiceTest
