// Registration with voice control, and the way from an utterance to a request. All of this runs on the main
// loop, as the searches do: none can change the last result while a command reads it.
#include "VoiceControl.h"

#include <cstdlib>
#include <sstream>
#include <vector>

#include <voice_control_command_expand.h>

#include "AppControl.h"
#include "Constants.h"
#include "Log.h"
#include "ResponseParser.h"
#include "SearchControl.h"
#include "Singleton.h"
#include "VoiceNames.h"

namespace Carvoy {

using namespace VoiceNames;
using ResponseParser::trimmedText;

namespace {

// What a command can lead to. Only the detailed view has extra data, those of the product.
Util::AppControlData addToCart, checkOut, cartSummary;
Util::AppControlData detailedView, closeApp;

// Products are counted from 1. A position that the last search does not have chooses nothing.
void sendChosen(const std::string& id)
{
    int number = 0;
    std::istringstream(id) >> number;

    const SearchControl* search = Util::Singleton<SearchControl>::getInstance();
    const std::vector<std::string>& refs = search->getVariantRefs();
    if (number < 1 || static_cast<size_t>(number) > refs.size())
        return;

    detailedView.clearExtraData();
    detailedView.addExtraData(KEY_MERCHANT, search->getMerchant());
    detailedView.addExtraData(KEY_PRODUCT_VARIANT_REFS, refs[number - 1]);
    Util::AppControl::performAppControl(detailedView);
    Util::AppControl::performAppControl(closeApp);
}

}  // namespace

VoiceControl::VoiceControl()
{
    LOG_D("");
    mCommandList = nullptr;
    initVoiceControl();

    // Who gets each request, and what it asks for: the same for all commands. The three for the cart never
    // change from here on.
    addToCart.setPackageName(PARTNER_APP_ID);
    addToCart.setOperation(OPERATION_CLICK_ADD_CART);
    checkOut.setPackageName(PARTNER_APP_ID);
    checkOut.setOperation(OPERATION_CLICK_CHECK_OUT);
    cartSummary.setPackageName(PARTNER_APP_ID);
    cartSummary.setOperation(OPERATION_CLICK_CART_SUMMARY);
    detailedView.setPackageName(PARTNER_APP_ID);
    detailedView.setOperation(OPERATION_SHOW_DETAILED_VIEW);
    closeApp.setPackageName(ASSISTANT_APP_ID);
    closeApp.setOperation(OPERATION_CLOSE_APP);
}

VoiceControl::~VoiceControl()
{
    deinitVoiceControl();
}

// A service without voice still searches: whatever fails here is logged, and that is all.
//
// The platform becomes ready in its own time, and calls back on the main loop's next turn at the earliest. By
// then the command list is there for the state callback to hand over, and the constructor has filled in the
// requests that a result leads to.
void VoiceControl::initVoiceControl()
{
    LOG_D("");

    // From here on the client is known to the platform, and can be taken back.
    if (vc_initialize() != VC_ERROR_NONE) {
        LOG_E("[ERROR] Fail to initialize");
        return;
    }

    // The platform takes callbacks now only: from initialised until ready.
    if (vc_set_state_changed_cb(_vc_state_changed_cb, this) != VC_ERROR_NONE) {
        LOG_E("[ERROR] Fail to set state changed cb");
        return;
    }

    if (vc_set_service_state_changed_cb(_vc_service_state_changed_cb, this) != VC_ERROR_NONE) {
        LOG_E("[ERROR] Fail to set service state changed cb");
        return;
    }

    if (vc_set_result_cb(_vc_result_cb, this) != VC_ERROR_NONE) {
        LOG_E("[ERROR] Fail to set result cb");
        return;
    }
    if (vc_set_error_cb(_vc_error_cb, this) != VC_ERROR_NONE) {
        LOG_E("[ERROR] Fail to set error cb");
        return;
    }

    if (vc_set_current_language_changed_cb(_vc_language_changed_cb, nullptr) != VC_ERROR_NONE) {
        LOG_E("[ERROR] Fail to set language changed cb");
        return;
    }

    if (vc_prepare() != VC_ERROR_NONE) {
        LOG_E("[ERROR] Fail to prepare");
        return;
    }

    if (_vc_create_command_list() != 0)
        LOG_E("[ERROR] Fail to create command list");
}

// What the first six calls return means nothing: from a client that is ready the platform takes back the
// commands, but not the callbacks. Deinitialising drops them all, with everything that has not been delivered
// yet, so that none is called for an object that is gone.
void VoiceControl::deinitVoiceControl()
{
    LOG_D("");
    vc_unset_command_list(VC_COMMAND_TYPE_BACKGROUND);
    vc_unset_state_changed_cb();
    vc_unset_service_state_changed_cb();
    vc_unset_result_cb();
    vc_unset_current_language_changed_cb();
    vc_unset_error_cb();

    // Where the initialisation failed, or the recogniser has moved the client to another state, some of these
    // have nothing to undo. They say so, which does no harm, and the next one is made: what can be taken back
    // is.
    const bool withCommands = true;
    if (const int error = vc_cmd_list_destroy(mCommandList, withCommands); error != VC_ERROR_NONE)
        LOG_E("vc_cmd_list_destroy: %s", vcError(error));

    if (const int error = vc_unprepare(); error != VC_ERROR_NONE)
        LOG_E("vc_unprepare: %s", vcError(error));
    if (const int error = vc_deinitialize(); error != VC_ERROR_NONE)
        LOG_E("vc_deinitialize: %s", vcError(error));
}

int VoiceControl::_vc_create_command_list()
{
    LOG_D("==== Create Command List ====");
    const std::vector<std::string> texts = {"#org.tizen.commerce"};

    // The list owns the commands that got into it, also where a later one fails.
    if (vc_cmd_list_create(&mCommandList) != VC_ERROR_NONE) {
        LOG_E("[ERROR] Fail to cmd list create");
        return -1;
    }

    for (const std::string& text : texts) {
        vc_cmd_h command = nullptr;

        if (vc_cmd_create(&command) != VC_ERROR_NONE) {
            LOG_E("[ERROR] Fail to cmd create");
            return -1;
        }
        if (vc_cmd_set_command(command, text.c_str()) != VC_ERROR_NONE) {
            LOG_E("[ERROR] Fail to set command");
            vc_cmd_destroy(command);
            return -1;
        }
        if (vc_cmd_set_type(command, VC_COMMAND_TYPE_BACKGROUND) != VC_ERROR_NONE) {
            LOG_E("[ERROR] Fail to set type");
            vc_cmd_destroy(command);
            return -1;
        }
        if (vc_cmd_set_format(command, VC_CMD_FORMAT_ACTION) != VC_ERROR_NONE) {
            LOG_E("[ERROR] Fail to set format");
            vc_cmd_destroy(command);
            return -1;
        }
        if (vc_cmd_list_add(mCommandList, command) != VC_ERROR_NONE) {
            LOG_E("[ERROR] Fail to list add");
            vc_cmd_destroy(command);
            return -1;
        }
    }

    return 0;
}

// Name and commands are handed over on the way up from Initialized only, and on each. Ready reached from any
// other state, as when the recogniser was started anew, hands over nothing.
//
// What the two calls return could not be acted on: what the platform refuses now it would refuse again, and
// the service does without being called by its name.
void VoiceControl::_vc_state_changed_cb(vc_state_e from, vc_state_e to, void* data)
{
    LOG_D("==== State is changed ====");
    LOG_D("Previous(%s) -> Current(%s)", clientState(from), clientState(to));

    if (from == VC_STATE_INITIALIZED && to == VC_STATE_READY) {
        LOG_D("set invocation name");
        vc_set_invocation_name("Carvoy");

        LOG_D("set command list");
        vc_set_command_list(static_cast<VoiceControl*>(data)->mCommandList, VC_COMMAND_TYPE_BACKGROUND);
    }
}

void VoiceControl::_vc_service_state_changed_cb(vc_service_state_e from, vc_service_state_e to, void*)
{
    LOG_D("==== Service state is changed ====");
    LOG_D("Previous(%s) -> Current(%s)", serviceState(from), serviceState(to));
}

void VoiceControl::_vc_result_cb(vc_result_event_e event, vc_cmd_list_h list, const char* text, void* data)
{
    LOG_D("==== Result cb ====");

    if (event == VC_RESULT_EVENT_REJECTED) {
        LOG_D("Rejected event");
        return;
    }
    if (!text)
        return;
    LOG_D("Result Text - %s", text);

    const auto handle = [](vc_cmd_h command, void* userData) {
        char* nlu = nullptr;

        const int error = vc_cmd_get_nlu_json(command, &nlu);
        if (error != VC_ERROR_NONE) {
            LOG_E("vc_cmd_get_nlu_json() failed: [%s]", vcError(error));
        } else {
            // Handled whole, though a log may cut it.
            LOG_D("nlu: %s", nlu);
            _handle_nlu_result(nlu, userData);
        }
        free(nlu);
        return true;
    };
    const int error = vc_cmd_list_foreach_commands(list, handle, data);
    if (error != VC_ERROR_NONE)
        LOG_E("vc_cmd_list_foreach_commands() failed: [%s]", vcError(error));
}

// There is no recovery: the platform tells, and goes on as it can.
void VoiceControl::_vc_error_cb(vc_error_e reason, void*)
{
    LOG_E("==== vc error - %s ====", vcError(reason));
}

void VoiceControl::_vc_language_changed_cb(const char* from, const char* to, void*)
{
    LOG_D("Language is changed (%s) to (%s)", from, to);
}

// Voice control hands the text over as it came, so what is wrong with it shows here, and ends only this
// command.
void VoiceControl::_handle_nlu_result(const char* nlu, void*)
{
    ndp_response_data_h parsed = nullptr;

    int code = ndp_response_data_parse(nlu, &parsed);
    if (code != NDP_ERROR_NONE) {
        LOG_E("ndp_response_data_parse() failed: [%s]", ndpError(code));
        return;
    }
    const ResponseParser::Response response(parsed);

    const std::string action = trimmedText(ndp_response_data_get_action_name, parsed);

    if (action == "Commerce Add To Cart") {
        LOG_I("Send [%s]", addToCart.getOperation().c_str());
        Util::AppControl::performAppControl(addToCart);
    }
    if (action == "Commerce Check Out") {
        LOG_I("Send [%s]", checkOut.getOperation().c_str());
        Util::AppControl::performAppControl(checkOut);
    }
    if (action == "Show Cart Success") {
        LOG_I("Send [%s]", cartSummary.getOperation().c_str());
        Util::AppControl::performAppControl(cartSummary);
    }
    if (action == "Commerce Searched Item") {
        LOG_I("Send [%s]", detailedView.getOperation().c_str());
        ndp_action_data_h actionData = nullptr;
        ndp_commerce_data_h commerceData = nullptr;

        code = ndp_response_data_get_action_data(parsed, &actionData);
        if (code != NDP_ERROR_NONE) {
            LOG_E("ndp_response_data_get_action_data() failed: [%s]", ndpError(code));
            return;
        }
        code = ndp_commerce_action_data_get_representative_commerce_data(actionData, &commerceData);
        if (code != NDP_ERROR_NONE) {
            LOG_E("ndp_commerce_action_data_get_representative_commerce_data() failed: [%s]", ndpError(code));
            return;
        }
        sendChosen(trimmedText(ndp_commerce_data_get_id, commerceData));
    }
}

}  // namespace Carvoy
