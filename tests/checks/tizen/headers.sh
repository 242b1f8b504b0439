#!/usr/bin/env bash
# headers.sh SOURCE WORK: what package.sh compiled in WORK includes, besides the languages' own headers, only headers of
# the modules that the package asks for; and what those do not declare does not compile.
set -euo pipefail
cd "$1"
work=$2
. tests/checks/tizen/spec.sh

spec=packaging/carvoy-service.spec
build=$(build_folder "$work" $spec)
scratch=$work/headers
mkdir -p "$scratch"
status=0

# closure MODULE...: Debian's modules, and those that their headers need in turn.
closure()
{
    local module
    for module in "$@"; do
        echo "$module"
        closure $(pkg-config --print-requires "$module" | awk '{ print $1 }')
    done
}

# The Debian packages whose headers may be included, as patterns for whole names.
allowed_packages()
{
    printf '%s\n' 'libc6-dev' 'linux-libc-dev' 'libstdc\+\+-[0-9]*-dev' 'libgcc-[0-9]*-dev'
    local module
    for module in $(closure $(required_modules $spec | while read -r module; do
        if pkg-config --exists "$module"; then echo "$module"; fi
    done) | sort -u); do
        dpkg-query -S "$(pkg-config --variable=pcfiledir "$module")/$module.pc" | sed 's/:.*//'
    done | sort -u
}

# The headers that make's rules on standard input name.
headers()
{
    tr ' \\' '\n\n' | sed -n 's/:$//; /^\/.*[^:]$/p' | sort -u | xargs realpath
}

# Says which of the headers on standard input belong to nobody of whom they may; false where there is one.
all_allowed()
{
    local foreign
    foreign=$(grep -v "^$(realpath "$work")/" | xargs --no-run-if-empty dpkg-query -S 2>&1 |
        grep -vxE "($(paste -sd '|' "$scratch/allowed"))(:[a-z0-9]+)?: .*" || true)
    [ -z "$foreign" ] || echo "$foreign"
    [ -z "$foreign" ]
}

# compiler ARGUMENT...: as Service.cpp is compiled, with C++ from standard input.
command=$(sed -n 's/^ *"command": "\(.*\) -o [^ ]*Service\.cpp\.o -c .*",$/\1/p' "$build/compile_commands.json")
compiler()
{
    LC_ALL=C $command "$@" -x c++ -
}

# declared CALL HEADER: compiles. undeclared CALL HEADER TEXT: does not, and the compiler says so. foreign HEADER: is one
# of nobody's of whom it may be.
declared()
{
    local answer
    answer=$(printf '#include <%s>\nvoid call() { %s; }\n' "$2" "$1" | compiler -fsyntax-only 2>&1) && return
    echo "$1 of <$2> does not compile: $answer"
    status=1
}

undeclared()
{
    local answer
    if answer=$(printf '#include <%s>\nvoid call() { %s; }\n' "$2" "$1" | compiler -fsyntax-only 2>&1) ||
        ! grep -qF "$3" <<<"$answer"; then
        echo "$1 with <$2> should be refused with \"$3\", and is: $answer"
        status=1
    fi
}

foreign()
{
    if printf '#include <%s>\n' "$1" | compiler -M | headers | all_allowed >"$scratch/answer"; then
        echo "<$1> may be included"
        status=1
    fi
    if ! grep -qF "/$1" "$scratch/answer"; then
        echo "<$1> is not named: $(cat "$scratch/answer")"
        status=1
    fi
}

[ -n "$command" ] || { echo "Service.cpp was not compiled" && exit 1; }
allowed_packages >"$scratch/allowed"
find "$build" -name '*.o.d' -exec cat {} + | headers >"$scratch/used"
all_allowed <"$scratch/used" || status=1

# As many objects as there are sources: what is not built is not checked.
objects=$(find "$build" -name '*.o.d' | wc -l)
sources=$(find common service -name '*.cpp' | wc -l)
if [ "$objects" -ne "$sources" ]; then
    echo "$objects of $sources sources were compiled"
    status=1
fi

declared 'vconf_set_int("db/a", 1)' vconf.h
declared 'app_control_h a; app_control_create(&a)' app_control.h
undeclared 'vconf_set_str("db/a", "b")' vconf.h "'vconf_set_str' was not declared"
undeclared 'app_control_enable_app_started_result_event(nullptr)' app_control.h "was not declared"
undeclared 'vc_request_dialog("a", "b", true)' voice_control.h "'vc_request_dialog' was not declared"
undeclared 'dlog_print(DLOG_INFO)' dlog.h "too few arguments"
undeclared 'tzplatform_mkpath(TZ_USER_DOWNLOADS, "a")' tzplatform_config.h "'TZ_USER_DOWNLOADS' was not declared"
undeclared 'bundle_create()' bundle.h "bundle.h: No such file or directory"
foreign sdbus-c++/sdbus-c++.h
foreign systemd/sd-journal.h
foreign nlohmann/json.hpp

[ $status -eq 0 ] &&
    echo "OK: $objects sources include $(wc -l <"$scratch/used") headers, none of them of anybody but the declared modules"
exit $status
