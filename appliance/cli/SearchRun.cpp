#include "SearchRun.h"

#include <set>

#include "Exit.h"
#include "FolderWatch.h"
#include "LogFollower.h"
#include "LogLine.h"
#include "Names.h"

namespace Tool {

namespace {

using Clock = std::chrono::steady_clock;

class Search {
  public:
    Search(EventLoop& loop, const Root& root, const SearchOptions& options, SearchListener& listener);

    SearchResult run();

  private:
    void ask();
    void lookAtCard();
    void noteLine(const std::string& text);
    void report();
    void reportPicture(std::size_t index);
    bool isShown() const { return result_.card.state == Ui::CardState::Shown; }
    bool isComplete() const { return settled_.size() == result_.card.products.size(); }
    void waitFor(const std::function<bool()>& done, const std::string& what);
    std::chrono::milliseconds timeLeft() const;

    EventLoop& loop_;
    const Root& root_;
    const SearchOptions& options_;
    SearchListener& listener_;
    Clock::time_point end_;
    int sequence_ = 0;
    bool reported_ = false;
    std::set<std::size_t> settled_;  // positions whose picture came or was given up, once told
    SearchResult result_;
    LogFollower log_;
    FolderWatch screen_;
};

Search::Search(EventLoop& loop, const Root& root, const SearchOptions& options, SearchListener& listener)
    : loop_(loop),
      root_(root),
      options_(options),
      listener_(listener),
      end_(Clock::now() + options.limit),
      log_(root.platformLog(), endOf(root.platformLog()),
           [this](const std::string& line) { noteLine(line); }),
      screen_(root.screenFolder(), [this](const std::string& name) {
          if (name == root_.cardFile().filename()) {
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
    if (options_.waitForPictures) {
        waitFor([this] { return isComplete(); }, "not every picture came in time");
    }
    log_.readOn();
    return result_;
}

void Search::ask()
{
    Appliance::Extras extras;
    extras.texts = {{Appliance::KeyMerchant, options_.merchant}, {Appliance::KeySearchTerm, options_.term}};
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
    const std::optional<LogLine> line = parseLogLine(text);
    if (!line || !isServiceError(*line)) {
        return;
    }
    if (const std::optional<std::size_t> index = pictureGivenUp(*line)) {
        const std::string cause = result_.errors.empty() ? "" : ": " + result_.errors.back();
        result_.picturesGivenUp[*index] = messageOf(*line) + cause;
    }
    result_.errors.push_back(messageOf(*line));
    report();
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
        reportPicture(i);
    }
    if (!isComplete()) {
        listener_.onPicturesAwaited(settled_.size(), result_.card.products.size());
    }
}

void Search::reportPicture(std::size_t index)
{
    const std::string& path = result_.card.products[index].picture;
    const auto givenUp = result_.picturesGivenUp.find(index);
    const bool isNew = settled_.count(index) == 0;
    if (isNew && !path.empty()) {
        settled_.insert(index);
        listener_.onPicture(index, path);
    } else if (isNew && givenUp != result_.picturesGivenUp.end()) {
        settled_.insert(index);
        listener_.onPictureGivenUp(index, givenUp->second);
    }
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
