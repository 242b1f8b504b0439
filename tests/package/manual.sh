#!/usr/bin/env bash
# Each manual page is sound, and names the options of its program: those that --help names, and no others.
# usage: manual.sh SOURCES PROGRAMS
set -euo pipefail
cd "$1/man"
programs=$2
status=0

complain()
{
    echo "$*"
    status=1
}

# What --help names: "  -h,--help  ..." and "  --merchant TEXT ..."
options_of()
{
    "$programs/$1" ${2:+"$2"} --help | sed -nE 's/^  (-[A-Za-z-]+(,-[A-Za-z-]+)*).*/\1/p' | tr ',' '\n' | sort
}

# What the page's list of options names: ".It Fl h , -help" and ".It Fl -merchant Ar id", in the section of that title.
options_in()
{
    awk -v title="$2" '
        /^\.S[hs] / { here = substr($0, 5) == title }
        here && /^\.It Fl / {
            for (i = 3; i <= NF && $i != "Ar"; ++i)
                if ($i != "," && $i != "Fl")
                    print "-" $i
        }' "$1.1" | sort
}

compare()
{
    local page=$1 program=$2 command=${3:-}
    local differences
    differences=$(diff <(options_of "$program" "$command") <(options_in "$page" "${command:-OPTIONS}")) ||
        complain "man/$page.1 and $program${command:+ $command} --help differ (<: only --help has it, >: only the page):" \
            $'\n'"$(grep '^[<>]' <<<"$differences")"
}

commands_of_appliance()
{
    "$programs/appliance" --help | awk '/^Subcommands:/ { on = 1; next } /^$/ { on = 0 } on { print $1 }' | sort
}

for page in *.1; do
    warnings=$(groff -mandoc -ww -Tutf8 "$page" 2>&1 >/dev/null)
    [ -z "$warnings" ] || complain "man/$page: $warnings"
done

compare appliance-merchant-bridge merchant-bridge
compare appliance-retailer retailer
for program in carvoy-assistant carvoy-partner carvoy-ui; do
    compare $program $program
done
compare appliance appliance
mapfile -t commands < <(commands_of_appliance)
[ ${#commands[@]} -gt 0 ] || complain "appliance --help names no commands"
for command in "${commands[@]}"; do
    compare appliance appliance "$command"
done
diff <(printf '%s\n' "${commands[@]}") \
    <(awk '/^\.Sh / { here = $2 == "COMMANDS" } here && /^\.Ss / { print $2 }' appliance.1 | sort) ||
    complain "man/appliance.1 and appliance --help differ in their commands"

# These take none, and their pages say so.
for page in carvoy-service carvoy-retailer; do
    grep -q '^It takes no options and no arguments' $page.1 && [ -z "$(options_in $page OPTIONS)" ] ||
        complain "man/$page.1 does not say that there are no options"
done

[ $status -eq 0 ] && echo "OK: every manual page names what its program takes"
exit $status
