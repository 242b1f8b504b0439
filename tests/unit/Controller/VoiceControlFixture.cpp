#include "VoiceControlFixture.h"

#include <utility>

#include "Products.h"
#include "Singleton.h"
#include "SiteValues.h"

using Carvoy::SearchControl;
using Carvoy::VoiceControl;
using TestSupport::Calls;
using TestSupport::VoiceStandIn;

void VoiceControlFixture::SetUp()
{
    SearchControlFixture::SetUp();
    Util::Singleton<SearchControl>::mInstance = search_.get();
    VoiceStandIn::reset();
    Calls::reset();
}

void VoiceControlFixture::TearDown()
{
    voice_.reset();
    VoiceStandIn::reset();
    SearchControl* const current = std::exchange(Util::Singleton<SearchControl>::mInstance, nullptr);
    if (current != search_.get())
        search_.reset(current);
    SearchControlFixture::TearDown();
}

void VoiceControlFixture::startVoice()
{
    voice_ = std::make_unique<VoiceControl>();
    Calls::reset();
}

VoiceControlFixture::Texts VoiceControlFixture::logOfStart()
{
    voice_ = std::make_unique<VoiceControl>();
    return logged();
}

VoiceControlFixture::Texts VoiceControlFixture::logOfEnd()
{
    Calls::reset();
    voice_.reset();
    return logged();
}

VoiceControlFixture::Texts VoiceControlFixture::clientCalls()
{
    Texts names;
    for (const TestSupport::Call& call : Calls::all()) {
        if (call.name.rfind("vc_", 0) == 0 && call.name.rfind("vc_cmd_", 0) != 0)
            names.push_back(call.name);
    }
    return names;
}

void VoiceControlFixture::searchFor(const Texts& variantRefs, const std::string& merchant)
{
    // With pictures that can be had: their thread has nothing to log.
    const std::string picture = addPicture("/picture.png", "picture");
    Texts products;
    for (const std::string& ref : variantRefs)
        products.push_back(R"({"imageUrl": ")" + picture + R"(", "mbVariants": [{"productVariantRef": ")" +
                           ref + "\"}]}");
    merchant_.answerSearch(200, Products::answer(products));
    ASSERT_EQ(Util::Singleton<SearchControl>::getInstance()->processSearch(merchant, "milk"), 0);
    ASSERT_EQ(Util::Singleton<SearchControl>::getInstance()->getVariantRefs(), variantRefs);
    Calls::reset();
}

void VoiceControlFixture::say(const Texts& nlus)
{
    std::vector<VoiceStandIn::Command> commands;
    for (const std::string& nlu : nlus)
        commands.push_back({nlu});
    ASSERT_TRUE(VoiceStandIn::giveResult(VC_RESULT_EVENT_RESULT_SUCCESS, "as spoken", commands));
}

VoiceControlFixture::Texts VoiceControlFixture::requests()
{
    settle();
    Texts texts;
    for (const TestSupport::Launch& launch : Calls::launches()) {
        if (launch.appId != CARVOY_PARTNER_APP_ID && launch.appId != "org.tizen.nuvex-da")
            continue;
        texts.push_back(launch.appId + ": " + launch.operation);
        for (const auto& [key, value] : launch.extras)
            texts.back() += " " + key + "=" + value;
        for (const auto& list : launch.lists)
            texts.back() += " " + list.first + "=[...]";
    }
    return texts;
}
