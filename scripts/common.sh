# Shared by the scripts: where the project is, and what it needs from Debian 12.
# shellcheck shell=bash
set -euo pipefail

PROJECT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
JOBS=${JOBS:-$(nproc)}
# Warnings are errors where submissions are judged; a newer compiler elsewhere shall stop nobody.
WERROR=$([ -n "${CI:-}" ] && echo ON || echo OFF)

PACKAGES_RUN=(cmake ninja-build g++ python3 pkg-config qtbase5-dev libqwt-qt5-dev libqt5svg5-dev libqt5opengl5-dev
              libgl-dev libgl1-mesa-dri libfftw3-dev libcminpack-dev libeigen3-dev gemmi-dev libceres-dev
              qt5-image-formats-plugins fonts-dejavu-core libtiff-dev libhdf5-dev liblz4-dev zlib1g-dev
              libssl-dev)
PACKAGES_TEST=(libgtest-dev libbenchmark-dev libglu1-mesa-dev xvfb xauth
               python3-fabio python3-gemmi python3-h5py python3-mrcfile python3-numpy python3-pil
               python3-scipy python3-tifffile bitshuffle dials)
# Not among those of the tests: snakemake brings 670 MB of libraries of cloud services with it. The test of the workflow
# is left out where it is missing.
PACKAGES_CLUSTER=(snakemake slurm-wlm munge python3)
PACKAGES_PICTURES=(chromium)
PACKAGES_LINT=(clang-format clang-tidy doxygen)
PACKAGES_PACKAGE=(dpkg-dev fakeroot gzip help2man lintian)

# timed WHAT COMMAND...: runs it; where TESSERA_TIMES names a file, a line with its time is added there.
timed() {
    local what=$1 start=$SECONDS status=0
    shift
    "$@" || status=$?
    [ -z "${TESSERA_TIMES:-}" ] || printf '%6d s  %s\n' $((SECONDS - start)) "$what" >>"$TESSERA_TIMES"
    return $status
}

# need_packages NAME...: installs those that are missing.
need_packages() {
    local missing=() name
    for name in "$@"; do
        dpkg-query -W -f '${Status}' "$name" 2>/dev/null | grep -q 'install ok installed' || missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local root=()
    [ "$(id -u)" -eq 0 ] || root=(sudo)
    echo "Installing: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    "${root[@]}" apt-get update -q
    "${root[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# Sources are compiled several at a time where everything is built; TESSERA_UNITS=OFF has each compiled alone.
UNITS=${TESSERA_UNITS:-ON}

# build PRESET FOLDER OPTIONS -- TARGET...: configures and builds, quietly unless something fails.
build() {
    local preset=$1 folder=$2
    shift 2
    local options=()
    while [ $# -gt 0 ] && [ "$1" != -- ]; do options+=("$1"); shift; done
    [ $# -gt 0 ] && shift
    (cd "$PROJECT" && cmake --preset "$preset" -DTESSERA_UNITS="$UNITS" "${options[@]}" >"/tmp/tessera-configure-$$.log" 2>&1) || {
        cat "/tmp/tessera-configure-$$.log"
        return 1
    }
    rm -f "/tmp/tessera-configure-$$.log"
    ninja -C "$folder" -j "$JOBS" "$@" | tail -n 1
}

# build_tests PRESET: programs and tests.
build_tests() {
    local preset=$1 folder=build/$1 bench=OFF
    [ "$preset" = release ] && folder=build bench=ON
    build "$preset" "$PROJECT/$folder" -DTESSERA_TESTS=ON -DTESSERA_WERROR="$WERROR" -DTESSERA_BENCH="$bench"
}

# build_programs: the programs, as released. Whether the folder has tests stays as it is.
build_programs() {
    local tests=OFF cache=$PROJECT/build/CMakeCache.txt
    [ -f "$cache" ] && tests=$(sed -n 's/^TESSERA_TESTS:BOOL=//p' "$cache")
    build release "$PROJECT/build" -DTESSERA_TESTS="$tests" -DTESSERA_BENCH="$tests" -- \
        tessera tessera-batch tessera-merge tessera-simulate tessera-compare
}
