#include "VoiceNames.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace Carvoy {

namespace {

using Names = std::vector<std::pair<int, std::string>>;

const int LOWEST = std::numeric_limits<int>::min();
const int HIGHEST = std::numeric_limits<int>::max();

void expectNames(const char* (*name)(int), const Names& names)
{
    for (const auto& [number, text] : names)
        EXPECT_EQ(name(number), text) << number;
}

}  // namespace

TEST(VoiceNames, NameTheClientsStates)
{
    expectNames(VoiceNames::clientState, {{0, "None"},
                                          {1, "Initialized"},
                                          {2, "Ready"},
                                          {3, "UNKNOWN"},
                                          {-1, "UNKNOWN"},
                                          {LOWEST, "UNKNOWN"},
                                          {HIGHEST, "UNKNOWN"}});
}

TEST(VoiceNames, NameTheServicesStates)
{
    expectNames(VoiceNames::serviceState, {{0, "None"},
                                           {1, "Ready"},
                                           {2, "Recording"},
                                           {3, "Processing"},
                                           {4, "UNKNOWN"},
                                           {-1, "UNKNOWN"},
                                           {LOWEST, "UNKNOWN"},
                                           {HIGHEST, "UNKNOWN"}});
}

TEST(VoiceNames, NameTheErrorsOfVoiceControl)
{
    expectNames(VoiceNames::vcError, {{0, "NONE"},
                                      {-12, "OUT_OF_MEMORY"},
                                      {-5, "IO_ERROR"},
                                      {-22, "INVALID_PARAMETER"},
                                      {-1073741823, "TIMED_OUT"},
                                      {-16, "RECORDER_BUSY"},
                                      {-13, "PERMISSION_DENIED"},
                                      {-1073741822, "NOT_SUPPORTED"},
                                      {-49610735, "INVALID_STATE"},
                                      {-49610734, "INVALID_LANGUAGE"},
                                      {-49610733, "ENGINE_NOT_FOUND"},
                                      {-49610732, "OPERATION_FAILED"},
                                      {-49610731, "OPERATION_REJECTED"},
                                      {-49610730, "ITERATION_END"},
                                      {-49610729, "EMPTY"}});
}

TEST(VoiceNames, AreUnknownForAllOtherErrorsOfVoiceControl)
{
    // The platform's newer errors among them: service reset, the three in progress, no such feature.
    for (int error : {1, -1, -2, 22, -49610736, -49610728, -49610727, -49610720, -49610719, -49610718,
                      -49676271, -1073741824, LOWEST, HIGHEST})
        EXPECT_STREQ(VoiceNames::vcError(error), "VC_ERROR_UNKNOWN") << error;
}

TEST(VoiceNames, NameTheErrorsOfTheResponseParser)
{
    expectNames(VoiceNames::ndpError, {{0, "NONE"},
                                       {-12, "OUT_OF_MEMORY"},
                                       {-22, "INVALID_PARAMETER"},
                                       {-49676271, "PARSE JSON FAILED"},
                                       {-49676270, "NO SUCH VALUE"},
                                       {-49676269, "INVALID TYPE"},
                                       {-49676268, "INTERNAL_ERROR"}});
}

TEST(VoiceNames, AreUnknownForAllOtherErrorsOfTheResponseParser)
{
    for (int error : {1, -1, -5, -49676272, -49676267, -49610735, LOWEST, HIGHEST})
        EXPECT_STREQ(VoiceNames::ndpError(error), "NDP_ERROR_UNKNOWN") << error;
}

}  // namespace Carvoy
