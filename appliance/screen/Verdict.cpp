#include "Verdict.h"

#include <algorithm>

namespace Screen {

namespace {

const char ServiceTag[] = "carvoy-service";  // of both services
const char NoProducts[] = "empty json array";
const char NotLoggedIn[] = "Not logged in at the retailer";

// Its service makes no search for a user who is not logged in, and calls that no error.
bool isLoggedOut(const Ui::CardContent& card, const std::optional<Appliance::StatusRecord>& record)
{
    return card.source == Ui::Source::Retailer && record && record->front() == 0;
}

// The services' function that begins each request, and those that send the lists.
const char TakesRequest[] = "onAppControl";
const char SendsLists[] = "sendResultToUI";
const char SendsRetailerLists[] = "sendEmartResultToUI";

std::optional<Ui::Source> sentBy(const std::string& function)
{
    if (function == SendsLists) {
        return Ui::Source::Merchant;
    }
    return function == SendsRetailerLists ? std::optional<Ui::Source>(Ui::Source::Retailer) : std::nullopt;
}

}  // namespace

void SearchWitness::note(const Appliance::LogLine& line)
{
    const auto place = Appliance::placeOf(line);
    if (line.tag != ServiceTag || !place || place->thread != line.pid) {
        return;
    }
    Process& process = processOf(line.pid);
    if (place->function == TakesRequest) {
        beginRequest(process);
    } else if (const auto source = sentBy(place->function)) {
        process.sendsLists = true;
        answered_.at(static_cast<std::size_t>(*source)) = process.lastSearch;
    } else if (Appliance::isServiceError(line) && process.errors.size() < ReasonsKept) {
        process.errors.push_back(Appliance::messageOf(line));
    }
}

SearchWitness::Process& SearchWitness::processOf(int pid)
{
    if (processes_.count(pid) == 0 && processes_.size() >= ProcessesKept) {
        processes_.clear();  // of services that were started again and again
    }
    return processes_[pid];
}

void SearchWitness::beginRequest(Process& process) const
{
    if (!process.sendsLists) {
        process.lastSearch = process.errors;
    }
    process.errors.clear();
    process.sendsLists = false;
}

Verdict SearchWitness::verdictOn(const Ui::CardContent& card,
                                 const std::optional<Appliance::StatusRecord>& record) const
{
    if (card.state != Ui::CardState::Shown) {
        return {};
    }
    if (!card.products.empty()) {
        return {Outcome::Found, {}};
    }
    const Errors& errors = answered_.at(static_cast<std::size_t>(card.source));
    const bool foundNone = std::all_of(errors.begin(), errors.end(),
                                       [](const std::string& error) { return error == NoProducts; });
    if (!foundNone) {
        return {Outcome::Failed, errors};
    }
    return errors.empty() && isLoggedOut(card, record) ? Verdict{Outcome::Failed, {NotLoggedIn}}
                                                       : Verdict{Outcome::Nothing, {}};
}

const char* nameOf(Outcome outcome)
{
    switch (outcome) {
        case Outcome::None:
            return "";
        case Outcome::Found:
            return "found";
        case Outcome::Nothing:
            return "nothing";
        case Outcome::Failed:
            return "failed";
    }
    return "";
}

}  // namespace Screen
