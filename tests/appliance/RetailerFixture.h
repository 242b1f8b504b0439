// A retailer in the test's own process, and the shop's own client.
#pragma once

#include "Files.h"
#include "HttpClient.h"
#include "Server.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace ApplianceTest {

class RetailerFixture : public testing::Test {
  protected:
    static constexpr const char* host = "retailer-api.example";
    static constexpr const char* iconHost = "retailer-icons.example";
    static constexpr const char* searchPath = "/api/refrigerator/search/datas.ssg";

    // Settings with which the server can start.
    static Appliance::Retailer::Settings settings();

    // What the shop's own client sends.
    static std::vector<std::string> soundHeaders();
    static nlohmann::ordered_json soundBody(const std::string& query);

    void SetUp() override;

    HttpClient client() const;
    HttpClient iconClient() const;
    Reply search(const std::string& query) const;
    // The items of a 200 answer.
    nlohmann::json items(const std::string& query) const;
    // The path of the picture of that item, counted from 1.
    std::string picturePathOf(const std::string& query, std::size_t position) const;

    std::unique_ptr<Appliance::Retailer::Server> server;
};

std::string messageOf(const Reply& reply);

}  // namespace ApplianceTest
