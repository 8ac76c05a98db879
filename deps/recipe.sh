# What the recipes of this folder share: a dependency is cross-built from Debian's source package into the cache, once
# for all checkouts. To be sourced; a recipe defines "build" and calls build_once.
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/apt.sh"
toolchain=$here/../cmake/mingw-w64-i686.cmake

# fetch_source PACKAGE [OPTION OF DPKG-SOURCE...]: the source package, unpacked into "source".
fetch_source() {
    use_main_suite
    apt-get "${apt_main[@]}" -q source --download-only "$1"
    dpkg-source --no-check "${@:2}" -x "$1"_*.dsc source
}

# build_once NAME VERSION PRODUCT TITLE: prints the prefix of the dependency; what it takes is told on standard error.
# Unless PRODUCT, a path below the prefix, is there, "build" runs in an empty folder and fills its folder "installed".
# The prefix is named by version, recipe and compiler, so that a change of any of them builds anew.
build_once() {
    local name=$1 version=$2 product=$3 title=$4
    local key prefix log=$tarn_cache/$name.log status
    key=$({ cat "$0" "$here/recipe.sh" "$toolchain"; i686-w64-mingw32-g++-posix --version; } | sha256sum | cut -c1-12)
    prefix=$tarn_cache/$name-$version-$key
    mkdir -p "$tarn_cache"
    exec 8>"$tarn_cache/.$name.lock"
    flock 8 # one build for all checkouts
    if [ ! -e "$prefix/$product" ]; then
        echo "building $title" >&2
        # Not as a condition: there the shell would go on after a step that failed.
        set +e
        (set -e; build_into_prefix "$prefix") >"$log" 2>&1
        status=$?
        set -e
        if [ $status -ne 0 ] || [ ! -e "$prefix/$product" ]; then
            echo "$title could not be fetched or built; the end of $log:" >&2
            tail -n 40 "$log" >&2
            return 1
        fi
    fi
    echo "$prefix"
}

build_into_prefix() {
    local prefix=$1 work=$1.work
    rm -rf "$work"
    mkdir -p "$work"
    cd "$work"
    build
    # Moving last keeps half a build out.
    rm -rf "$prefix"
    mv installed "$prefix"
    rm -rf "$work"
}
