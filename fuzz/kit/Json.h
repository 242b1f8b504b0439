// A second opinion on a JSON text: what strict JSON makes of it, read by another library than the product's.
#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace Fuzz {

/** A value in a JSON text, or none. Values are valid as long as their text's `Json`. */
class Json {
  public:
    /**
     * None if the text is not strict JSON, or has so many brackets that the product may refuse it for its
     * depth.
     */
    explicit Json(const std::string& text);

    explicit operator bool() const { return value_ != nullptr; }

    bool isObject() const;
    bool isArray() const;

    /** Elements of an array; 0 for all else. */
    size_t size() const;

    /** None where this is no object, or has no such member. The last of several counts. */
    Json member(const char* name) const;

    /** None where this is no array, or has no such element. */
    Json element(size_t index) const;

    /** A text, up to its first zero byte. */
    std::optional<std::string> text() const;

    /** The same; none where no message can carry it. */
    std::optional<std::string> carriedText() const;

    /** Whether it is a number that does not fit into 64 bits, of which the product makes what it likes. */
    bool isHuge() const;

    /** The whole part of a number, in as many of its low bits as an int has. */
    std::optional<int> number() const;

  private:
    explicit Json(const nlohmann::json* value);

    std::shared_ptr<const nlohmann::json> root_;
    const nlohmann::json* value_ = nullptr;
};

}  // namespace Fuzz
