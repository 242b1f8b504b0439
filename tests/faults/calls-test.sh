#!/usr/bin/env bash
# calls-test.sh POINTS LEFT-OUT PROGRAM OBJECT... : calls.sh takes what the objects call, and would take nothing more.
set -euo pipefail
calls=$(dirname "$0")/calls.sh
points=$1
left_out=$2
program=$3
shift 3
status=0

called=$("$calls" list "$@")
if ! "$calls" check "$points" "$left_out" <<<"$called"; then
    echo "the service's own calls are refused"
    status=1
fi

for symbol in vconf_get_int vc_cmd_get_command ndd_manager_delete app_control_clone ecore_timer_add \
    curl_easy_pause curl_multi_perform sqlite3_exec json_object_get_boolean_member json_parser_load_from_file \
    g_file_get_contents fputs fdopen open rename opendir pthread_create \
    _ZNSt13basic_filebufIcSt11char_traitsIcEE5imbueERKSt6locale \
    _ZNSt14basic_ofstreamIcSt11char_traitsIcEE4openEPKcSt13_Ios_Openmode \
    _ZNSt10filesystem6removeERKNS_7__cxx114pathE; do
    answer=$("$calls" check "$points" "$left_out" <<<"$called"$'\n'"$symbol" 2>&1) && {
        echo "$symbol has no injection point and is taken"
        status=1
    }
    if ! grep -qw -- "$symbol" <<<"$answer"; then
        echo "$symbol is not named: $answer"
        status=1
    fi
done

[ $status -eq 0 ] && echo "OK: $("$calls" sites "$program") call sites have an injection point"
exit $status
