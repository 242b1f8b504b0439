// As strict as can be: a client that this accepts sends exactly what the shop's own client sends.
#include "SearchRequest.h"

#include "Refusal.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>
#include <vector>

namespace Appliance::Retailer {
namespace {

using nlohmann::ordered_json;
using StandIn::Refusal;

constexpr const char* userAgent = "QMREFAPP/41/emartmallQMR";
constexpr const char* contentType = "application/json";
constexpr const char* cookie = "MOBIL_APP_NO=41; APP_INF=N|HH_FS;";
constexpr int mostItems = 100;

void checkHeader(const httplib::Request& request, const std::string& name, const std::string& wanted,
                 int status)
{
    if (request.get_header_value_count(name) != 1)
        throw Refusal(status, name + " is not there once");
    if (request.get_header_value(name) != wanted)
        throw Refusal(status, name + " is not \"" + wanted + "\"");
}

void checkMembers(const ordered_json& object, const std::string& name, const std::vector<std::string>& wanted)
{
    if (!object.is_object())
        throw Refusal(400, name + " is not an object");
    std::vector<std::string> members;
    std::string list;
    for (const auto& member : object.items())
        members.push_back(member.key());
    for (const std::string& member : wanted)
        list += (list.empty() ? "" : ", ") + member;
    if (members != wanted)
        throw Refusal(400, name + " does not have the members " + list + " in this order");
}

std::string textOf(const ordered_json& object, const std::string& name)
{
    if (!object.at(name).is_string())
        throw Refusal(400, name + " is not a text");
    return object.at(name);
}

void checkText(const ordered_json& object, const std::string& name, const std::string& wanted)
{
    if (textOf(object, name) != wanted)
        throw Refusal(400, name + " is not \"" + wanted + "\"");
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

void checkCommon(const ordered_json& common)
{
    checkMembers(common, "common", {"ts", "mobil_app_no", "apl_ver", "os_cd"});
    const std::string time = textOf(common, "ts");
    if (time.size() != 14 || !std::all_of(time.begin(), time.end(), isDigit))
        throw Refusal(400, "ts is not a time of 14 digits");
    checkText(common, "mobil_app_no", "41");
    checkText(common, "apl_ver", "1.0.0");
    checkText(common, "os_cd", "30");
}

std::string readParams(const ordered_json& params)
{
    checkMembers(params, "params", {"apiVersion", "siteNo", "query", "target", "count"});
    checkText(params, "apiVersion", "1.0.0");
    checkText(params, "siteNo", "6001");
    checkText(params, "target", "mobile_item");
    const ordered_json& count = params.at("count");
    if (!count.is_number_integer() || count < 1 || count > mostItems)
        throw Refusal(400, "count is not a whole number from 1 to 100");
    std::string query = textOf(params, "query");
    if (query.find_first_not_of(" \t") == std::string::npos)
        throw Refusal(400, "query is blank");
    return query;
}

}  // namespace

std::string readSearchRequest(const httplib::Request& request)
{
    checkHeader(request, "User-Agent", userAgent, 403);
    checkHeader(request, "Cookie", cookie, 403);
    checkHeader(request, "Content-Type", contentType, 415);
    const ordered_json body = ordered_json::parse(request.body, nullptr, false);
    if (body.is_discarded())
        throw Refusal(400, "the body is not JSON");
    checkMembers(body, "the body", {"common", "params"});
    checkCommon(body.at("common"));
    return readParams(body.at("params"));
}

}  // namespace Appliance::Retailer
