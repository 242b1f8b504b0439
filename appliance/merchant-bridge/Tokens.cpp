// Reads the token file the way its other readers do: everything before the last comma is one token.
#include "Tokens.h"

#include <fstream>
#include <stdexcept>

namespace Appliance::MerchantBridge {
namespace {

std::optional<std::string> refuseOne(const std::string& header, const std::string& wanted,
                                     const std::string& sent)
{
    if (sent.empty())
        return header + " is missing";
    if (sent != wanted)
        return header + " is not the one that was given out";
    return std::nullopt;
}

}  // namespace

Tokens readTokens(const std::filesystem::path& file)
{
    std::ifstream stream(file);
    std::string line;
    if (!stream || (!std::getline(stream, line) && !stream.eof()))
        throw std::runtime_error("cannot read the tokens file " + file.string());
    const std::size_t comma = line.rfind(',');
    if (comma == std::string::npos || comma == 0 || comma + 1 == line.size())
        throw std::runtime_error("the tokens file " + file.string() + " does not begin with SESSION,ACCESS");
    return {line.substr(0, comma), line.substr(comma + 1)};
}

std::optional<std::string> refusal(const Tokens& wanted, const Tokens& sent)
{
    const auto access = refuseOne("X-Auth-Access-Token", wanted.access, sent.access);
    return access ? access : refuseOne("X-Auth-Session-Token", wanted.session, sent.session);
}

}  // namespace Appliance::MerchantBridge
