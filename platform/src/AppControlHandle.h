// What an app_control_h points to.
#pragma once

#include <app_control.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Text.h"

namespace HostPlatform {

/** The extra data of one message: a text or a text list under each key. Not thread-safe. */
class ExtraData {
  public:
    using Value = std::variant<std::string, TextList>;

    /** Stores a value; a key that is there already keeps its place in the order. */
    void set(const std::string& key, Value value);
    bool remove(const std::string& key);
    const Value* find(const std::string& key) const;

    /** All keys in the order of their first insertion. */
    std::vector<std::string> keys() const;

    /** Bytes of all keys and texts. */
    std::size_t size() const;
    /** Whether every key and text is valid UTF-8. */
    bool isUtf8() const;

  private:
    struct Entry {
        Value value;
        std::uint64_t place;
    };
    std::map<std::string, Entry> entries_;
    std::uint64_t nextPlace_ = 0;
};

/** Where a request came from, and where its reply goes. */
struct Origin {
    std::string caller;       // app id; empty where the sender has none
    std::string connection;   // unique name on the bus
    std::uint32_t requestId;  // the sender's; 0: wants no reply
};

/** Whether @p result ends a request, as an app_control_result_e of a reply must. */
bool isFinalResult(int result);

/** Whether @p key belongs to the platform itself. */
bool isReservedKey(const std::string& key);

}  // namespace HostPlatform

struct app_control_s {
    HostPlatform::Text operation;
    HostPlatform::Text uri;
    HostPlatform::Text mime;
    HostPlatform::Text category;
    HostPlatform::Text appId;
    HostPlatform::ExtraData extraData;
    std::optional<HostPlatform::Origin> origin;  // of a request that arrived
};
