// parseResult against json-glib's own parse of the same text.
#include <array>
#include <sstream>
#include <stdexcept>

#include <simdjson.h>

#include "Answers.h"
#include "ChildProcess.h"
#include "Rows.h"
#include "SearchControl.h"
#include "Stopwatch.h"

namespace Benchmarks {

namespace {

constexpr int REPEATS = 20;  // timed together: one is not much longer than a switch to another process

struct Size {
    const char* name;
    std::size_t products;
};

constexpr Size YARDSTICK = {"100 KB", 200};
constexpr std::array<Size, 5> SIZES = {
    {{"1 KB", 2}, YARDSTICK, {"1 MB", 2000}, {"10 MB", 20000}, {"50 MB", 100000}}};

template <typename Work>
double repeated(Work&& work)
{
    return secondsOf([&] {
               for (int i = 0; i < REPEATS; ++i)
                   work();
           }) /
           REPEATS;
}

/** Each parse is given a text of its own, as a search gives its answer away. */
double parsedByTheService(Carvoy::SearchControl& control, const std::string& text)
{
    std::vector<std::string> texts(REPEATS, text);
    auto next = texts.begin();
    int refused = 0;
    const double seconds = repeated([&] { refused += control.parseResult(std::move(*next++)); });
    if (refused > 0)
        throw std::runtime_error("the service refused an answer");
    return seconds;
}

void addSmallAnswer(Report& report, int pairs)
{
    const std::string text = answerWith(6);
    Carvoy::SearchControl control;
    simdjson::dom::parser simd;
    std::size_t read = 0;  // so that no parse is left out as unused
    Pairs ours;
    Pairs others;
    for (int i = 0; i < 10 * pairs; ++i) {
        const double service = parsedByTheService(control, text);
        const double jsonGlib = repeated([&] { read += parseWithJsonGlib(text); });
        const double other = repeated([&] { read += simdjson::dom::object(simd.parse(text)).size(); });
        ours.add(service, jsonGlib);
        others.add(jsonGlib, other);
    }
    if (read == 0)
        throw std::runtime_error("the parsers found nothing");
    report.add({"parseResult, 6 products", "json-glib's own parse", Unit::Seconds, Figure::Ratio, 1.2}, ours);
    report.add({"context: json-glib's parse, 6 products", "simdjson's", Unit::Seconds, Figure::Ratio, {}},
               others);
}

/** What one parse in a process of its own took. */
struct Parse {
    double bytes = 0;
    double seconds = 0;
    double kib = 0;  // by which the process grew
};

Parse parseOnce(const char* parser, std::size_t products)
{
    TestSupport::ChildProcess process({PARSE_ONCE, parser, std::to_string(products)},
                                      {{"APPLIANCE_DLOG", "/dev/null"}});
    Parse parse;
    if (!process.wait().inTime ||
        !(std::istringstream(process.output()) >> parse.bytes >> parse.seconds >> parse.kib))
        throw std::runtime_error("a parse failed: " + process.errors());
    return parse;
}

void addSizes(Report& report, int pairs)
{
    for (const auto& [name, products] : SIZES) {
        Pairs linear;
        Pairs theirLinear;
        Pairs time;
        Pairs memory;
        for (int i = 0; i < pairs; ++i) {
            const Parse ours = parseOnce("service", products);
            const Parse yardstick = parseOnce("service", YARDSTICK.products);
            const Parse theirs = parseOnce("json-glib", products);
            const Parse theirYardstick = parseOnce("json-glib", YARDSTICK.products);
            linear.add(ours.seconds / ours.bytes, yardstick.seconds / yardstick.bytes);
            theirLinear.add(theirs.seconds / theirs.bytes, theirYardstick.seconds / theirYardstick.bytes);
            time.add(ours.seconds, theirs.seconds);
            memory.add(ours.kib, theirs.kib);
        }
        const std::string what = std::string("parseResult, ") + name;
        const std::optional<double> goal = products < YARDSTICK.products ? std::nullopt : std::optional(1.3);
        report.add({what, "its time per byte for 100 KB", Unit::SecondsPerByte, Figure::Ratio, goal}, linear);
        report.add({"context: json-glib's parse, " + std::string(name),
                    "its time per byte for 100 KB",
                    Unit::SecondsPerByte,
                    Figure::Ratio,
                    {}},
                   theirLinear);
        report.add({what, "json-glib's own parse", Unit::Seconds, Figure::Ratio, {}}, time);
        if (goal)
            report.add({what, "json-glib's growth in memory", Unit::KiB, Figure::Ratio, 1.1}, memory);
    }
}

}  // namespace

void measureParsing(Report& report, int pairs)
{
    report.announce("parses");
    addSmallAnswer(report, pairs);
    addSizes(report, pairs);
}

}  // namespace Benchmarks
