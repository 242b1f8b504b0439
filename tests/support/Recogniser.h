// The recogniser's side of voice control: plays it, and watches what a client shows on the bus.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace TestSupport {

using Texts = std::vector<std::string>;

/** One connection of its own, for one client. One thread. */
class Recogniser {
  public:
    /** @p client is the client's unique name, or its app's. */
    explicit Recogniser(std::string client);
    ~Recogniser();
    Recogniser(const Recogniser&) = delete;
    Recogniser& operator=(const Recogniser&) = delete;

    /** Each calls the method and gives the name of the error that it was answered with; empty for none. */
    std::string result(std::int32_t event, const Texts& text, const Texts& nlu);
    std::string clientState(std::int32_t state);
    std::string serviceState(std::int32_t state);
    std::string error(std::int32_t reason);
    std::string language(const std::string& language);

    template <typename... Arguments>
    std::string call(const char* method, const Arguments&... arguments)
    {
        try {
            proxy_->callMethod(method).onInterface(Interface).withArguments(arguments...);
            return "";
        } catch (const sdbus::Error& error) {
            return error.getName();
        }
    }

    /** Calls a method and wants no answer. */
    void tell(const char* method, std::int32_t argument);

    /** What the client shows now. Each throws sdbus::Error where it shows nothing. */
    std::int32_t state();
    std::string invocationName();
    Texts commands();
    bool isOnBus();

    /** Waits until so many changes were told; each is the names of what changed, joined by blanks. */
    Texts waitForChanges(std::size_t count);

  private:
    static constexpr const char* Interface = "org.tizen.VoiceControl1";

    void watch();

    std::string client_;
    std::mutex mutex_;
    std::condition_variable changed_;
    Texts changes_;
    std::unique_ptr<sdbus::IConnection> connection_;
    std::unique_ptr<sdbus::IProxy> proxy_;
};

}  // namespace TestSupport
