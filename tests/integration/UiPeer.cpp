#include "UiPeer.h"

#include <stdexcept>
#include <utility>

namespace ServiceTest {

using TestSupport::RawMessage;

namespace {

constexpr std::int32_t Succeeded = 0;
constexpr std::int32_t Failed = -1;

}  // namespace

std::string serviceOperation(const std::string& name)
{
    return "http://carvoy-service/appcontrol/operation/" + name;
}

std::string textOf(const RawMessage& message, const std::string& key)
{
    const auto found = message.extras.find(key);
    return found == message.extras.end() ? "" : found->second.get<std::string>();
}

std::vector<std::string> listOf(const RawMessage& message, const std::string& key)
{
    const auto found = message.extras.find(key);
    return found == message.extras.end() ? std::vector<std::string>{}
                                         : found->second.get<std::vector<std::string>>();
}

UiPeer::UiPeer() : peer_("org.tizen.carvoy") {}

RawMessage UiPeer::nextResult()
{
    return nextOf("result");
}

RawMessage UiPeer::nextPictureMessage()
{
    return nextOf("product_image");
}

Picture UiPeer::nextPicture()
{
    const RawMessage message = nextPictureMessage();
    return {textOf(message, "key_product_image_num"), textOf(message, "key_product_image_path")};
}

Picture UiPeer::nextRetailerPicture()
{
    const RawMessage message = nextOf("emart_product_image");
    return {textOf(message, "key_product_image_num"), textOf(message, "key_product_image_path"),
            textOf(message, "key_product_image_type")};
}

std::string UiPeer::confirm(const RawMessage& message)
{
    return peer_.reply(message.sender, message.id, Succeeded);
}

std::string UiPeer::refuse(const RawMessage& message)
{
    return peer_.reply(message.sender, message.id, Failed);
}

RawMessage UiPeer::next()
{
    auto message = peer_.nextLaunch();
    if (!message)
        throw std::runtime_error("no message came to the UI app");
    return std::move(*message);
}

RawMessage UiPeer::nextOf(const std::string& operation)
{
    RawMessage message = next();
    if (message.operation != serviceOperation(operation))
        throw std::runtime_error("the UI app got " + message.operation + " of picture \"" +
                                 textOf(message, "key_product_image_num") + "\", where " + operation +
                                 " was expected");
    return message;
}

}  // namespace ServiceTest
