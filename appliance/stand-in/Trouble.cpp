// One table names, explains and applies the words.
#include "Trouble.h"

#include "Numbers.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>
#include <utility>

namespace Appliance::StandIn {
namespace {

using std::chrono::milliseconds;

constexpr int mostProducts = 999;
constexpr int mostMegabytes = 200;

struct BadValue : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::pair<std::string_view, std::string_view> splitUnit(std::string_view text)
{
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    return {text.substr(0, digits), text.substr(digits)};
}

milliseconds parseTime(std::string_view text)
{
    const auto [digits, unit] = splitUnit(text);
    const int scale = unit == "s" ? 1000 : 1;
    const auto number = parseNumber(digits, 0, static_cast<int>(longestTime.count()) / scale);
    if (!number || (unit != "s" && unit != "ms"))
        throw BadValue("wants a time of at most ten minutes such as 3s or 250ms");
    return milliseconds(*number * scale);
}

int parseStatus(std::string_view text)
{
    const auto status = parseNumber(text, leastStatus, mostStatus);
    if (!status)
        throw BadValue("wants a status from 200 to 599");
    return *status;
}

std::size_t parseSize(std::string_view text)
{
    const auto [digits, unit] = splitUnit(text);
    const int scale = unit == "MB" ? 1000 * 1000 : 1000;
    const auto number = parseNumber(digits, 1, mostMegabytes * (1000 * 1000 / scale));
    if (!number || (unit != "MB" && unit != "KB"))
        throw BadValue("wants a size of at most 200MB such as 50MB or 900KB");
    return static_cast<std::size_t>(*number) * static_cast<std::size_t>(scale);
}

int parsePosition(std::string_view text)
{
    const auto position = parseNumber(text, 1, mostProducts);
    if (!position)
        throw BadValue("wants positions counted from 1 such as 2 or 1,3");
    return *position;
}

Positions parsePositions(std::string_view text)
{
    Positions positions;
    for (std::size_t comma = text.find(','); comma != std::string_view::npos; comma = text.find(',')) {
        positions.named.insert(parsePosition(text.substr(0, comma)));
        text.remove_prefix(comma + 1);
    }
    positions.named.insert(parsePosition(text));
    return positions;
}

Positions parsePositionsOrAll(std::string_view text)
{
    return text.empty() ? Positions() : parsePositions(text);
}

std::optional<int> statusOf(const std::vector<PictureStatus>& statuses, int position)
{
    for (const PictureStatus& each : statuses)
        if (each.positions.contain(position))
            return each.status;
    return std::nullopt;
}

void setBody(Trouble& trouble, Body body)
{
    if (trouble.body != Body::Products && trouble.body != body)
        throw BadValue("asks for one body after another word asked for a different one");
    trouble.body = body;
}

template <Body body>
void applyBody(Trouble& trouble, std::string_view)
{
    setBody(trouble, body);
}

void applyBig(Trouble& trouble, std::string_view value)
{
    setBody(trouble, Body::Big);
    trouble.bigSize = parseSize(value);
}

void applyPictureStatus(Trouble& trouble, std::string_view value)
{
    const std::size_t colon = value.find(':');
    const int status = parseStatus(value.substr(0, colon));
    const bool isForAll = colon == std::string_view::npos;
    trouble.pictureStatuses.push_back(
        {isForAll ? Positions() : parsePositions(value.substr(colon + 1)), status});
}

enum class Value { None, Optional, Needed };

struct Word {
    std::string_view name;
    Value value;
    std::string_view example;  // of the value, with its '='
    std::string_view meaning;
    void (*apply)(Trouble&, std::string_view value);
};

const std::array words{
    Word{"~delay", Value::Needed, "=3s", "wait for that time (s or ms) before the answer",
         [](Trouble& trouble, std::string_view value) { trouble.delay = parseTime(value); }},
    Word{"~status", Value::Needed, "=503",
         "answer with this status (200 to 599); from 300 on with an error text",
         [](Trouble& trouble, std::string_view value) { trouble.status = parseStatus(value); }},
    Word{"~truncate", Value::None, "", "announce the whole body, close the connection half-way",
         [](Trouble& trouble, std::string_view) { trouble.truncate = true; }},
    Word{"~reset", Value::None, "", "reset the connection without an answer",
         [](Trouble& trouble, std::string_view) { trouble.reset = true; }},
    Word{"~garbage", Value::None, "", "200 with bytes that are not JSON", applyBody<Body::Garbage>},
    Word{"~empty", Value::None, "", "200 with an empty body", applyBody<Body::Empty>},
    Word{"~html", Value::None, "", "200 with an HTML page", applyBody<Body::Html>},
    Word{"~odd-types", Value::None, "", "200 with product members of wrong types, null or missing",
         applyBody<Body::OddTypes>},
    Word{"~none", Value::None, "", "200 with an empty list of products", applyBody<Body::NoProducts>},
    Word{"~deep", Value::None, "", "200 with JSON nested 100,000 deep", applyBody<Body::Deep>},
    Word{"~big", Value::Needed, "=50MB",
         "200 with the ordinary JSON padded to that size (MB or KB, at most 200MB)", applyBig},
    Word{"~slow-images", Value::Optional, "=2s", "each picture trickles for that time, 3s if not said",
         [](Trouble& trouble, std::string_view value) {
             trouble.slowPictures = parseTime(value.empty() ? "3s" : value);
         }},
    Word{"~image-404", Value::Optional, "=2",
         "the second product's picture is not found; also 1,3; all if not said",
         [](Trouble& trouble, std::string_view value) {
             trouble.pictureStatuses.push_back({parsePositionsOrAll(value), 404});
         }},
    Word{"~image-status", Value::Needed, "=503:1,3",
         "these pictures answer with that status; all without the list", applyPictureStatus},
    Word{"~image-stall", Value::Optional, "=1",
         "half of these pictures, then nothing for ever; all if not said",
         [](Trouble& trouble, std::string_view value) { trouble.pictureStall = parsePositionsOrAll(value); }},
    Word{"~image-redirect", Value::Optional, "=1", "one redirect to the real picture; all if not said",
         [](Trouble& trouble, std::string_view value) {
             trouble.pictureRedirect = parsePositionsOrAll(value);
         }},
};

// "~delay=3s", and brackets around a value that may be left out.
std::string usage(const Word& word)
{
    const std::string example(word.example);
    return std::string(word.name) + (word.value == Value::Optional ? "[" + example + "]" : example);
}

[[noreturn]] void refuse(std::string_view text, const std::string& reason)
{
    std::string known;
    for (const Word& word : words)
        known += " " + usage(word);
    throw TroubleError(std::string(text) + " " + reason + "; known words:" + known);
}

const Word& findWord(std::string_view text)
{
    const std::string_view name = text.substr(0, text.find('='));
    for (const Word& word : words)
        if (word.name == name)
            return word;
    refuse(text, "is not known");
}

void checkValue(const Word& word, bool hasEquals, std::string_view value)
{
    if (word.value == Value::None && hasEquals)
        throw BadValue("takes no value");
    if (value.empty() && (hasEquals || word.value == Value::Needed))
        throw BadValue("lacks its value");
}

void applyWord(Trouble& trouble, std::string_view text)
{
    const Word& word = findWord(text);
    const std::size_t equals = text.find('=');
    const bool hasEquals = equals != std::string_view::npos;
    const std::string_view value = hasEquals ? text.substr(equals + 1) : std::string_view();
    try {
        checkValue(word, hasEquals, value);
        word.apply(trouble, value);
    } catch (const BadValue& bad) {
        refuse(text, bad.what());
    }
}

}  // namespace

PictureTrouble Trouble::forPicture(int position) const
{
    PictureTrouble picture;
    picture.redirect = pictureRedirect && pictureRedirect->contain(position);
    picture.status = statusOf(pictureStatuses, position);
    picture.stall = pictureStall && pictureStall->contain(position);
    picture.slow = slowPictures;
    return picture;
}

Query parseQuery(std::string_view text)
{
    Query query;
    std::istringstream stream{std::string(text)};
    for (std::string word; stream >> word;) {
        if (word.front() == '~')
            applyWord(query.trouble, word);
        else
            query.term += (query.term.empty() ? "" : " ") + word;
    }
    return query;
}

std::string troubleHelp()
{
    std::ostringstream help;
    for (const Word& word : words)
        help << "  " << std::left << std::setw(24) << usage(word) << word.meaning << '\n';
    return help.str();
}

std::string troubleMarkdown()
{
    std::ostringstream rows;
    for (const Word& word : words)
        rows << "| `" << usage(word) << "` | " << word.meaning << " |\n";
    return rows.str();
}

}  // namespace Appliance::StandIn
