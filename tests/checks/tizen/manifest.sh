#!/usr/bin/env bash
# manifest.sh SOURCE WORK: the appliance's manifest is as its schema says, and says what the service's sources say.
set -euo pipefail
cd "$1"
work=$2
. tests/checks/tizen/spec.sh

manifest=packaging/tizen-manifest.xml
schema=packaging/tizen-manifest.xsd
spec=packaging/carvoy-service.spec
status=0

complain()
{
    echo "$*"
    status=1
}

valid()
{
    xmllint --noout --nonet --schema $schema "$1" 2>&1
}

# value XPATH: of the manifest, whose elements are written without their namespace here.
value()
{
    sed 's/ xmlns="[^"]*"//' $manifest | xmllint --xpath "$1" - | sed 's/^ *[a-z]*="\(.*\)"$/\1/'
}

same()
{
    [ "$2" = "$3" ] || complain "$1: the manifest has \"$2\", and it is \"$3\""
}

# broken SED-EXPRESSION: the manifest changed in this way is refused.
broken()
{
    local copy=$work/broken.xml
    sed -E "$1" $manifest >"$copy"
    if cmp -s "$copy" $manifest; then
        complain "$1 changes nothing"
    elif valid "$copy" >"$work/answer"; then
        complain "$1 leaves a manifest that is taken"
    elif ! grep -q 'fails to validate' "$work/answer"; then
        complain "$1 leaves what cannot even be read: $(cat "$work/answer")"
    fi
}

mkdir -p "$work"
answer=$(valid $manifest) || complain "$answer"

broken 's/version="0\.0\.1"/version="0.0"/'
broken 's/version="0\.0\.1"/version="256.0.1"/'
broken 's/version="0\.0\.1"/version="0.0.65536"/'
broken 's/ appid="[^"]*"//'
broken 's/appid="[^"]*"/appid="org.tizen.a service"/'
broken 's/appid="[^"]*"/appid="org.tizen.carvoy-service-with-a-name-that-is-too-long"/'
broken 's/exec="[^"]*\/([^"]*)"/exec="\1"/'
broken 's/type="capp"/type="webapp"/'
broken 's/multiple="false"/multiple="true"/'
broken 's/install-location="[^"]*"/install-location="anywhere"/'
broken 's/api-version="[^"]*"//'
broken 's/operation\/result/operation\/search/'
broken 's/<operation [^>]*>//'
broken 's/operation name=/uri name=/'
broken 's/service-application/ui-application/'
broken 's/background-network/background-everything/'
broken 's/<privilege>http:\/\/tizen.org\/privilege\/internet/<privilege>internet/'
broken 's/privilege\/internet/privilege\/recorder/'
broken 's/<(\/?)privilege>/<\1permission>/g'
broken 's/http:\/\/tizen.org\/ns\/packages/http:\/\/example.org\/ns/'

# What other files say, too.
app_id=$(sed -n 's/^appliance_app(carvoy-service \(.*\))$/\1/p' service/CMakeLists.txt)
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
same "the app id" "$(value '//service-application/@appid')" "$app_id"
same "the package" "$(value '/manifest/@package')" "$app_id"
same "the version" "$(value '/manifest/@version')" "$version"
same "the version" "$(spec_value $spec Version)" "$version"
same "the program" "$(value '//service-application/@exec')" "/usr/apps/$app_id/bin/$(spec_value $spec Name)"

# The operations that the dispatch compares with, by their names in the service's constants.
answered()
{
    local name
    for name in $(grep -oE 'operation == OPERATION_[A-Z_]+' service/src/Service.cpp | sed 's/.* //'); do
        sed -n "s/^const std::string $name = SERVICE_OPERATION(\"\(.*\)\");/http:\/\/carvoy-service\/appcontrol\/operation\/\1/p" \
            service/src/Constants.h
    done
}
same "the operations" "$(value '//operation/@name' | sort)" "$(answered | sort)"

# The key that the package declares is the one that the service writes.
key=$(sed -n 's/^vconftool set -t int \([^ ]*\) 0 .*/\1/p' $spec)
[ -n "$key" ] || complain "the package declares no key"
grep -rqF "vconf_set_int(\"$key\"," service || complain "nothing writes the key $key"

# The document has each privilege, and no other.
same "the privileges" "$(value '//privilege/text()' | sed 's/.*\///' | sort)" \
    "$(sed -n '/^| privilege /,/^$/s/^| `\([^`]*\)` .*/\1/p' docs/tizen.md | sort)"

cmake_needed=$(sed -n 's/^cmake_minimum_required(VERSION \(.*\))$/\1/p' CMakeLists.txt)
grep -qx "BuildRequires: cmake >= $cmake_needed" $spec || complain "the package does not require CMake $cmake_needed"

[ $status -eq 0 ] && echo "OK: the manifest is valid, twenty broken ones are not, and it says what the sources say"
exit $status
