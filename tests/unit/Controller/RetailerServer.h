// A retailer whose every byte a test decides: plain HTTP on a random port of this machine.
#pragma once

#include <string>

#include "ScriptedServer.h"

/**
 * The one server of a test process, started on first use. It is both hosts that the service knows: the one
 * that it searches at, and the one that it has the badges' icons from.
 */
class RetailerServer : public ScriptedServer {
  public:
    static constexpr const char* SEARCH_PATH = "/api/refrigerator/search/datas.ssg";

    static RetailerServer& instance();

    void answerSearch(int status, const std::string& body) { answer(SEARCH_PATH, status, body); }

    /** The path of a badge's icon. */
    static std::string iconPath(int badge);

  private:
    RetailerServer();
    ~RetailerServer() override { stop(); }
};
