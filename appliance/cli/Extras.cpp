#include "Extras.h"

#include <map>
#include <utility>

#include "Exit.h"
#include "Names.h"

namespace Tool {

namespace {

const std::map<std::string, std::string>& namespaces()
{
    static const std::map<std::string, std::string> all = {{"platform", Appliance::PlatformOperations},
                                                           {"service", Appliance::ServiceOperations},
                                                           {"assistant", Appliance::AssistantOperations}};
    return all;
}

std::pair<std::string, std::string> keyAndValue(const std::string& text)
{
    const std::size_t at = text.find('=');
    if (at == std::string::npos || at == 0 || at + 1 == text.size()) {
        throw Failure(Exit::Usage, "\"" + text + "\" is not KEY=VALUE with a key and a value");
    }
    return {text.substr(0, at), text.substr(at + 1)};
}

Appliance::TextList elementsOf(const std::string& text)
{
    Appliance::TextList elements(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == ',') {
            elements.emplace_back();
        } else if (text[i] == '\\' && i + 1 < text.size()) {
            elements.back() += text[++i];
        } else {
            elements.back() += text[i];
        }
    }
    return elements;
}

void refuseSecondUse(const Appliance::Extras& extras, const std::string& key)
{
    if (extras.texts.count(key) > 0 || extras.lists.count(key) > 0) {
        throw Failure(Exit::Usage, "the key \"" + key + "\" is given twice");
    }
}

}  // namespace

Appliance::Extras parseExtras(const std::vector<std::string>& texts, const std::vector<std::string>& lists)
{
    Appliance::Extras extras;
    for (const std::string& text : texts) {
        const auto [key, value] = keyAndValue(text);
        refuseSecondUse(extras, key);
        extras.texts[key] = value;
    }
    for (const std::string& text : lists) {
        const auto [key, value] = keyAndValue(text);
        refuseSecondUse(extras, key);
        extras.lists[key] = elementsOf(value);
    }
    return extras;
}

std::string operationUri(const std::string& operation)
{
    if (operation.find("://") != std::string::npos) {
        return operation;
    }
    const std::size_t colon = operation.find(':');
    const auto found = namespaces().find(operation.substr(0, colon));
    if (colon == std::string::npos || colon + 1 == operation.size() || found == namespaces().end()) {
        throw Failure(
            Exit::Usage,
            "\"" + operation + "\" is neither a URI nor service:NAME, platform:NAME or assistant:NAME");
    }
    return found->second + operation.substr(colon + 1);
}

std::string shortOperation(const std::string& uri)
{
    for (const auto& [name, prefix] : namespaces()) {
        if (uri.size() > prefix.size() && uri.compare(0, prefix.size(), prefix) == 0) {
            return name + ":" + uri.substr(prefix.size());
        }
    }
    return uri;
}

}  // namespace Tool
