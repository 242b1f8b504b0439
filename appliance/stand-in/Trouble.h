// Trouble that a search term asks for: words that begin with '~', such as "milk ~delay=3s".
// Pure functions, for any thread.
#pragma once

#include "PicturePath.h"
#include "Refusal.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace Appliance::StandIn {

// What the answer's body holds.
enum class Body { Products, Garbage, Empty, Html, OddTypes, NoProducts, Deep, Big };

// Which of an answer's products a picture trouble is for, counted from 1; none named: all of them.
struct Positions {
    std::set<int> named;

    bool contain(int position) const { return named.empty() || named.count(position) > 0; }
};

struct PictureStatus {
    Positions positions;
    int status;
};

struct Trouble {
    std::chrono::milliseconds delay{0};  // before anything else
    bool reset = false;                  // no answer: the connection is reset
    std::optional<int> status;
    Body body = Body::Products;
    std::size_t bigSize = 0;  // bytes of the whole body, for Body::Big
    bool truncate = false;    // half the body, then the connection is closed

    std::chrono::milliseconds slowPictures{0};
    std::vector<PictureStatus> pictureStatuses;  // the first that contains a position counts
    std::optional<Positions> pictureStall;
    std::optional<Positions> pictureRedirect;

    PictureTrouble forPicture(int position) const;
};

// Its text names the word, says what is wrong and lists the known words.
struct TroubleError : Refusal {
    explicit TroubleError(const std::string& message) : Refusal(400, message) {}
};

struct Query {
    std::string term;  // what is left to search for, words parted by one blank
    Trouble trouble;
};

// Throws TroubleError for an unknown word, a bad value, or two words that ask for different bodies.
Query parseQuery(std::string_view text);

// The known words and what they do, a line each: for --help.
std::string troubleHelp();

// The same as the rows of a Markdown table: for the documents, which a test compares.
std::string troubleMarkdown();

}  // namespace Appliance::StandIn
