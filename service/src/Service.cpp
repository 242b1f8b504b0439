// The service's lifecycle, and the dispatch of what other apps ask of it. All of this runs on the main loop;
// the controllers that do the work are made here, and deleted here.
#include "Service.h"

#include "AppControl.h"
#include "Constants.h"
#include "DBControl.h"
#include "Log.h"
#include "SearchControl.h"
#include "Singleton.h"
#include "VoiceControl.h"

namespace Carvoy {

Service::Service() = default;

// The controllers end in onTerminate, in an order of their own.
Service::~Service() = default;

// A failure of the status store is no reason not to start: every search writes the same record, and the store
// may be back by then. The platform's answer to a refusal would be to end the service, and the appliance
// would have none.
bool Service::onCreate()
{
    LOG_I("Service::onCreate");
    Util::Singleton<VoiceControl>::getInstance();
    // No search has been made in this run yet. What an earlier run knew of login and link stays.
    DBControl::updateStatus(-1, -1, 0, -1, -1);
    return true;
}

void Service::onAppControl(app_control_h& request)
{
    LOG_I("Service::onAppControl");
    Util::AppControlData data(request);
    const std::string operation = data.getOperation();

    // Whole texts are compared, and the first that is equal decides. Whatever else
    // arrives is ignored without a word: an app may send all its messages to all that it knows.
    if (operation == OPERATION_SEARCH)
        search(data);
    else if (operation == OPERATION_RESULT)
        sendResult();
}

// An extra that the sender left out reads as an empty text, and the search then says what is wrong with it.
void Service::search(Util::AppControlData& request)
{
    const std::string merchant = request.getExtraData(KEY_MERCHANT);
    const std::string searchTerm = request.getExtraData(KEY_SEARCH_TERM);

    Util::Singleton<SearchControl>::getInstance()->processSearch(merchant, searchTerm);
}

// Also where nothing was searched yet, or the search failed: the UI app then gets a result without products,
// and has something to show.
void Service::sendResult()
{
    Util::Singleton<SearchControl>::getInstance()->sendResultToUI();
}

// Voice goes first: from then on nobody reads the last search's result.
//
// The pointers stay as they are: whoever asked for a controller behind this point would have to see that in
// the debugger rather than get a second one.
void Service::onTerminate()
{
    LOG_I("Service::onTerminate");
    delete Util::Singleton<VoiceControl>::mInstance;
    delete Util::Singleton<SearchControl>::mInstance;
}

}  // namespace Carvoy
