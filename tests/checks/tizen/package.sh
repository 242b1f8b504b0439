#!/usr/bin/env bash
# package.sh SOURCE HOST-PLATFORM WORK: builds the appliance's package by its description, out of service/ and common/
# alone, with the declared platform headers and nothing else of the platform's. WORK keeps everything for other checks.
#
# In place of the appliance's modules stand libraries without a content: they have the functions that HOST-PLATFORM, the
# library of the same interface for a PC, has. What is no module of the appliance's alone is Debian's.
set -euo pipefail
source_folder=$1
host_platform=$2
work=$3
. "$(dirname "$0")/spec.sh"

spec=$source_folder/packaging/carvoy-service.spec
table=$source_folder/packaging/platform-calls.txt

# A module's description for pkg-config.
describe_module()
{
    printf 'Name: %s\nDescription: %s\nVersion: 1\nCflags: %s\nLibs: %s\n' "$1" "$1" "$2" "$3" >"$work/modules/$1.pc"
}

# The C functions of the host platform that are the module's, by their names.
functions_of_module()
{
    nm --format=posix --defined-only "$host_platform" 2>/dev/null | awk '$2 == "T" && $1 !~ /^_/ { print $1 }' |
        rows_of_symbols "$table" | awk -v module="$1" '$3 == module { print $1 }'
}

make_module()
{
    if pkg-config --exists "$1"; then
        describe_module "$1" "$(pkg-config --cflags "$1")" "$(pkg-config --libs "$1")"
        return
    fi
    functions_of_module "$1" | sed 's/.*/void &(void) {}/' |
        gcc -w -shared -fPIC -Wl,-soname,"lib$1.so" -x c - -o "$work/lib/lib$1.so"
    describe_module "$1" "-I$work/include" "-L$work/lib -l$1"
}

# pkg-config sees the modules that the package asks for and no others, and what it is asked is written down.
make_pkg_config()
{
    mkdir -p "$work/modules" "$work/lib"
    cp -r "$source_folder/platform/include" "$work/include"
    local module
    for module in $(required_modules "$spec"); do
        make_module "$module"
    done
    cat >"$work/pkg-config" <<TEXT
#!/bin/sh
echo "\$@" >>"$work/asked"
PKG_CONFIG_LIBDIR="$work/modules" exec $(command -v pkg-config) "\$@"
TEXT
    chmod +x "$work/pkg-config"
}

# The sources of the package: all else is left out, so that nothing can need it.
pack_sources()
{
    mkdir -p "$work/rpm/SOURCES"
    local name
    name=carvoy-service-$(spec_value "$spec" Version)
    tar -C "$source_folder" --transform "s,^,$name/," -czf "$work/rpm/SOURCES/$name.tar.gz" \
        CMakeLists.txt cmake common packaging service
    cp "$source_folder/packaging/carvoy-service.manifest" "$work/rpm/SOURCES/"
}

# %manifest is a word of the platform's rpm alone.
build_package()
{
    mkdir -p "$work/tmp"
    if ! PKG_CONFIG=$work/pkg-config rpmbuild -bb --noclean --nodeps "${RPM_FOLDERS[@]}" --define "_topdir $work/rpm" \
        --define "_dbpath $work/rpm/db" --define "_tmppath $work/tmp" --define 'debug_package %{nil}' \
        --define 'manifest() %{nil}' --define '_build_id_links none' \
        --define 'optflags -O0' --define 'carvoy_partner_app_id org.example.otherpay' "$spec" >"$work/log" 2>&1; then
        tail -n 40 "$work/log" | cut -c1-300
        echo "the package cannot be built; all of it is in $work/log"
        exit 1
    fi
}

rm -rf "$work"
mkdir -p "$work"
make_pkg_config
pack_sources
build_package
status=0
packages=("$work"/rpm/RPMS/*/*.rpm)
package=${packages[0]}

# Each folder and file, and nothing else.
expected="/usr/apps/org.tizen.carvoy-service
/usr/apps/org.tizen.carvoy-service/bin
/usr/apps/org.tizen.carvoy-service/bin/carvoy-service
/usr/share/packages/org.tizen.carvoy-service.xml"
if ! diff <(echo "$expected") <(rpm -qlp --dbpath "$work/rpm/db" "$package" | sort); then
    echo "the package has other files"
    status=1
fi

# The programs of a PC are built from a checkout; the package's build has those two folders only.
build=$(build_folder "$work" "$spec")
built=$(find "$build" -name '*.o' | sed "s,^$build/,,; s,/CMakeFiles/.*,," | sort -u | grep -v '^CMakeFiles\|^/' || true)
if [ "$built" != $'common\nservice' ]; then
    echo "objects were built in:" $built
    status=1
fi

# The values of the site arrive in the program.
program=$build/bin/carvoy-service
if ! grep -qaF org.example.otherpay "$program"; then
    echo "the package's build does not hand on the site's values"
    status=1
fi
for value in $(sed -n 's/^set(\(CARVOY_[A-Z_]*\) .*/\1/p' "$source_folder/cmake/SiteValues.cmake"); do
    if ! grep -q -- "-D$value=%{${value,,}}" "$spec"; then
        echo "the package's description has no place for $value"
        status=1
    fi
done

# A word that is no platform's is refused by its name.
if answer=$(PKG_CONFIG=$work/pkg-config cmake -S "$source_folder" -B "$work/unknown" -DCARVOY_PLATFORM=moon 2>&1) ||
    ! grep -q 'CARVOY_PLATFORM is "moon"; there are host and tizen' <<<"$answer"; then
    echo "an unknown platform is taken: $answer"
    status=1
fi

[ $status -eq 0 ] && echo "OK: $(basename "$package") is built from service/ and common/ with the declared interface"
exit $status
