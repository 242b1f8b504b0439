// The bare program, asked over the bus of a rig.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

#include "ChildProcess.h"
#include "PrivateBus.h"

namespace Benchmarks {

/** Runs when the constructor returns. One thread. */
class Bare {
  public:
    Bare(const TestSupport::PrivateBus& bus, const TestSupport::ChildProcess::Variables& variables);

    /** Calls a method of the program; throws sdbus::Error where that fails. */
    template <typename Result, typename... Arguments>
    Result ask(const char* method, Arguments&&... arguments)
    {
        Result result;
        mProxy->callMethod(method)
            .onInterface("org.example.Bare1")
            .withTimeout(TestSupport::Patience)
            .withArguments(std::forward<Arguments>(arguments)...)
            .storeResultsTo(result);
        return result;
    }

    void hold(const std::map<std::string, sdbus::Variant>& extras);

    pid_t pid() const { return mProgram.pid(); }

    /** Of the products that it finds. */
    std::vector<std::string> pictureUrls();

    /** The request that the service makes, and what it sends with it. */
    static std::string searchUrl();
    static std::vector<std::string> searchHeaders();

  private:
    TestSupport::ChildProcess mProgram;
    std::unique_ptr<sdbus::IConnection> mConnection;
    std::unique_ptr<sdbus::IProxy> mProxy;
};

}  // namespace Benchmarks
