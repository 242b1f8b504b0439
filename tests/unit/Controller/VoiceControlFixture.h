// Voice control, the partner app and the assistant in the test's hand, and a merchant for the last search.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Calls.h"
#include "SearchControlFixture.h"
#include "VoiceControl.h"
#include "VoiceStandIn.h"

/** Each test begins without a client; the controller of the searches is the one that the service has. */
class VoiceControlFixture : public SearchControlFixture {
  protected:
    using Texts = std::vector<std::string>;

    void SetUp() override;
    void TearDown() override;

    /** Makes the client, and forgets what that has logged and called. */
    void startVoice();

    /** Makes the client, and gives all that was logged, each line as "function: text". */
    Texts logOfStart();

    /** Deletes the client, and gives what that logged. */
    Texts logOfEnd();

    /** The calls of these functions in order, but for what is asked of lists and commands. */
    static Texts clientCalls();

    /** One search that found products with these variant references. */
    void searchFor(const Texts& variantRefs, const std::string& merchant = "freshmart");

    /** Gives a result with one command for each text. */
    static void say(const Texts& nlus);

    /** What the partner app and the assistant were sent, each as "app: operation" with the extra data behind
     * it. Settles first. */
    static Texts requests();

    std::unique_ptr<Carvoy::VoiceControl> voice_;
};
