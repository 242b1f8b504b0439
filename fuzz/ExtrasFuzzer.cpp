// A request of another app, from the extras of a message on the bus to the search that it leads to.
#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "AppControl.h"
#include "Bytes.h"
#include "Constants.h"
#include "Demand.h"
#include "SearchControl.h"
#include "Service.h"
#include "Singleton.h"
#include "Surroundings.h"
#include "Wire.h"

// The library exports it, for its variants, and has it in none of its headers: a message without a
// connection.
namespace sdbus {
PlainMessage createPlainMessage();
}

using namespace Carvoy;
using Fuzz::Bytes;

namespace {

using Texts = std::vector<std::string>;

/** What was put into a message: what there is to be read out of it. */
struct Extras {
    std::map<std::string, std::variant<std::string, Texts>> values;
    bool hasOthers = false;  // of types that a message must not have
};

std::string key(Bytes& bytes)
{
    static const Texts known = {KEY_MERCHANT, KEY_SEARCH_TERM, "__AUL_STARTTIME__", "__APP_SVC_PKG_NAME__",
                                ""};
    const unsigned choice = bytes.number();
    return choice < known.size() ? known[choice] : bytes.text();
}

Texts texts(Bytes& bytes)
{
    Texts list(bytes.number() % 8);
    for (std::string& text : list)
        text = bytes.text();
    return list;
}

template <typename Value>
void append(sdbus::Message& message, const char* type, const Value& value)
{
    message.openVariant(type);
    message << value;
    message.closeVariant();
}

// Most values are of the two types that are allowed, or else no message would come through.
void appendValue(sdbus::Message& message, Bytes& bytes, const std::string& key, Extras& extras)
{
    const unsigned kind = bytes.number() % 64;
    if (kind < 40) {
        extras.values[key] = bytes.text();
        append(message, "s", std::get<std::string>(extras.values[key]));
        return;
    }
    if (kind < 60) {
        extras.values[key] = texts(bytes);
        append(message, "as", std::get<Texts>(extras.values[key]));
        return;
    }
    extras.hasOthers = true;
    if (kind == 60)
        append(message, "i", static_cast<int32_t>(bytes.number()));
    else if (kind == 61)
        append(message, "v", sdbus::Variant(bytes.text()));
    else if (kind == 62)
        append(message, "ay", std::vector<uint8_t>(bytes.number()));
    else
        append(message, "a{ss}", std::map<std::string, std::string>{{bytes.text(), bytes.text()}});
}

Extras appendExtras(sdbus::Message& message, Bytes& bytes)
{
    Extras extras;
    message.openContainer("{sv}");
    while (!bytes.empty()) {
        message.openDictEntry("sv");
        const std::string name = key(bytes);
        message << name;
        appendValue(message, bytes, name, extras);
        message.closeDictEntry();
    }
    message.closeContainer();
    message.seal();
    message.rewind(true);
    return extras;
}

// What of it a message of the service's own must hold: all but what belongs to the platform.
void check(app_control_h request, Extras extras)
{
    const Util::AppControlData data(request);
    size_t count = 0;
    for (const auto& [name, value] : extras.values) {
        if (name.empty() || HostPlatform::isReservedKey(name))
            continue;
        ++count;
        if (const auto* text = std::get_if<std::string>(&value))
            DEMAND(data.getExtraDataMap().at(name) == *text);
        else
            DEMAND(data.getExtraVectorDataMap().at(name) == std::get<Texts>(value));
    }
    DEMAND(data.getExtraDataMap().size() + data.getExtraVectorDataMap().size() == count);
    DEMAND(data.getPackageName() == request->appId.value_or(""));
    DEMAND(data.getOperation() == request->operation && data.getUri() == request->uri.value_or(""));
}

std::string textExtra(const Extras& extras, const std::string& name)
{
    const auto found = extras.values.find(name);
    const auto* text = found == extras.values.end() ? nullptr : std::get_if<std::string>(&found->second);
    return text ? *text : "";
}

std::string decoded(const std::string& url)
{
    int length = 0;
    char* const text = curl_easy_unescape(nullptr, url.data(), static_cast<int>(url.size()), &length);
    std::string copy(text, static_cast<size_t>(length));
    curl_free(text);
    return copy;
}

// Nothing of what another app said gets out of its place in the address.
void checkSearch(const std::vector<Fuzz::Request>& requests, const Extras& extras)
{
    const std::string merchant = textExtra(extras, KEY_MERCHANT);
    const std::string term = textExtra(extras, KEY_SEARCH_TERM);
    const bool isAsked = !merchant.empty() && !term.empty();
    DEMAND(requests.size() == (isAsked ? 1 : 0));
    if (!isAsked)
        return;
    const std::string& url = requests[0].url;
    DEMAND(std::count(url.begin(), url.end(), '&') == 3 && std::count(url.begin(), url.end(), '?') == 1);
    DEMAND(url.find_first_of(" #\"<>\r\n\\") == std::string::npos);
    DEMAND(decoded(url) == MERCHANT_BRIDGE_SEARCH_URL + "?merchant=" + merchant + "&query=" + term +
                               "&searchBy=full&pageSize=6");
}

// What the UI app is told of a search that failed: what was looked for.
void checkResult(const std::vector<Fuzz::Message>& sent, const std::string& merchant, const std::string& term)
{
    DEMAND(sent.size() == 1 && sent[0]->appId == UI_APP_ID && sent[0]->operation == OPERATION_RESULT);
    DEMAND(Fuzz::textOf(sent[0], KEY_MERCHANT) == merchant);
    DEMAND(Fuzz::textOf(sent[0], KEY_SEARCH_TERM) == term);
}

std::string operation(Bytes& bytes)
{
    const unsigned choice = bytes.number() % 4;
    if (choice == 3)
        return bytes.text();
    return choice == 2 ? OPERATION_RESULT : OPERATION_SEARCH;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool hasTokens = [] {
        Fuzz::writeFile(PARTNER_TOKEN_FILE, "session,access\n", 15);
        Fuzz::answerTransfers(CURLE_OK, 500, "");
        return true;
    }();
    DEMAND(hasTokens);

    Bytes bytes(data, size);
    app_control_s request;
    request.operation = operation(bytes);
    request.appId = bytes.text();
    request.uri = bytes.text();
    auto message = sdbus::createPlainMessage();
    const Extras extras = appendExtras(message, bytes);
    try {
        request.extraData = HostPlatform::Wire::readExtraData(message);
        DEMAND(!extras.hasOthers);
    } catch (const sdbus::Error&) {
        DEMAND(extras.hasOthers);
        return 0;
    }
    check(&request, extras);

    app_control_h handle = &request;
    Service().onAppControl(handle);
    if (request.operation == OPERATION_SEARCH) {
        checkSearch(Fuzz::takeRequests(), extras);
        DEMAND(Util::Singleton<SearchControl>::getInstance()->sendResultToUI() == 0);
        checkResult(Fuzz::takeSent(), textExtra(extras, KEY_MERCHANT), textExtra(extras, KEY_SEARCH_TERM));
    }
    DEMAND(Fuzz::takeSent().size() == (request.operation == OPERATION_RESULT ? 1 : 0));
    DEMAND(Fuzz::takeRequests().empty());
    return 0;
}
