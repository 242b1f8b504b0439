// The appliance's interfaces, with the failures that its headers name.
#include <dlog.h>
#include <download.h>
#include <nuvex-da-db.h>
#include <nuvex-da-parser.h>
#include <tzplatform_config.h>
#include <vconf.h>

#include <Ecore.h>

#include <cstdarg>

#include "Point.h"

POINT2(tzplatform_mkpath, nullptr)
POINT2(vconf_set_int, VCONF_ERROR)

POINT2(ndd_manager_create, NDD_ERROR_NO_SUCH_STORE)
POINT2(ndd_manager_get_primary_key, NDD_ERROR_IO_ERROR)
POINT2(ndd_manager_insert, NDD_ERROR_BUSY)
POINT2(ndd_manager_update, NDD_ERROR_BUSY)
POINT1(ndd_bundle_create, NDD_ERROR_OUT_OF_MEMORY)
POINT3(ndd_bundle_add_int, NDD_ERROR_OUT_OF_MEMORY)
END1(ndd_bundle_destroy, NDD_ERROR_INVALID_PARAMETER)
END1(ndd_manager_destroy, NDD_ERROR_IO_ERROR)

POINT2(ndp_response_data_parse, NDP_ERROR_OUT_OF_MEMORY)
POINT2(ndp_response_data_get_action_name, NDP_ERROR_NO_SUCH_VALUE)
POINT2(ndp_response_data_get_action_data, NDP_ERROR_NO_SUCH_VALUE)
POINT2(ndp_commerce_action_data_get_representative_commerce_data, NDP_ERROR_INVALID_TYPE)
POINT2(ndp_commerce_data_get_id, NDP_ERROR_NO_SUCH_VALUE)
END1(ndp_response_data_destroy, NDP_ERROR_INVALID_PARAMETER)

POINT1(download_create, DOWNLOAD_ERROR_TOO_MANY_DOWNLOADS)
POINT2(download_set_url, DOWNLOAD_ERROR_INVALID_URL)
POINT2(download_set_network_type, DOWNLOAD_ERROR_OUT_OF_MEMORY)
POINT2(download_set_destination, DOWNLOAD_ERROR_INVALID_DESTINATION)
POINT2(download_set_file_name, DOWNLOAD_ERROR_OUT_OF_MEMORY)
POINT3(download_set_state_changed_cb, DOWNLOAD_ERROR_OUT_OF_MEMORY)
POINT3(download_set_progress_cb, DOWNLOAD_ERROR_OUT_OF_MEMORY)
POINT1(download_unset_state_changed_cb, DOWNLOAD_ERROR_ID_NOT_FOUND)
POINT1(download_unset_progress_cb, DOWNLOAD_ERROR_ID_NOT_FOUND)
POINT1(download_start, DOWNLOAD_ERROR_QUEUE_FULL)
POINT1(download_pause, DOWNLOAD_ERROR_INVALID_STATE)
POINT1(download_cancel, DOWNLOAD_ERROR_INVALID_STATE)
POINT2(download_get_downloaded_file_path, DOWNLOAD_ERROR_INVALID_STATE)
END1(download_destroy, DOWNLOAD_ERROR_ID_NOT_FOUND)

POINT0(ecore_init, 0)

extern "C" int faulty_dlog_print(log_priority priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

int faulty_dlog_print(log_priority priority, const char* tag, const char* format, ...)
{
    static Faults::Point point("dlog_print");
    va_list arguments;
    va_start(arguments, format);
    const int result = point.call(
        FAULTS_SITE, [] { return int{DLOG_ERROR_NOT_PERMITTED}; },
        [&] { return dlog_vprint(priority, tag, format, arguments); });
    va_end(arguments);
    return result;
}
