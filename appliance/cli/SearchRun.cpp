#include "SearchRun.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "Exit.h"
#include "FolderWatch.h"
#include "GivenUpPicture.h"
#include "LogFollower.h"
#include "LogLine.h"
#include "LoginFile.h"
#include "Names.h"
#include "RetailerStock.h"
#include "Session.h"

namespace Tool {

namespace {

using namespace std::chrono_literals;

using Clock = std::chrono::steady_clock;

// After this time the service gives up a transfer, and a little more.
constexpr std::chrono::milliseconds TransferLimit = 8s;

using Appliance::LogLine;
using Ui::PictureKind;
using Ui::Source;

const std::string& pathOf(const Ui::Product& product, PictureKind kind)
{
    return kind == PictureKind::Badge ? product.badge : product.picture;
}

bool isAtRetailer(const SearchOptions& options)
{
    return options.source == Source::Retailer;
}

// Nothing where that cannot be told: then every service's lines count.
std::optional<pid_t> processOf(const Root& root, Source source)
{
    const std::optional<Session> session = findSession(root);
    const char* name = source == Source::Retailer ? "carvoy-retailer" : "carvoy-service";
    const bool isKnown = session && session->processes.count(name) > 0;
    return isKnown ? std::optional<pid_t>(session->processes.at(name)) : std::nullopt;
}

// All but the main one, which makes the searches; none where that cannot be told.
std::set<int> downloadThreadsOf(std::optional<pid_t> process)
{
    std::set<int> threads;
    if (!process) {
        return threads;
    }
    try {
        const std::string folder = "/proc/" + std::to_string(*process) + "/task";
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            threads.insert(std::atoi(entry.path().filename().c_str()));
        }
    } catch (const std::filesystem::filesystem_error&) {
        // The service has just ended, and asking it will tell.
    }
    threads.erase(*process);
    return threads;
}

class Search {
  public:
    Search(EventLoop& loop, const Root& root, const SearchOptions& options, SearchListener& listener);

    SearchResult run();

  private:
    void ask();
    void lookAtCard();
    void noteLine(const std::string& text);
    void noteError(const LogLine& line);
    void waitForPictures();
    void believeDoubts();
    void report();
    void reportPicture(const PictureName& picture);
    bool isShown() const { return result_.card.state == Ui::CardState::Shown; }
    bool isComplete() const { return completeProducts() == result_.card.products.size(); }
    bool isCompleteButForDoubts() const;
    std::size_t completeProducts() const;
    bool isSettled(const PictureName& picture) const;
    bool isAwaited(const PictureName& picture) const;
    void waitFor(const std::function<bool()>& done, const std::string& what);
    std::chrono::milliseconds timeLeft() const;

    EventLoop& loop_;
    const Root& root_;
    const SearchOptions& options_;
    SearchListener& listener_;
    Clock::time_point end_;
    int sequence_ = 0;
    bool reported_ = false;
    std::unique_ptr<LoginHold> login_;            // at the retailer, until the lists are shown
    std::unique_ptr<const RetailerStock> stock_;  // of the retailer
    std::optional<pid_t> service_;
    // Threads of earlier searches go on with this search's pictures once they are done with what they were
    // at: what they give up may be this search's or not.
    std::set<int> olderThreads_;
    std::map<PictureName, std::string> doubts_;  // given up by one of them
    std::map<int, std::string> causes_;          // the last error of each thread
    std::set<PictureName> settled_;              // came or given up, once told
    std::set<PictureName> came_;                 // of these
    SearchResult result_;
    Appliance::LogFollower log_;
    Appliance::FolderWatch screen_;
};

Search::Search(EventLoop& loop, const Root& root, const SearchOptions& options, SearchListener& listener)
    : loop_(loop),
      root_(root),
      options_(options),
      listener_(listener),
      end_(Clock::now() + options.limit),
      login_(isAtRetailer(options)
                 ? std::make_unique<LoginHold>(loop, loginFile(root), options.loggedOut, options.limit,
                                               [&listener] { listener.onQueued(); })
                 : nullptr),
      stock_(isAtRetailer(options) ? std::make_unique<RetailerStock>() : nullptr),
      service_(processOf(root, options.source)),
      olderThreads_(downloadThreadsOf(service_)),
      log_(root.platformLog(), Appliance::endOf(root.platformLog()),
           [this](const std::string& line) { noteLine(line); }),
      screen_(root.screenFolder(), [this](const std::string& name) {
          if (name.empty() || name == root_.cardFile().filename()) {
              lookAtCard();
          }
      })
{
}

SearchResult Search::run()
{
    ask();
    listener_.onAsked();
    lookAtCard();
    waitFor([this] { return isShown(); }, "no product list came in time");
    if (login_) {
        result_.loginTrouble = result_.found() ? "" : login_->whyLoggedOut().value_or("");
        login_.reset();
    }
    if (options_.waitForPictures) {
        waitForPictures();
    }
    log_.readOn();
    return result_;
}

// The search's own thread comes to each picture in turn, and leaves out only what another has fetched for
// this search. When nothing else is left it is therefore at the pictures in doubt, or has left them out.
void Search::waitForPictures()
{
    waitFor([this] { return isCompleteButForDoubts(); }, "not every picture came in time");
    const auto limit = std::min<std::chrono::milliseconds>(timeLeft(), TransferLimit * doubts_.size());
    if (!isComplete() &&
        loop_.runUntil([this] { return isComplete(); }, limit) == EventLoop::Outcome::Interrupted) {
        throw Failure(Exit::Interrupted, "interrupted");
    }
    believeDoubts();
}

void Search::believeDoubts()
{
    result_.picturesGivenUp.merge(doubts_);
    report();
}

void Search::ask()
{
    Appliance::Extras extras;
    extras.texts = {{Appliance::KeySource, Ui::nameOf(options_.source)},
                    {Appliance::KeySearchTerm, options_.term}};
    if (!isAtRetailer(options_)) {
        extras.texts[Appliance::KeyMerchant] = options_.merchant;
    }
    sequence_ = askUi(loop_, Appliance::OperationSearch, extras, timeLeft()).sequence;
}

void Search::lookAtCard()
{
    const std::optional<Ui::CardContent> card = currentCard(root_);
    if (!card || sequence_ == 0 || card->sequence < sequence_) {
        return;
    }
    if (card->sequence > sequence_) {
        throw Failure(Exit::Failed, "a newer search took the card");
    }
    result_.card = *card;
    report();
}

void Search::noteLine(const std::string& text)
{
    const std::optional<LogLine> line = Appliance::parseLogLine(text);
    if (!line || !isServiceError(*line) || line->pid != service_.value_or(line->pid)) {
        return;
    }
    noteError(*line);
    report();
}

void Search::noteError(const LogLine& line)
{
    const int thread = threadOf(line).value_or(0);
    const bool isOlder = olderThreads_.count(thread) > 0;
    std::string& cause = causes_[thread];
    const auto picture = pictureGivenUp(line);
    if (picture && picture->source == options_.source) {
        auto& givenUp = isOlder ? doubts_ : result_.picturesGivenUp;
        givenUp[{picture->index, picture->kind}] = messageOf(line) + (cause.empty() ? "" : ": " + cause);
    }
    cause = messageOf(line);
    if (!isOlder) {
        result_.errors.push_back(cause);
    }
}

// Pictures may be given up before the lists are shown; nothing is told of them until then.
void Search::report()
{
    if (!isShown()) {
        return;
    }
    if (!reported_) {
        reported_ = true;
        listener_.onShown(result_.card);
    }
    for (std::size_t i = 0; i < result_.card.products.size(); ++i) {
        reportPicture({i, PictureKind::Product});
        reportPicture({i, PictureKind::Badge});
    }
    if (!isComplete()) {
        listener_.onPicturesAwaited(completeProducts(), result_.card.products.size());
    }
}

void Search::reportPicture(const PictureName& picture)
{
    const std::string& path = pathOf(result_.card.products[picture.first], picture.second);
    if (!path.empty()) {
        result_.picturesGivenUp.erase(picture);
        doubts_.erase(picture);
        settled_.insert(picture);
        if (came_.insert(picture).second) {
            listener_.onPicture(picture, path);
        }
        return;
    }
    const auto givenUp = result_.picturesGivenUp.find(picture);
    if (givenUp != result_.picturesGivenUp.end() && settled_.insert(picture).second) {
        listener_.onPictureGivenUp(picture, givenUp->second);
    }
}

bool Search::isCompleteButForDoubts() const
{
    const auto isKnown = [this](const PictureName& name) {
        return isSettled(name) || doubts_.count(name) > 0;
    };
    for (std::size_t i = 0; i < result_.card.products.size(); ++i) {
        if (!isKnown({i, PictureKind::Product}) || !isKnown({i, PictureKind::Badge})) {
            return false;
        }
    }
    return true;
}

std::size_t Search::completeProducts() const
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < result_.card.products.size(); ++i) {
        const bool isDone = isSettled({i, PictureKind::Product}) && isSettled({i, PictureKind::Badge});
        count += isDone ? 1 : 0;
    }
    return count;
}

bool Search::isSettled(const PictureName& picture) const
{
    return settled_.count(picture) > 0 || !isAwaited(picture);
}

// The service tries a picture for each product, and tells where it gives one up.
bool Search::isAwaited(const PictureName& picture) const
{
    const auto [index, kind] = picture;
    return stock_ ? stock_->has(result_.card.products[index].id, kind) : kind == PictureKind::Product;
}

void Search::waitFor(const std::function<bool()>& done, const std::string& what)
{
    switch (loop_.runUntil(done, timeLeft())) {
        case EventLoop::Outcome::Done:
            return;
        case EventLoop::Outcome::TimedOut:
            throw Failure(Exit::TimedOut, what);
        case EventLoop::Outcome::Interrupted:
            throw Failure(Exit::Interrupted, "interrupted");
    }
}

std::chrono::milliseconds Search::timeLeft() const
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end_ - Clock::now());
    return std::max(left, std::chrono::milliseconds(1));
}

}  // namespace

SearchResult runSearch(EventLoop& loop, const Root& root, const SearchOptions& options,
                       SearchListener& listener)
{
    return Search(loop, root, options, listener).run();
}

}  // namespace Tool
