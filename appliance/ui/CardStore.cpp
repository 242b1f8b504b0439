#include "CardStore.h"

#include <fstream>
#include <stdexcept>

#include "CardJson.h"

namespace Ui {

namespace {

void writeWhole(const std::filesystem::path& file, const std::string& text)
{
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << text << '\n';
    out.close();
    if (!out) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

}  // namespace

void CardStore::write(const CardContent& content) const
{
    std::filesystem::create_directories(file_.parent_path());
    const std::filesystem::path fresh = file_.string() + ".new";
    const int indent = 2;
    const auto onBadText = nlohmann::json::error_handler_t::replace;
    writeWhole(fresh, toJson(content).dump(indent, ' ', false, onBadText));
    std::filesystem::rename(fresh, file_);
}

std::optional<CardContent> CardStore::read() const
{
    std::ifstream in(file_, std::ios::binary);
    const nlohmann::json json = nlohmann::json::parse(in, nullptr, false);
    if (json.is_discarded()) {
        return std::nullopt;
    }
    try {
        return cardFromJson(json);
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

}  // namespace Ui
