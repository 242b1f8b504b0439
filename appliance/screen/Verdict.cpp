#include "Verdict.h"

#include <algorithm>

namespace Screen {

namespace {

const char NoProducts[] = "empty json array";
const char NotLoggedIn[] = "Not logged in at the retailer";

bool isOfMainThread(const Appliance::LogLine& line)
{
    return Appliance::threadOf(line) == line.pid;
}

// Its service makes no search for a user who is not logged in, and calls that no error.
bool isLoggedOut(const Ui::CardContent& card, const std::optional<Appliance::StatusRecord>& record)
{
    return card.source == Ui::Source::Retailer && record && record->front() == 0;
}

}  // namespace

void SearchWitness::begin()
{
    notSent_.clear();
    errors_.clear();
}

void SearchWitness::noteNotSent(const std::string& reason)
{
    notSent_ = reason;
}

bool SearchWitness::note(const Appliance::LogLine& line)
{
    const bool counts =
        Appliance::isServiceError(line) && isOfMainThread(line) && errors_.size() < ReasonsKept;
    if (counts) {
        errors_.push_back(Appliance::messageOf(line));
    }
    return counts;
}

Verdict SearchWitness::verdictOn(const Ui::CardContent& card,
                                 const std::optional<Appliance::StatusRecord>& record) const
{
    if (!notSent_.empty()) {
        return {Outcome::Failed, {notSent_}};
    }
    if (card.state != Ui::CardState::Shown) {
        return {};
    }
    if (!card.products.empty()) {
        return {Outcome::Found, {}};
    }
    const bool foundNone = std::all_of(errors_.begin(), errors_.end(),
                                       [](const std::string& error) { return error == NoProducts; });
    if (!foundNone) {
        return {Outcome::Failed, errors_};
    }
    return errors_.empty() && isLoggedOut(card, record) ? Verdict{Outcome::Failed, {NotLoggedIn}}
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
