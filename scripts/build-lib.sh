# SPDX-License-Identifier: GPL-3.0-or-later
# Sourced by ./run and ./test: surroundings, configuring and building.

# Qt and Python want a UTF-8 locale; C.UTF-8 is in every Debian.
case "${LC_ALL:-${LC_CTYPE:-${LANG:-}}}" in
*[Uu][Tt][Ff]-8 | *[Uu][Tt][Ff]8) ;;
*) export LC_ALL=C.UTF-8 ;;
esac

step() { printf '\n== %s\n' "$*"; }

# One compiler process takes up to about 1 GB: as many jobs as cores and memory allow.
build_jobs() {
    local cores memory
    cores=$(nproc)
    memory=$(awk '/^MemAvailable:/ { print int($2 / 1048576) }' /proc/meminfo)
    [ "$memory" -lt 1 ] && memory=1
    echo $((cores < memory ? cores : memory))
}

# configure PRESET FOLDER [always]: only when it was not configured yet or for another place of the
# source folder.
configure() {
    local preset=$1 folder=$2 fresh=()
    if [ -f "$folder/CMakeCache.txt" ] &&
        ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$folder/CMakeCache.txt"; then
        fresh=(--fresh)
    elif [ -f "$folder/build.ninja" ] && [ "${3:-}" != always ]; then
        return 0
    fi
    mkdir -p "$folder"
    cmake "${fresh[@]}" --preset "$preset" >"$folder/configure.log" 2>&1 ||
        { cat "$folder/configure.log" >&2; return 1; }
}

# build PRESET [TARGET…]
build() {
    local preset=$1
    shift
    local targets=()
    [ $# -gt 0 ] && targets=(--target "$@")
    cmake --build --preset "$preset" -j "$(build_jobs)" "${targets[@]}"
}
