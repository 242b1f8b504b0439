// The partner app's token file, from its bytes to the headers of a search.
#include <array>
#include <cstdint>
#include <string>

#include "Constants.h"
#include "Demand.h"
#include "SearchControl.h"
#include "Singleton.h"
#include "Surroundings.h"

using namespace Carvoy;

namespace {

enum SearchResult { FOUND = 0, BAD_ANSWER = 1, NOT_LOGGED_IN = 2, FAILED = 3 };

struct Outcome {
    CURLcode code;
    long status;
    int result;
};

constexpr std::array<Outcome, 4> OUTCOMES = {{{CURLE_OK, 401, NOT_LOGGED_IN},
                                              {CURLE_OK, 200, BAD_ANSWER},
                                              {CURLE_OK, 500, FAILED},
                                              {CURLE_RECV_ERROR, 0, FAILED}}};

// A header is a text of C's: what stands behind a zero byte in a token is not sent.
std::string header(const char* name, const std::string& token)
{
    return (std::string(name) + ":" + token).c_str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::writeFile(PARTNER_TOKEN_FILE, data, size);
    const std::string content(reinterpret_cast<const char*>(data), size);
    const std::string line = content.substr(0, content.find('\n'));
    SearchControl* const search = Util::Singleton<SearchControl>::getInstance();

    std::string tokens[2] = {"untouched", "untouched"};
    search->checkMCLogin(tokens);
    const bool isPair = line.find(',') != std::string::npos;
    DEMAND(tokens[1].find(',') == std::string::npos);
    DEMAND((isPair ? tokens[0] + "," + tokens[1] : tokens[1]) == line);
    DEMAND(isPair || tokens[0] == line);

    const Outcome outcome = OUTCOMES[size % OUTCOMES.size()];
    Fuzz::answerTransfers(outcome.code, outcome.status, "");
    const int result = search->processSearch("freshmart", "milk");
    const std::vector<Fuzz::Request> requests = Fuzz::takeRequests();

    // Without both of them there is no request.
    const bool isLoggedIn = !tokens[0].empty() && !tokens[1].empty();
    DEMAND(requests.size() == (isLoggedIn ? 1 : 0));
    DEMAND(result == (isLoggedIn ? outcome.result : NOT_LOGGED_IN));
    if (isLoggedIn)
        DEMAND(requests[0].headers == (std::vector<std::string>{header("X-Auth-Access-Token", tokens[1]),
                                                                header("X-Auth-Session-Token", tokens[0])}));
    return 0;
}
