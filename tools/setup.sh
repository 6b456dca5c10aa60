# Shared by ./play, ./check, ./render, ./bench and ./package: which packages they need, and how the project is built.
# Sourced by bash from the root of the tree.

# What the program and its data are built with.
build_packages=(g++ make cmake ninja-build pkg-config
    libsdl1.2-dev libgl-dev libglu1-mesa-dev libpng-dev libjpeg-dev zlib1g-dev libminizip-dev libsndfile1-dev
    libgl1-mesa-dri libcairo2-dev fonts-jura)
# What rendering to video or frames needs besides.
render_packages=(python3 xvfb xauth ffmpeg)
# What the tests need besides: a virtual display, keys, the other SDL library, the second compiler with its run-times.
check_packages=(python3 xvfb xauth ffmpeg xdotool libgtest-dev libsdl1.2-compat clang libclang-rt-dev)
# What the benchmarks need besides; the libraries they compare with are skipped where they are missing.
bench_packages=(python3 xvfb xauth libbenchmark-dev libtinyxml2-dev libpugixml-dev libmeshoptimizer-dev)

say() { printf '%s\n' "$*"; }
fail() { printf 'Error: %s\n' "$*" >&2; exit 1; }

# missing_packages NAME... prints those that are not installed.
missing_packages()
{
    local name
    for name in "$@"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$name" 2>/dev/null | grep -qx installed || printf '%s\n' "$name"
    done
}

# need_packages NAME... installs what is missing, and says which.
need_packages()
{
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        [ -n "${TIDEWHEEL_NO_PACKAGES:-}" ] && return
        say "This is not a Debian system, so nothing is installed by itself. Please install the equivalents of:" >&2
        say "    $*" >&2
        say "and run this again with TIDEWHEEL_NO_PACKAGES=1 in the environment." >&2
        exit 1
    fi
    local missing
    missing=$(missing_packages "$@")
    [ -z "$missing" ] && return
    say "Installing packages:" $missing
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "Packages can only be installed as root or through sudo."
        as_root=(sudo)
    fi
    # An old package list names versions that are gone, so it is renewed first.
    "${as_root[@]}" apt-get -q update >/dev/null || fail "The package list could not be updated (apt-get update)."
    # shellcheck disable=SC2086 — one word a package
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y install --no-install-recommends $missing >/dev/null ||
        fail "Not all packages could be installed (apt-get install)."
}

# build_show builds bin/ourglacierheartcold and packs the show's data, both optimised and without tests.
build_show()
{
    cmake --preset release >build.log 2>&1 && cmake --build --preset release >>build.log 2>&1 || {
        cat build.log >&2
        fail "The build failed; the lines above say where."
    }
    rm -f build.log
}

# Has this session a display that a window could open on?
have_display() { [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; }
