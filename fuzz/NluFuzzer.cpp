// The assistant's answer for one command, from voice control's callback to the requests that it leads to.
#include <algorithm>
#include <cstdint>
#include <string>

#include "Constants.h"
#include "Demand.h"
#include "Json.h"
#include "SearchControl.h"
#include "Singleton.h"
#include "Surroundings.h"
#include "VoiceCommand.h"
#include "VoiceControl.h"

using namespace Carvoy;
using Fuzz::Json;

namespace {

vc_result_cb resultCallback;

const std::vector<std::string>& variantRefs()
{
    static const auto* const refs = new std::vector<std::string>{"ref-1", "ref-2", "ref-3"};
    return *refs;
}

// A client of voice control, and products to choose from.
bool begin()
{
    std::string products;
    for (const std::string& ref : variantRefs())
        products +=
            (products.empty() ? "" : ",") + (R"({"mbVariants":[{"productVariantRef":")" + ref + "\"}]}");
    DEMAND(Util::Singleton<SearchControl>::getInstance()->parseResult("{\"products\":[" + products + "]}") ==
           0);
    Util::Singleton<VoiceControl>::getInstance();
    DEMAND(resultCallback);
    return true;
}

std::string trimmed(const std::string& text)
{
    const size_t first = text.find_first_not_of(" \t\r\n\v");
    return first == std::string::npos ? ""
                                      : text.substr(first, text.find_last_not_of(" \t\r\n\v") + 1 - first);
}

void giveResult(const std::string& nlu)
{
    vc_cmd_s command;
    command.format = VC_CMD_FORMAT_ACTION;
    command.nlu = nlu;
    vc_cmd_list_s list{{&command}};
    resultCallback(VC_RESULT_EVENT_RESULT_SUCCESS, &list, "as spoken",
                   Util::Singleton<VoiceControl>::getInstance());
}

// The operation that an action leads to, by its name; empty for none.
std::string operationOf(const std::string& action)
{
    if (action == "Commerce Add To Cart")
        return OPERATION_CLICK_ADD_CART;
    if (action == "Commerce Check Out")
        return OPERATION_CLICK_CHECK_OUT;
    if (action == "Show Cart Success")
        return OPERATION_CLICK_CART_SUMMARY;
    return action == "Commerce Searched Item" ? OPERATION_SHOW_DETAILED_VIEW : "";
}

bool isCart(const std::string& operation)
{
    return operation == OPERATION_CLICK_ADD_CART || operation == OPERATION_CLICK_CHECK_OUT ||
           operation == OPERATION_CLICK_CART_SUMMARY;
}

// Nothing, one request about the cart, or a product of the last search and the end of the assistant's view.
void check(const std::vector<Fuzz::Message>& sent)
{
    if (sent.empty())
        return;
    DEMAND(sent[0]->appId == PARTNER_APP_ID);
    if (sent.size() == 1) {
        DEMAND(isCart(sent[0]->operation.value()) && sent[0]->extraData.keys().empty());
        return;
    }
    DEMAND(sent.size() == 2);
    DEMAND(sent[0]->operation == OPERATION_SHOW_DETAILED_VIEW);
    const std::string ref = Fuzz::textOf(sent[0], KEY_PRODUCT_VARIANT_REFS);
    DEMAND(std::count(variantRefs().begin(), variantRefs().end(), ref) == 1);
    DEMAND(sent[1]->appId == ASSISTANT_APP_ID && sent[1]->operation == OPERATION_CLOSE_APP);
    DEMAND(sent[1]->extraData.keys().empty());
}

// The same, by the strict reading of the answer.
void compare(const std::vector<Fuzz::Message>& sent, const Json& answer)
{
    const std::string operation = operationOf(trimmed(answer.member("actionName").text().value_or("")));
    if (operation != OPERATION_SHOW_DETAILED_VIEW) {
        DEMAND(sent.size() == (operation.empty() ? 0 : 1));
        DEMAND(sent.empty() || sent[0]->operation == operation);
        return;
    }
    const Json item = answer.member("actionData").member("representativeCommerceData");
    const long number = strtol(trimmed(item.member("id").text().value_or("")).c_str(), nullptr, 10);
    const bool isThere = number >= 1 && number <= static_cast<long>(variantRefs().size());
    DEMAND(sent.size() == (isThere ? 2 : 0));
    if (isThere)
        DEMAND(Fuzz::textOf(sent[0], KEY_PRODUCT_VARIANT_REFS) ==
               variantRefs()[static_cast<size_t>(number - 1)]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool isBegun = begin();
    DEMAND(isBegun);

    // A text of the bus ends at its first zero byte.
    const std::string nlu = std::string(reinterpret_cast<const char*>(data), size).c_str();
    giveResult(nlu);
    const std::vector<Fuzz::Message> sent = Fuzz::takeSent();
    check(sent);
    if (const Json answer(nlu); answer)
        compare(sent, answer);
    return 0;
}

// There is a recogniser, and it takes everything.
extern "C" {

int __wrap_vc_initialize()
{
    return VC_ERROR_NONE;
}

int __wrap_vc_prepare()
{
    return VC_ERROR_NONE;
}

int __wrap_vc_set_state_changed_cb(vc_state_changed_cb, void*)
{
    return VC_ERROR_NONE;
}

int __wrap_vc_set_service_state_changed_cb(vc_service_state_changed_cb, void*)
{
    return VC_ERROR_NONE;
}

int __wrap_vc_set_result_cb(vc_result_cb callback, void*)
{
    resultCallback = callback;
    return VC_ERROR_NONE;
}

int __wrap_vc_set_error_cb(vc_error_cb, void*)
{
    return VC_ERROR_NONE;
}

int __wrap_vc_set_current_language_changed_cb(vc_current_language_changed_cb, void*)
{
    return VC_ERROR_NONE;
}

}  // extern "C"
