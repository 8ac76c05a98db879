# Functions over dpkg and apt, to be sourced by the scripts of this folder.

# What is built or downloaded here and outlives a checkout.
tarn_cache=${TARN_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tarnlib}

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

is_installed() {
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# The machine's own entry for the main suite of its release, with sources, as one list.
# Other suites stay out: where the i386 index of a security mirror is out of step, no i386 package installs.
write_main_list() {
    local codename
    codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
    # Either may be missing.
    { cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null || true; } | one_line_entry "$codename" >"$1.list"
    if [ -s "$1.list" ]; then
        main_list=$1.list
        return
    fi
    for file in /etc/apt/sources.list.d/*.sources; do
        [ -e "$file" ] || continue
        # An empty line between files, so that stanzas stay apart.
        cat "$file"
        echo
    done | deb822_entry "$codename" >"$1.sources"
    main_list=$1.sources
    [ -s "$main_list" ] || { echo "no entry for $codename main in /etc/apt" >&2; return 1; }
}

one_line_entry() {
    awk -v codename="$1" '
        $1 == "deb" && !done {
            options = ""
            line = $0
            if (match(line, /\[[^]]*\]/)) {
                options = substr(line, RSTART + 1, RLENGTH - 2)
                gsub(/arch=[^ ]*/, "", options)
                line = substr(line, 1, RSTART - 1) substr(line, RSTART + RLENGTH)
            }
            count = split(line, field, " ")
            if (field[3] != codename) next
            for (i = 4; i <= count; ++i) if (field[i] == "main") done = 1
            if (done) for (t = 0; t < 2; ++t)
                printf "%s [%s] %s %s main\n", t ? "deb-src" : "deb", options, field[2], codename
        }'
}

# Fields may go on over indented lines (a key may stand in Signed-By).
deb822_entry() {
    awk -v codename="$1" '
        function finish() {
            if (!done && (" " value["types"] " ") ~ / deb / && (" " value["suites"] " ") ~ " " codename " " &&
                (" " value["components"] " ") ~ / main / && value["enabled"] !~ /no|false|0/) {
                print "Types: deb deb-src\nURIs:" value["uris"] "\nSuites: " codename "\nComponents: main"
                if ("signed-by" in value) print "Signed-By:" value["signed-by"]
                if ("trusted" in value) print "Trusted:" value["trusted"]
                done = 1
            }
            delete value
        }
        /^#/ { next }
        /^[ \t]*$/ { finish(); next }
        /^[ \t]/ { value[name] = value[name] "\n" $0; next }
        { name = tolower($0); sub(/:.*/, "", name); text = $0; sub(/^[^:]*:/, "", text); value[name] = text }
        END { finish() }'
}

# Makes apt_main: the options that make apt see the main suite only, with its package lists up to date.
use_main_suite() {
    [ -z "${apt_main-}" ] || return 0
    local folder=$tarn_cache/apt
    mkdir -p "$folder/lists/partial" "$folder/cache/archives/partial"
    write_main_list "$folder/main"
    apt_main=(-o Dir::Etc::sourceparts=/dev/null -o "Dir::Etc::sourcelist=$main_list"
        -o "Dir::State::lists=$folder/lists" -o APT::Sandbox::User=root)
    # The lists are our own, so that this takes no rights, unless an earlier run was root's.
    apt-get "${apt_main[@]}" -q update || as_root apt-get "${apt_main[@]}" -q update
}

# From the main suite; where that does not fit what the machine has, from everything that it knows.
install_packages() {
    local install=(env DEBIAN_FRONTEND=noninteractive apt-get)
    local how=(-q -y --no-install-recommends -o Dpkg::Use-Pty=0 install)
    if use_main_suite && as_root "${install[@]}" "${apt_main[@]}" "${how[@]}" "$@"; then return; fi
    echo "the main suite alone does not do; trying all of the machine's sources"
    as_root apt-get -q update
    as_root "${install[@]}" "${how[@]}" "$@"
}
