#include "RetailerService.h"

#include "AppControl.h"
#include "Log.h"
#include "Names.h"
#include "SearchEmartControl.h"
#include "Singleton.h"

namespace Carvoy {

void RetailerService::onAppControl(app_control_h& request)
{
    LOG_I("RetailerService::onAppControl");
    Util::AppControlData data(request);
    const std::string operation = data.getOperation();

    // Whatever else arrives is ignored without a word, as by the service.
    if (operation == Appliance::OperationSearch) {
        search(data);
    } else if (operation == Appliance::OperationResult) {
        sendResult();
    }
}

// A term that the sender left out reads as an empty text, and the search then says what is wrong with it.
void RetailerService::search(Util::AppControlData& request)
{
    const std::string term = request.getExtraData(Appliance::KeySearchTerm);
    Util::Singleton<SearchEmartControl>::getInstance()->processEmartSearch(term);
}

// Also where nothing was searched yet, or the search failed: the UI app then gets a result without products,
// and has something to show.
void RetailerService::sendResult()
{
    Util::Singleton<SearchEmartControl>::getInstance()->sendEmartResultToUI();
}

void RetailerService::onTerminate()
{
    LOG_I("RetailerService::onTerminate");
    delete Util::Singleton<SearchEmartControl>::mInstance;
}

}  // namespace Carvoy
