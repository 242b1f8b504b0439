// The platform's numbers: programs that were built against other headers of the same names rely on them.
#include <app_common.h>
#include <app_control.h>
#include <dlog.h>
#include <gtest/gtest.h>
#include <tzplatform_config.h>
#include <vconf.h>

#include <string>

namespace {

struct Number {
    const char* name;
    int value;
    int expected;
};

#define NUMBER(name, expected) \
    Number                     \
    {                          \
#name, name, expected  \
    }

class ThePlatformsNumber : public testing::TestWithParam<Number> {};

TEST_P(ThePlatformsNumber, IsWhatItIsOnTheAppliance)
{
    EXPECT_EQ(GetParam().value, GetParam().expected);
}

std::string nameOf(const testing::TestParamInfo<Number>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Errors, ThePlatformsNumber,
    testing::Values(NUMBER(TIZEN_ERROR_NONE, 0), NUMBER(TIZEN_ERROR_IO_ERROR, -5),
                    NUMBER(TIZEN_ERROR_OUT_OF_MEMORY, -12), NUMBER(TIZEN_ERROR_PERMISSION_DENIED, -13),
                    NUMBER(TIZEN_ERROR_INVALID_PARAMETER, -22), NUMBER(TIZEN_ERROR_NO_DATA, -61),
                    NUMBER(TIZEN_ERROR_KEY_NOT_AVAILABLE, -126), NUMBER(TIZEN_ERROR_KEY_REJECTED, -129),
                    NUMBER(TIZEN_ERROR_UNKNOWN, -1073741824), NUMBER(TIZEN_ERROR_TIMED_OUT, -1073741823),
                    NUMBER(TIZEN_ERROR_NOT_SUPPORTED, -1073741822),
                    NUMBER(APP_ERROR_INVALID_CONTEXT, -17825791), NUMBER(APP_ERROR_ALREADY_RUNNING, -114),
                    NUMBER(VCONF_OK, 0), NUMBER(VCONF_ERROR, -1), NUMBER(VCONF_ERROR_WRONG_PREFIX, -2),
                    NUMBER(VCONF_ERROR_WRONG_TYPE, -3), NUMBER(VCONF_ERROR_WRONG_VALUE, -4),
                    NUMBER(VCONF_ERROR_NO_MEM, -6)),
    nameOf);

INSTANTIATE_TEST_SUITE_P(Results, ThePlatformsNumber,
                         testing::Values(NUMBER(APP_CONTROL_RESULT_APP_STARTED, 1),
                                         NUMBER(APP_CONTROL_RESULT_SUCCEEDED, 0),
                                         NUMBER(APP_CONTROL_RESULT_FAILED, -1),
                                         NUMBER(APP_CONTROL_RESULT_CANCELED, -2)),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(LogPriorities, ThePlatformsNumber,
                         testing::Values(NUMBER(DLOG_VERBOSE, 2), NUMBER(DLOG_DEBUG, 3), NUMBER(DLOG_INFO, 4),
                                         NUMBER(DLOG_WARN, 5), NUMBER(DLOG_ERROR, 6), NUMBER(DLOG_FATAL, 7),
                                         NUMBER(DLOG_SILENT, 8), NUMBER(DLOG_PRIO_MAX, 9)),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(Paths, ThePlatformsNumber,
                         testing::Values(NUMBER(TZ_USER_APP, 50), NUMBER(TZ_USER_CONTENT, 55)), nameOf);

}  // namespace
