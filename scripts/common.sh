# Sourced by the scripts beside it: the repository's root, and one way to configure and build.
# `purposes` says what packages the script needs, see install-packages.
# shellcheck shell=sh

root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
# shellcheck disable=SC2086,SC2154 # words, set by the script
"$root/scripts/install-packages" $purposes

jobs=$(nproc)

# build_preset PRESET [build option...] -- configures and builds into build/PRESET.
build_preset() {
    preset=$1
    shift
    cmake --preset "$preset" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache --log-level=WARNING
    cmake --build "build/$preset" -j "$jobs" "$@"
}
