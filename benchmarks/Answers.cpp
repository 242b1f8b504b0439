#include "Answers.h"

#include <json-glib/json-glib.h>

namespace Benchmarks {

namespace {

std::string product(size_t number)
{
    const std::string id = std::to_string(number);
    return R"({"id":")" + id + R"(","name":"Organic Whole Milk )" + id +
           R"(","brand":"Meadow & Sons","description":"From cows that graze outdoors for most of the year.",)"
           R"("imageUrl":"https://merchant-bridge.example/images/milk-)" +
           id +
           R"(.jpg","categories":["Dairy","Milk"],"availability":"IN_STOCK",)"
           R"("productOptionGroups":[{"name":"Size","productOptions":[{"label":"1 gal","selected":true},)"
           R"({"label":"0.5 gal","selected":false}]}],)"
           R"("mbVariants":[{"amountMinorUnits":)" +
           std::to_string(300 + number % 700) +
           R"(,"formerPriceAmountMinorUnits":1000,"currency":"USD",)"
           R"("productVariantRef":"variant-)" +
           id + R"("}]})";
}

}  // namespace

std::string answerWith(size_t products)
{
    std::string text = R"({"total":)" + std::to_string(products) + R"(,"products":[)";
    text.reserve((products + 1) * 600);  // grown in steps it would be its own peak of memory
    for (size_t i = 0; i < products; ++i)
        text += (i ? "," : "") + product(i);
    return text + "]}";
}

size_t parseWithJsonGlib(const std::string& text)
{
    JsonParser* parser = json_parser_new();
    size_t members = 0;
    if (json_parser_load_from_data(parser, text.c_str(), static_cast<gssize>(text.size()), nullptr))
        members = json_object_get_size(json_node_get_object(json_parser_get_root(parser)));
    g_object_unref(parser);
    return members;
}

}  // namespace Benchmarks
