#!/usr/bin/env bash
# calls.sh SOURCE WORK: what the service calls from libraries, by the objects and the program that package.sh built in
# WORK, is what the table of its calls, the manifest's privileges, the package's requirements and CMake have.
set -euo pipefail
cd "$1"
work=$2
. tests/checks/tizen/spec.sh

manifest=packaging/tizen-manifest.xml
spec=packaging/carvoy-service.spec
table=packaging/platform-calls.txt
build=$(build_folder "$work" $spec)
scratch=$work/calls
mkdir -p "$scratch"

# The names of the C and C++ libraries, and of what the linker makes.
language_symbols()
{
    local library
    for library in libstdc++.so.6 libgcc_s.so.1 libm.so.6 libc.so.6; do
        nm -D --format=posix --defined-only "$(g++ -print-file-name=$library)"
    done | sed 's/[@ ].*//'
    printf '%s\n' __dso_handle _GLOBAL_OFFSET_TABLE_
}

# What the objects of service/ and common/ need from others.
called_by_objects()
{
    find "$build" -name '*.o' -not -path '*/CMakeFiles/[0-9]*' -exec nm --format=posix {} + 2>/dev/null |
        awk '$2 == "U" { needed[$1] = 1 }
             NF >= 3 && $2 != "U" { defined[$1] = 1 }
             END { for (symbol in needed) if (!(symbol in defined)) print symbol }'
}

# What the program needs: not all that the libraries of service/ and common/ have is linked into it.
called_by_program()
{
    nm -D --format=posix --undefined-only "$build/bin/carvoy-service" | sed 's/[@ ].*//'
}

# Only what the languages do not bring along.
of_libraries()
{
    sort -u | comm -23 - "$scratch/language"
}

asked_modules()
{
    sed -n 's/.*--exists.* \([^ ]*\)$/\1/p' "$work/asked" | sort -u
}

# column N: of the table's lines on standard input.
column()
{
    awk -v column="$1" '$column != "" && $column != "-" { print $column }' | sort -u
}

# complain_of_each FORMAT: says each line on standard input in that way; false where there is one.
complain_of_each()
{
    sed "s|.*|$1|" | grep . || return 0
    return 1
}

# compare A-NAME B-NAME A B: says which lines only one of the two has; false where there are any.
compare()
{
    local result=0
    comm -23 <(echo "$3") <(echo "$4") | complain_of_each "& is in $1, but not in $2" || result=1
    comm -13 <(echo "$3") <(echo "$4") | complain_of_each "& is in $2, but not in $1" || result=1
    return $result
}

# The comment that stands above each privilege, behind the privilege's name.
manifest_reasons()
{
    awk '/<!--/ { reason = $0; gsub(/^ *<!-- *| *-->.*$/, "", reason); next }
         /<privilege>/ { name = $0; gsub(/.*\/privilege\/|<\/.*/, "", name); print name ": " reason }
         { reason = "" }' "$1" | sort
}

# The reason of each privilege that the program needs, from the table.
needed_reasons()
{
    local prefixes
    prefixes=$(rows_of_symbols "$1" <"$scratch/program" | column 2)
    awk -v prefixes="$prefixes" 'BEGIN { count = split(prefixes, list); for (i = 1; i <= count; ++i) used[list[i]] = 1 }
        $1 in used && $3 != "-" { name = $3; $1 = $2 = $3 = ""; sub(/^ */, ""); print name ": " $0 }' "$1" | sort
}

# holds MANIFEST SPEC TABLE: says what does not fit together; false where there is anything.
holds()
{
    local manifest=$1 spec=$2 table=$3 result=0 rows
    rows=$(rows_of_symbols "$table" <"$scratch/objects")
    awk 'NF == 1 { print $1 }' <<<"$rows" | complain_of_each "& is called and not in the table" || result=1
    compare "the table" "what the objects call" "$(grep -vE '^(#|$)' "$table" | column 1)" "$(column 2 <<<"$rows")" || result=1
    compare "the table" "the package's BuildRequires" "$(column 3 <<<"$rows")" "$(required_modules "$spec")" || result=1
    compare "what CMake asks pkg-config for" "the package's BuildRequires" \
        "$(cat "$scratch/asked")" "$(required_modules "$spec")" || result=1
    compare "the manifest" "what the program needs" "$(manifest_reasons "$manifest")" "$(needed_reasons "$table")" || result=1
    return $result
}

status=0
# finds TEXT FILE SED-EXPRESSION: with the file changed in this way, that is what does not hold.
finds()
{
    local files=("$manifest" "$spec" "$table") i answer
    for i in 0 1 2; do
        [ "${files[i]}" = "$2" ] || continue
        files[i]=$scratch/$(basename "$2")
        sed "$3" "$2" >"${files[i]}"
    done
    if answer=$(holds "${files[@]}") || ! grep -qF -- "$1" <<<"$answer"; then
        echo "$2 after $3 should be \"$1\", and is \"$answer\""
        status=1
    fi
}

language_symbols | sort -u >"$scratch/language"
called_by_objects | of_libraries >"$scratch/objects"
called_by_program | of_libraries >"$scratch/program"
asked_modules >"$scratch/asked"

holds $manifest $spec $table || status=1

finds "vconf_set_int is called and not in the table" $table '/^vconf_/d'
finds "bundle_ is in the table, but not in what" $table 's/^vconf_/bundle_ bundle - reason\n&/'
finds "dlog is in the table, but not in the package's" $spec '/pkgconfig(dlog)/d'
finds "bundle is in the package's BuildRequires, but not in what CMake" $spec 's/.*pkgconfig(dlog).*/&\nBuildRequires: pkgconfig(bundle)/'
finds "recorder: Voice control" $manifest '/privilege\/recorder/d'
finds "location: " $manifest 's/privilege\/recorder/privilege\/location/'
finds "internet:  is in the manifest" $manifest '/Products are searched at/d'
finds "download: " $manifest 's/.*privilege\/internet.*/&\n<!-- Pictures. -->\n<privilege>http:\/\/tizen.org\/privilege\/download<\/privilege>/'
finds "internet: " $table 's/^\(curl_easy_perform .*\) internet /\1 - /'

[ $status -eq 0 ] &&
    echo "OK: $(wc -l <"$scratch/objects") functions of $(required_modules $spec | wc -l) modules; the program needs" \
        "$(grep -c '<privilege>' $manifest) privileges"
exit $status
