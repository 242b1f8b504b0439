#include "VoiceWorld.h"

#include <algorithm>
#include <utility>

#include "SiteValues.h"

namespace ServiceTest {

namespace {

const char* const Fence = "partner click_cart_summary";

std::string textOf(const std::string& app, const TestSupport::RawMessage& message)
{
    std::string text = app + " " + message.operation.substr(message.operation.rfind('/') + 1);
    for (const auto& [key, value] : message.extras)
        text += " " + key + "=" + value.get<std::string>();
    return text;
}

}  // namespace

void VoiceWorld::SetUp()
{
    partner = newApp(CARVOY_PARTNER_APP_ID, "partner");
    assistant = newApp("org.tizen.nuvex-da", "assistant");
}

void VoiceWorld::startListening()
{
    startService();
    voice = std::make_unique<TestSupport::Recogniser>(ServiceId);
}

void VoiceWorld::say(const Texts& nlus)
{
    EXPECT_EQ(voice->result(0, {"as spoken"}, nlus), "");
}

void VoiceWorld::searchFor(const std::vector<Product>& products)
{
    stock(products);
    EXPECT_EQ(search(), "");
    EXPECT_TRUE(merchant->waitForRequests(Merchant::SearchPath));
}

bool VoiceWorld::waitFor(const std::string& message)
{
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, TestSupport::Patience, [&] {
        return std::find(arrived_.begin(), arrived_.end(), message) != arrived_.end();
    });
}

// The service sends one message after the other, and each only when the one before has arrived.
VoiceWorld::Texts VoiceWorld::sent()
{
    say({Nlu::action("Show Cart Success")});
    EXPECT_TRUE(waitFor(Fence));
    Texts all = taken();
    if (!all.empty())
        all.pop_back();
    return all;
}

VoiceWorld::Texts VoiceWorld::taken()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(arrived_, {});
}

std::unique_ptr<TestSupport::RawPeer> VoiceWorld::newApp(const std::string& appId, const std::string& name)
{
    return std::make_unique<TestSupport::RawPeer>(appId,
                                                  [this, name](const TestSupport::RawMessage& message) {
                                                      const std::lock_guard lock(mutex_);
                                                      arrived_.push_back(textOf(name, message));
                                                      changed_.notify_all();
                                                  });
}

}  // namespace ServiceTest
