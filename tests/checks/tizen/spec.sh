# For the checks of the appliance's package: what its description, and the table of the platform's calls, say.

# What the platform's build system has set.
RPM_FOLDERS=(--define 'TZ_SYS_RO_APP /usr/apps' --define 'TZ_SYS_RO_PACKAGES /usr/share/packages')

# required_modules SPEC: the modules of pkg-config that the package's build requires.
required_modules()
{
    rpmspec -q --buildrequires "${RPM_FOLDERS[@]}" "$1" | sed -n 's/^pkgconfig(\(.*\))$/\1/p' | sort -u
}

# spec_value SPEC TAG: what stands after the tag.
spec_value()
{
    rpmspec -P "${RPM_FOLDERS[@]}" "$1" | sed -n "s/^$2: *//p"
}

# build_folder WORK SPEC: where package.sh built the package.
build_folder()
{
    echo "$1/rpm/BUILD/carvoy-service-$(spec_value "$2" Version)/build"
}

# rows_of_symbols TABLE: for each symbol on standard input `SYMBOL PREFIX MODULE PRIVILEGE`, by the longest prefix of the
# table that fits; `SYMBOL` alone where none does.
rows_of_symbols()
{
    awk 'NR == FNR { if ($0 !~ /^(#|$)/) row[$1] = $1 " " $2 " " $3; next }
         {
             best = ""
             for (prefix in row)
                 if (index($1, prefix) == 1 && length(prefix) > length(best))
                     best = prefix
             print $1 (best == "" ? "" : " " row[best])
         }' "$1" -
}
