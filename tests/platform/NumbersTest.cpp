// The platform's numbers: programs that were built against other headers of the same names rely on them.
#include <app_common.h>
#include <app_control.h>
#include <dlog.h>
#include <download.h>
#include <gtest/gtest.h>
#include <nuvex-da-parser.h>
#include <tzplatform_config.h>
#include <vconf.h>
#include <voice_control.h>
#include <voice_control_command_expand.h>

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

INSTANTIATE_TEST_SUITE_P(
    VoiceErrors, ThePlatformsNumber,
    testing::Values(NUMBER(TIZEN_ERROR_VOICE_CONTROL, -49610752), NUMBER(VC_ERROR_NONE, 0),
                    NUMBER(VC_ERROR_OUT_OF_MEMORY, -12), NUMBER(VC_ERROR_IO_ERROR, -5),
                    NUMBER(VC_ERROR_INVALID_PARAMETER, -22), NUMBER(VC_ERROR_TIMED_OUT, -1073741823),
                    NUMBER(VC_ERROR_RECORDER_BUSY, -16), NUMBER(VC_ERROR_PERMISSION_DENIED, -13),
                    NUMBER(VC_ERROR_NOT_SUPPORTED, -1073741822), NUMBER(VC_ERROR_INVALID_STATE, -49610735),
                    NUMBER(VC_ERROR_INVALID_LANGUAGE, -49610734),
                    NUMBER(VC_ERROR_ENGINE_NOT_FOUND, -49610733),
                    NUMBER(VC_ERROR_OPERATION_FAILED, -49610732),
                    NUMBER(VC_ERROR_OPERATION_REJECTED, -49610731), NUMBER(VC_ERROR_ITERATION_END, -49610730),
                    NUMBER(VC_ERROR_EMPTY, -49610729), NUMBER(VC_ERROR_SERVICE_RESET, -49610728),
                    NUMBER(VC_ERROR_IN_PROGRESS_TO_READY, -49610727),
                    NUMBER(VC_ERROR_IN_PROGRESS_TO_RECORDING, -49610720),
                    NUMBER(VC_ERROR_IN_PROGRESS_TO_PROCESSING, -49610719),
                    NUMBER(VC_ERROR_NOT_SUPPORTED_FEATURE, -49610718)),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Voice, ThePlatformsNumber,
    testing::Values(NUMBER(VC_STATE_NONE, 0), NUMBER(VC_STATE_INITIALIZED, 1), NUMBER(VC_STATE_READY, 2),
                    NUMBER(VC_SERVICE_STATE_NONE, 0), NUMBER(VC_SERVICE_STATE_READY, 1),
                    NUMBER(VC_SERVICE_STATE_RECORDING, 2), NUMBER(VC_SERVICE_STATE_PROCESSING, 3),
                    NUMBER(VC_RESULT_EVENT_RESULT_SUCCESS, 0), NUMBER(VC_RESULT_EVENT_REJECTED, 1),
                    NUMBER(VC_COMMAND_TYPE_FOREGROUND, 1), NUMBER(VC_COMMAND_TYPE_BACKGROUND, 2),
                    NUMBER(VC_CMD_FORMAT_FIXED, 0), NUMBER(VC_CMD_FORMAT_FIXED_AND_VFIXED, 1),
                    NUMBER(VC_CMD_FORMAT_VFIXED_AND_FIXED, 2), NUMBER(VC_CMD_FORMAT_FIXED_AND_NONFIXED, 3),
                    NUMBER(VC_CMD_FORMAT_NONFIXED_AND_FIXED, 4), NUMBER(VC_CMD_FORMAT_ACTION, 5),
                    NUMBER(VC_CMD_FORMAT_PARTIAL, 6)),
    nameOf);

INSTANTIATE_TEST_SUITE_P(ParserErrors, ThePlatformsNumber,
                         testing::Values(NUMBER(NDP_ERROR_NONE, 0), NUMBER(NDP_ERROR_OUT_OF_MEMORY, -12),
                                         NUMBER(NDP_ERROR_INVALID_PARAMETER, -22),
                                         NUMBER(NDP_ERROR_PARSE_JSON_FAILED, -49676271),
                                         NUMBER(NDP_ERROR_NO_SUCH_VALUE, -49676270),
                                         NUMBER(NDP_ERROR_INVALID_TYPE, -49676269),
                                         NUMBER(NDP_ERROR_INTERNAL_ERROR, -49676268)),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(
    DownloadErrors, ThePlatformsNumber,
    testing::Values(
        NUMBER(TIZEN_ERROR_DOWNLOAD, -44040192), NUMBER(DOWNLOAD_ERROR_NONE, 0),
        NUMBER(DOWNLOAD_ERROR_INVALID_PARAMETER, -22), NUMBER(DOWNLOAD_ERROR_OUT_OF_MEMORY, -12),
        NUMBER(DOWNLOAD_ERROR_NETWORK_UNREACHABLE, -101), NUMBER(DOWNLOAD_ERROR_CONNECTION_TIMED_OUT, -110),
        NUMBER(DOWNLOAD_ERROR_NO_SPACE, -28), NUMBER(DOWNLOAD_ERROR_PERMISSION_DENIED, -13),
        NUMBER(DOWNLOAD_ERROR_NOT_SUPPORTED, -1073741822), NUMBER(DOWNLOAD_ERROR_NO_DATA, -61),
        NUMBER(DOWNLOAD_ERROR_IO_ERROR, -5), NUMBER(DOWNLOAD_ERROR_INVALID_STATE, -44040159),
        NUMBER(DOWNLOAD_ERROR_CONNECTION_FAILED, -44040158), NUMBER(DOWNLOAD_ERROR_INVALID_URL, -44040156),
        NUMBER(DOWNLOAD_ERROR_INVALID_DESTINATION, -44040155),
        NUMBER(DOWNLOAD_ERROR_TOO_MANY_DOWNLOADS, -44040154), NUMBER(DOWNLOAD_ERROR_QUEUE_FULL, -44040153),
        NUMBER(DOWNLOAD_ERROR_ALREADY_COMPLETED, -44040152),
        NUMBER(DOWNLOAD_ERROR_FILE_ALREADY_EXISTS, -44040151),
        NUMBER(DOWNLOAD_ERROR_CANNOT_RESUME, -44040150), NUMBER(DOWNLOAD_ERROR_FIELD_NOT_FOUND, -44040149),
        NUMBER(DOWNLOAD_ERROR_TOO_MANY_REDIRECTS, -44040144),
        NUMBER(DOWNLOAD_ERROR_UNHANDLED_HTTP_CODE, -44040143),
        NUMBER(DOWNLOAD_ERROR_REQUEST_TIMEOUT, -44040142), NUMBER(DOWNLOAD_ERROR_RESPONSE_TIMEOUT, -44040141),
        NUMBER(DOWNLOAD_ERROR_SYSTEM_DOWN, -44040140), NUMBER(DOWNLOAD_ERROR_ID_NOT_FOUND, -44040139),
        NUMBER(DOWNLOAD_ERROR_INVALID_NETWORK_TYPE, -44040138)),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Downloads, ThePlatformsNumber,
    testing::Values(NUMBER(DOWNLOAD_STATE_NONE, 0), NUMBER(DOWNLOAD_STATE_READY, 1),
                    NUMBER(DOWNLOAD_STATE_QUEUED, 2), NUMBER(DOWNLOAD_STATE_DOWNLOADING, 3),
                    NUMBER(DOWNLOAD_STATE_PAUSED, 4), NUMBER(DOWNLOAD_STATE_COMPLETED, 5),
                    NUMBER(DOWNLOAD_STATE_FAILED, 6), NUMBER(DOWNLOAD_STATE_CANCELED, 7),
                    NUMBER(DOWNLOAD_NETWORK_DATA, 0), NUMBER(DOWNLOAD_NETWORK_WIFI, 1),
                    NUMBER(DOWNLOAD_NETWORK_WIFI_DIRECT, 2), NUMBER(DOWNLOAD_NETWORK_ALL, 3)),
    nameOf);

}  // namespace
