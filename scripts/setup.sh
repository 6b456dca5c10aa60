# Shared by ./play, ./check, ./render, ./bench and ./package: which packages they need, and how the project is built.
# Sourced by bash from the root of the tree.

# What the program and its data are built with.
build_packages=(g++ make cmake ninja-build pkg-config
    libsdl1.2-dev libgl-dev libglu1-mesa-dev libpng-dev libjpeg-dev zlib1g-dev libminizip-dev libsndfile1-dev
    libgl1-mesa-dri libcairo2-dev fonts-jura
    libcli11-dev nlohmann-json3-dev libtinygltf-dev libaubio-dev)
# What rendering to video or frames needs besides.
render_packages=(python3 xvfb xauth ffmpeg)
# What a release needs besides: the look at it, the libraries' paths; and what a Debian package is made and judged by.
release_packages=(python3 xvfb ffmpeg patchelf dpkg-dev)
deb_packages=(desktop-file-utils appstream lintian)
# What the tests need besides: a virtual display, keys, the other SDL library, the second compiler with its run-times,
# the formatter, Blender for its add-on.
check_packages=(python3 xvfb xauth ffmpeg xdotool libgtest-dev libsdl1.2-compat clang libclang-rt-dev clang-format
    blender patchelf)
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
        if ! command -v sudo >/dev/null || ! sudo true; then
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

# count_steps WHAT LOG keeps the build's output in LOG, says that WHAT is being built once there is something to build,
# and shows on a terminal how far it is.
count_steps()
{
    local line told=${told:-}
    while IFS= read -r line; do
        printf '%s\n' "$line" >>"$2"
        [[ $line == \[[1-9]*/*\]* ]] || continue
        [ -n "$told" ] || say "Building $1 ..."
        told=yes
        [ ! -t 1 ] || printf '\r%s \e[K' "${line%%]*}]"
    done
    [ ! -t 1 ] || printf '\r\e[K'
}

# find_show ARG finds the show that ARG names: none for this tree's own, NAME for shows/NAME, or a path with a slash, seen
# from $from, to a folder that holds a main.cpp. Sets show_root and show_name, the name of its program; false if there is none.
find_show()
{
    case ${1:-} in
        "") show_root=$PWD show_name=ourglacierheartcold; return ;;
        /*) show_root=$1 ;;
        */*) show_root=${from:-$PWD}/$1 ;;
        *) show_root=$PWD/shows/$1 ;;
    esac
    [ -f "$show_root/main.cpp" ] || return 1
    show_root=$(cd "$show_root" && pwd -P)
    show_name=$(basename "$show_root")
}

# build WHAT FOLDER OPTION... configures build/FOLDER and builds it, or only the targets in build_targets, and says so
# where there is something to do.
build()
{
    local what=$1 folder=build/$2 log=build/$2.log told= home
    shift 2
    mkdir -p build || fail "The build needs a folder that it can write to."
    # CMake's cache holds absolute paths, so that a tree that was moved or copied is configured afresh.
    home=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$folder/CMakeCache.txt" 2>/dev/null || true)
    [ "$home" -ef . ] || rm -rf "$folder"
    if [ ! -f "$folder/build.ninja" ]; then
        say "Building $what (a few minutes the first time) ..."
        told=yes
    fi
    cmake -S . -B "$folder" -G Ninja "$@" >"$log" 2>&1 &&
        cmake --build "$folder" ${build_targets:+--target $build_targets} 2>&1 | count_steps "$what" "$log" || {
        grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking)' "$log" | tail -n 200 >&2
        fail "The build failed; the lines above say where, and $log has all of it."
    }
}

# build_show [TARGET...] builds what plays the show that find_show found, this tree's own without one, optimised and without
# tests: its program and its data, and what further TARGETs there are. The tools, more than half of a build, are not among it.
build_show()
{
    local elsewhere= build_targets
    if [ "${show_root:=$PWD}" = "$PWD" ]; then
        build_targets="show-ourglacierheartcold showdisplay showdata $*"
        build "the show" release --preset release -DTIDEWHEEL_SHOWS=
        return
    fi
    case $show_root in
        "$PWD"/shows/*) ;;
        *) elsewhere=$show_root ;;
    esac
    build_targets="show-$show_name show-$show_name-render showdisplay $*"
    build "$show_name" release --preset release "-DTIDEWHEEL_SHOWS=$elsewhere"
}

# build_tools WHY TARGET... builds some of the tools, beside whatever show was built before.
build_tools()
{
    local build_targets=${*:2}
    build "the tools $1" release --preset release
}

# own_temporary_folder gives everything that runs from here a place for temporary files that goes with the script.
own_temporary_folder()
{
    TMPDIR=$(mktemp -d)
    export TMPDIR
    trap 'rm -rf "$TMPDIR"' EXIT
}

# Has this session a display that a window could open on? bin/showdisplay tells whether it can be reached.
have_display() { [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; }
