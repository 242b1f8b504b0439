// The UI app as the service sees it: bare messages on the bus, answered when the test says so.
#pragma once

#include <string>
#include <vector>

#include "RawPeer.h"

namespace ServiceTest {

std::string serviceOperation(const std::string& name);

/** A text extra; empty where there is none. */
std::string textOf(const TestSupport::RawMessage& message, const std::string& key);

/** A list extra; empty where there is none. */
std::vector<std::string> listOf(const TestSupport::RawMessage& message, const std::string& key);

struct Picture {
    std::string index;
    std::string path;
    std::string type{};  // of the retailer's only
};

/** Owns the UI app's name. Messages are taken in the order in which they came. One thread. */
class UiPeer {
  public:
    UiPeer();

    /** The next message. All of these throw std::runtime_error when none comes in time, or it is of another
     * kind than the one asked for. */
    TestSupport::RawMessage next();
    TestSupport::RawMessage nextResult();
    TestSupport::RawMessage nextPictureMessage();
    Picture nextPicture();
    Picture nextRetailerPicture();

    /** Answers a result message. Returns the name of the error that came back; empty for none. */
    std::string confirm(const TestSupport::RawMessage& message);
    std::string refuse(const TestSupport::RawMessage& message);

  private:
    TestSupport::RawMessage nextOf(const std::string& operation);

    TestSupport::RawPeer peer_;
};

}  // namespace ServiceTest
