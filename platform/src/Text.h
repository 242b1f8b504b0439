// Texts as apps hand them in and get them out.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace HostPlatform {

/** A text that may be unset, which an app sees as null. */
using Text = std::optional<std::string>;
using TextList = std::vector<Text>;

/** Whether @p text is UTF-8 that travels on the bus: no surrogates, no noncharacters. */
bool isUtf8(const std::string& text);

/** Bytes of @p text; 0 where it is unset. */
std::size_t sizeOf(const Text& text);

/** Hands out a copy that the app free()s. TIZEN_ERROR_NONE, or OUT_OF_MEMORY and nothing is written. */
int handOut(const char* text, char** out);

}  // namespace HostPlatform
