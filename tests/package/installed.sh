#!/usr/bin/env bash
# What the installed packages do, in the root that they are installed in.
set -euo pipefail
state=$HOME/.local/state/carvoy-appliance
bus='' bridge=''

fail()
{
    echo "FAILED: $*"
    tail -n 20 "$HOME/platform.log" "$HOME/bus.log" 2>/dev/null | cut -c1-200 || true
    exit 1
}

take_down()
{
    [ -z "$bus" ] || kill "$bus" 2>/dev/null || true
    [ -z "$bridge" ] || kill "$bridge" 2>/dev/null || true
}
trap take_down EXIT

# A folder that nobody has made before; nothing stays in it.
run_from_installed_files()
{
    local arguments
    for arguments in "--merchant greengrocer apple" "--retailer"; do
        # shellcheck disable=SC2086
        appliance run $arguments >"$HOME/run.out" 2>&1 || fail "appliance run $arguments: $(cut -c1-200 "$HOME/run.out")"
        grep -q '^✓ picture 1 ' "$HOME/run.out" || fail "appliance run $arguments shows no picture"
    done
    [ -d "$state" ] || fail "the runs were not made in $state"
    [ -z "$(ls -A "$state")" ] || fail "the runs left $(ls -A "$state")"
}

# Of this user, or where they say; a command that finds nothing there names it.
live_in_the_state_folder()
{
    local said
    ! said=$(appliance env 2>&1) && grep -q "nothing runs in $state;" <<<"$said" || fail "the folder is another: $said"
    ! said=$(XDG_STATE_HOME=$HOME/elsewhere appliance env 2>&1) &&
        grep -q "nothing runs in $HOME/elsewhere/carvoy-appliance;" <<<"$said" || fail "the folder is another: $said"
}

start_bridge()
{
    local tokens=$state/apps_rw/org.example.partnerpay/shared/trusted/tokens.txt line
    mkdir -p "$(dirname "$tokens")"
    echo "session,access" >"$tokens"
    exec 3< <(exec /usr/libexec/carvoy-appliance/merchant-bridge --ca-file "$HOME/ca.pem" --tokens-file "$tokens")
    bridge=$!
    read -r -t 30 line <&3 || fail "the merchant bridge does not come up"
    export APPLIANCE_CA_FILE=$HOME/ca.pem APPLIANCE_DLOG=$HOME/platform.log no_proxy='*'
    APPLIANCE_CONNECT_TO=merchant-bridge.example:443:127.0.0.1:$(sed -E 's/.*"port":([0-9]+).*/\1/' <<<"$line")
    export APPLIANCE_CONNECT_TO
}

# A session's bus as it comes with the system. Nobody has started an app on it.
start_bus()
{
    exec 4< <(exec dbus-daemon --session --nofork --nopidfile --print-address=1 2>"$HOME/bus.log")
    bus=$!
    read -r -t 30 DBUS_SESSION_BUS_ADDRESS <&4 || fail "the bus does not come up"
    export DBUS_SESSION_BUS_ADDRESS
}

on_bus()
{
    gdbus call --session --timeout 30 -d org.freedesktop.DBus -o /org/freedesktop/DBus \
        -m "org.freedesktop.DBus.$1" "${@:2}"
}

# wait_for FILE TEXT: until a line of the file has it.
wait_for()
{
    local follower found=0
    exec 5< <(exec timeout 60 tail -n +1 -F "$1" 2>/dev/null)
    follower=$!
    grep -q -m 1 -- "$2" <&5 || found=1
    kill "$follower" 2>/dev/null || true
    exec 5<&-
    return $found
}

be_started_by_a_search()
{
    local app pids=()
    start_bridge
    start_bus
    [ "$(on_bus NameHasOwner org.tizen.carvoy-service)" = '(false,)' ] || fail "the service runs already"
    appliance send org.tizen.carvoy-service service:search \
        --extra key_merchant=greengrocer --extra key_search_term=apple || fail "the first search is not taken"
    [ "$(on_bus NameHasOwner org.tizen.carvoy-service)" = '(true,)' ] || fail "the first search starts no service"
    appliance send org.tizen.carvoy-service service:result || fail "the result cannot be asked for"
    wait_for "$state/screen/card.json" Apple || fail "the first search's lists do not reach the screen"
    for app in org.tizen.nuvex-da org.example.partnerpay org.tizen.carvoy-retailer; do
        on_bus StartServiceByName $app 0 >/dev/null || fail "$app cannot be started"
    done
    for app in org.tizen.{carvoy,carvoy-service,carvoy-retailer,nuvex-da} org.example.partnerpay; do
        pids+=("$(on_bus GetConnectionUnixProcessID $app | tr -dc '0-9 ' | awk '{ print $NF }')")
    done
    take_down
    for app in "${pids[@]}"; do
        timeout 60 tail --pid="$app" -f /dev/null || fail "process $app outlives its bus"
    done
}

show_pages()
{
    local page warnings count=0
    for page in /usr/share/man/man1/{appliance,carvoy}*.1.gz; do
        warnings=$(zcat "$page" | groff -mandoc -ww -Tutf8 2>&1 >"$HOME/page") || fail "$page cannot be shown"
        [ -z "$warnings" ] || fail "$page: $warnings"
        sed 's/.\x08//g' "$HOME/page" | grep DESCRIPTION >"$HOME/found" || fail "$page shows nothing"
        count=$((count + 1))
    done
    [ "$count" -eq "$(($(ls /usr/libexec/carvoy-appliance | wc -l) + 2))" ] || fail "$count pages are too few"
}

complete_words()
{
    # shellcheck disable=SC1091
    source /usr/share/bash-completion/completions/appliance
    complete -p appliance >/dev/null || fail "nothing completes appliance"
    COMP_WORDS=(appliance sta) COMP_CWORD=1
    _appliance
    [ "${COMPREPLY[*]}" = status ] || fail "“appliance sta” is completed to “${COMPREPLY[*]}”"
}

# The unit is sound, starts what is there, and stays as closed as it is said to be.
look_at_the_unit()
{
    local unit=/usr/lib/systemd/user/carvoy-service.service
    [ -x "$(sed -n 's/^ExecStart=//p' $unit)" ] || fail "the unit starts nothing"
    if ! command -v systemd-analyze >/dev/null; then
        echo "not looked at: $unit, for want of systemd-analyze"
        return
    fi
    export XDG_RUNTIME_DIR=/run
    systemd-analyze verify --user --man=no $unit || fail "$unit is not sound"
    systemd-analyze security --user --offline=true --threshold=20 $unit >"$HOME/security" ||
        fail "$unit: $(tail -n 1 "$HOME/security")"
    tail -n 1 "$HOME/security"
}

run_from_installed_files
live_in_the_state_folder
be_started_by_a_search
show_pages
complete_words
look_at_the_unit
