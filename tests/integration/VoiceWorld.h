// The service's world with voice: the recogniser, the partner app and the voice assistant.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Nlu.h"
#include "Recogniser.h"
#include "ServiceWorld.h"

namespace ServiceTest {

/** Starts with both apps on the bus and without the service. */
class VoiceWorld : public ServiceWorld {
    // Before the apps, whose threads use them until the end.
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> arrived_;

  protected:
    using Texts = std::vector<std::string>;

    void SetUp() override;

    void startListening();

    /** The recogniser gives a result with one command for each text. */
    void say(const Texts& nlus);

    /** Does a search that finds these products. */
    void searchFor(const std::vector<Product>& products);

    /** Waits until this, in the form of sent(), has arrived. */
    bool waitFor(const std::string& message);

    /**
     * Everything that has been sent to the two apps since the last call, in the order in which it arrived,
     * each as "APP NAME key=value ...", where NAME ends the operation. Says something more to know that it is
     * everything, so the service must hear and the partner app be there.
     */
    Texts sent();

    /** The same, where the service is known to have nothing left to send. */
    Texts taken();

    std::unique_ptr<TestSupport::RawPeer> partner;
    std::unique_ptr<TestSupport::RawPeer> assistant;
    std::unique_ptr<TestSupport::Recogniser> voice;

  private:
    std::unique_ptr<TestSupport::RawPeer> newApp(const std::string& appId, const std::string& name);
};

}  // namespace ServiceTest
