// The second service program in its world: a retailer, the UI app, and the login file.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "KeptFile.h"
#include "ServiceWorld.h"

namespace ServiceTest {

/** A product of the retailer; what is not given is not in the answer. */
struct Item {
    std::string name;
    std::string picture{};  // path
    std::string price{};
    std::string discount{};  // type
    std::string text{};      // of the discount
    std::string badge{};     // type
    std::string id{};
};

/** The body of an answer with these products. */
std::string answerOf(const std::vector<Item>& items);

/**
 * Starts without the program, with a user who is logged in. The login file has one path for all programs of a
 * build: no two of these tests may run at once.
 */
class RetailerWorld : public ServiceWorld {
  protected:
    static constexpr const char* RetailerId = "org.tizen.carvoy-retailer";
    static constexpr const char* SearchPath = "/api/refrigerator/search/datas.ssg";

    RetailerWorld();
    void SetUp() override;

    /** variables(), with this retailer at the retailer's hosts. */
    TestSupport::ChildProcess::Variables retailerVariables() const;

    /** Starts the program and waits until it is on the bus and has answered a request. */
    void startRetailer();

    /** Without content there is no file. */
    static void writeLogin(const std::optional<std::string>& content);

    std::string search(const std::string& term = "우유");
    std::string ask(const std::string& operation, const TestSupport::Extras& extras = {});

    /** Waits until everything that was asked so far is done, pictures and replies apart. */
    TestSupport::RawMessage resultMessage();

    /** A retailer who stocks these products, with their pictures and badges. */
    void stock(const std::vector<Item>& items);

    /** Two products of which the first has all there is, and one with nothing. */
    static std::vector<Item> threeItems();
    static std::string iconPath(const std::string& badge) { return "/ui/app/6001/icon/" + badge + ".png"; }

    /** No picture is on its way any more. */
    void waitForPictures() { ASSERT_TRUE(waitForThreads(atRest_)); }

    const TestSupport::KeptFile keptLogin;
    const ReservedPort retailerPort;
    std::unique_ptr<Merchant> retailer;

  private:
    std::size_t atRest_ = 0;
};

}  // namespace ServiceTest
