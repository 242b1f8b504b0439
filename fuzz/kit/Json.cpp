#include "Json.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "Text.h"

namespace Fuzz {

namespace {

constexpr long FEW_BRACKETS = 1000;

bool isBracket(char c)
{
    return c == '[' || c == '{';
}

}  // namespace

Json::Json(const std::string& text)
{
    // The library takes a zero byte for the end.
    if (std::count_if(text.begin(), text.end(), isBracket) > FEW_BRACKETS ||
        text.find('\0') != std::string::npos)
        return;
    bool hasZeroInName = false;
    const auto look = [&](int, nlohmann::json::parse_event_t event, nlohmann::json& name) {
        if (event == nlohmann::json::parse_event_t::key)
            hasZeroInName |= name.get_ref<const std::string&>().find('\0') != std::string::npos;
        return true;
    };
    const bool throwing = false;
    auto root = std::make_shared<const nlohmann::json>(nlohmann::json::parse(text, look, throwing));
    if (root->is_discarded() || hasZeroInName)
        return;
    root_ = std::move(root);
    value_ = root_.get();
}

Json::Json(const nlohmann::json* value) : value_(value) {}

bool Json::isObject() const
{
    return value_ && value_->is_object();
}

bool Json::isArray() const
{
    return value_ && value_->is_array();
}

size_t Json::size() const
{
    return isArray() ? value_->size() : 0;
}

Json Json::member(const char* name) const
{
    if (!isObject())
        return Json(nullptr);
    const auto found = value_->find(name);
    return Json(found == value_->end() ? nullptr : &*found);
}

Json Json::element(size_t index) const
{
    return Json(index < size() ? &(*value_)[index] : nullptr);
}

std::optional<std::string> Json::text() const
{
    if (!value_ || !value_->is_string())
        return std::nullopt;
    return std::string(value_->get_ref<const std::string&>().c_str());
}

std::optional<std::string> Json::carriedText() const
{
    std::optional<std::string> text = this->text();
    return text && HostPlatform::isUtf8(*text) ? text : std::nullopt;
}

bool Json::isHuge() const
{
    if (!value_ || !value_->is_number())
        return false;
    if (value_->is_number_float())
        return !(std::abs(value_->get<double>()) < 0x1p63);
    return value_->is_number_unsigned() && value_->get<std::uint64_t>() > INT64_MAX;
}

std::optional<int> Json::number() const
{
    if (!value_ || !value_->is_number() || isHuge())
        return std::nullopt;
    return static_cast<std::int32_t>(value_->get<std::int64_t>());
}

}  // namespace Fuzz
