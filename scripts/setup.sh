# Shared by ./play, ./check, ./render, ./bench and ./package: which packages they need, and how the project is built.
# Sourced by bash from the root of the tree.

# What the program and its data are built with.
build_packages=(g++ make cmake ninja-build pkg-config
    libsdl1.2-dev libgl-dev libglu1-mesa-dev libpng-dev libjpeg-dev zlib1g-dev libminizip-dev libsndfile1-dev
    libgl1-mesa-dri libcairo2-dev fonts-jura libcli11-dev nlohmann-json3-dev)
# What rendering to video or frames needs besides.
render_packages=(python3 xvfb xauth ffmpeg)
# What the tests need besides: a virtual display, keys, the other SDL library, the second compiler with its run-times.
check_packages=(python3 xvfb xauth ffmpeg xdotool libgtest-dev libsdl1.2-compat clang libclang-rt-dev)
# What the benchmarks need besides; the libraries they compare with are skipped where they are missing.
bench_packages=(python3 xvfb xauth libbenchmark-dev libtinyxml2-dev libpugixml-dev libmeshoptimizer-dev)

say() { printf '%s\n' "$*"; }
fail() { printf 'Error: %s\n' "$*" >&2; exit 1; }

# usage prints what stands at the top of the calling script, which lies in the current folder.
usage() { sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$(basename "$0")"; }

# bad_argument TEXT ends the script with what is wrong and how it is used.
bad_argument()
{
    printf 'Error: %s\n\n' "$*" >&2
    usage >&2
    exit 2
}

# missing_packages NAME... prints those that are not installed.
missing_packages()
{
    local name
    for name in "$@"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$name" 2>/dev/null | grep -qx installed || printf '%s\n' "$name"
    done
}

# need_packages NAME... installs what is missing, and says which. TIDEWHEEL_NO_PACKAGES=1 leaves that to the user.
need_packages()
{
    [ -n "${TIDEWHEEL_NO_PACKAGES:-}" ] && return
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "This is not a Debian system, so nothing is installed by itself. Please install the equivalents of:" >&2
        say "    $*" >&2
        say "and run this again with TIDEWHEEL_NO_PACKAGES=1 in the environment." >&2
        exit 1
    fi
    local missing
    missing=$(missing_packages "$@")
    [ -z "$missing" ] && return
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            say "Packages are missing, and only root may install them. Please have somebody run this as root:" >&2
            say "    apt-get install --no-install-recommends" $missing >&2
            exit 1
        fi
        as_root=(sudo)
    fi
    say "Installing packages (a few minutes the first time):" $missing
    # An old package list names versions that are gone, so it is renewed first.
    "${as_root[@]}" apt-get -q update >/dev/null || fail "The package list could not be updated (apt-get update)."
    # shellcheck disable=SC2086 — one word a package
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y install --no-install-recommends $missing >/dev/null ||
        fail "Not all packages could be installed (apt-get install)."
}

# count_steps LOG keeps the build's output in LOG, and shows on a terminal how far it is.
count_steps()
{
    local line
    while IFS= read -r line; do
        printf '%s\n' "$line" >>"$1"
        [ -t 1 ] && [[ $line == \[*/*\]* ]] && printf '\r%s \e[K' "${line%%]*}]"
    done
    if [ -t 1 ]; then printf '\r\e[K'; fi
}

# build_show builds bin/ourglacierheartcold and packs the show's data, both optimised and without tests.
build_show()
{
    local log=build/release.log
    mkdir -p build || fail "The build needs a folder that it can write to."
    say "Building the show (a few minutes the first time) ..."
    cmake --preset release >"$log" 2>&1 && cmake --build --preset release 2>&1 | count_steps "$log" || {
        grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking)' "$log" | tail -n 200 >&2
        fail "The build failed; the lines above say where, and $log has all of it."
    }
}

# Has this session a display that a window could open on?
have_display() { [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; }
