// What is broken here is broken in any shop's answer.
#include "Answer.h"

#include <nlohmann/json.hpp>

namespace Appliance::StandIn {
namespace {

using nlohmann::json;

constexpr std::size_t deepNesting = 100000;
constexpr const char* jsonType = "application/json";

constexpr const char* garbage = "\x01\xFF\xFE{\"products\": [{\"name\": \"Mi\xC3";

constexpr const char* html =
    "<!DOCTYPE html>\n<html><head><title>Scheduled maintenance</title></head>\n"
    "<body><h1>We will be back soon</h1></body></html>\n";

// Lengthens a JSON object by one more member; one that is too long already stays as it is.
std::string pad(std::string body, std::size_t size)
{
    const std::string begin = R"(,"padding":")";
    const std::string end = R"("})";
    body.pop_back();
    const std::size_t least = body.size() + begin.size() + end.size();
    if (least > size)
        return body + "}";
    body.reserve(size);
    return body.append(begin).append(size - least, ' ').append(end);
}

std::string deepBody(const ShopBodies& bodies)
{
    const std::string list = std::string(deepNesting, '[') + std::string(deepNesting, ']');
    return bodies.beforeList + list + bodies.behindList;
}

}  // namespace

Answer errorAnswer(int status, const std::string& message)
{
    const json body{{"error", {{"status", status}, {"message", message}}}};
    // The message may quote bytes of the request, which need not be UTF-8.
    return {body.dump(-1, ' ', false, json::error_handler_t::replace), jsonType};
}

Answer searchAnswer(const Trouble& trouble, const ShopBodies& bodies)
{
    switch (trouble.body) {
        case Body::Garbage:
            return {garbage, jsonType};
        case Body::Empty:
            return {"", jsonType};
        case Body::Html:
            return {html, "text/html"};
        case Body::OddTypes:
            return {bodies.oddTypes, jsonType};
        case Body::NoProducts:
            return {bodies.noProducts(), jsonType};
        case Body::Deep:
            return {deepBody(bodies), jsonType};
        case Body::Big:
            return {pad(bodies.products(), trouble.bigSize), jsonType};
        case Body::Products:
            break;
    }
    return {bodies.products(), jsonType};
}

}  // namespace Appliance::StandIn
