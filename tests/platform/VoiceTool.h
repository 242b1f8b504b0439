// A client of voice control in the test process itself, and what its callbacks were called with.
#pragma once

#include <gtest/gtest.h>
#include <voice_control.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "PrivateBus.h"
#include "Recogniser.h"
#include "Tool.h"

namespace TestSupport {

/** What one call of a callback said, as a line: "state 1 2", "result 0 'text' 2 commands", ... */
using Heard = std::vector<std::string>;

/** A test on a bus of its own whose client is NONE, and is left NONE. Main thread. */
class VoiceTool : public testing::Test {
  protected:
    VoiceTool();
    ~VoiceTool() override;

    /** NONE to INITIALIZED, with all five callbacks set, then to READY where wanted; forgets what was heard.
     */
    void initialize();
    void makeReady();

    /** Runs the main loop until so many calls of callbacks were heard, and gives them. */
    Heard hear(std::size_t count);

    /** Runs the main loop until everything that arrived before has been delivered. */
    void settle();

    static vc_state_e state();

    /** Called by each callback after it was noted. */
    std::function<void()> inCallback;

    PrivateBus bus;
    std::string name;  // the client's connection
    std::unique_ptr<Recogniser> recogniser;
    Heard heard;

  private:
    void note(std::string line);
    static void onResult(vc_result_event_e event, vc_cmd_list_h list, const char* text, void* data);
    static void onState(vc_state_e previous, vc_state_e current, void* data);
    static void onServiceState(vc_service_state_e previous, vc_service_state_e current, void* data);
    static void onLanguage(const char* previous, const char* current, void* data);
    static void onError(vc_error_e reason, void* data);

    std::thread::id thread_ = std::this_thread::get_id();
};

}  // namespace TestSupport
