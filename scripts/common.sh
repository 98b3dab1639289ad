# What the scripts at the top share. To be sourced: `top` is then the checkout, wherever the caller stands.

top=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)

# One line about what happens next.
say() {
    printf '▸ %s\n' "$*"
}

# One sentence about what could not be done, and the end.
fail() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# Makes the folder build/PRESET ready to build in, unless it is.
configure() {
    local preset=$1 folder=$top/build/$1 fresh=()
    if [ -f "$folder/CMakeCache.txt" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$top" "$folder/CMakeCache.txt"; then
        say "build/$preset was made for a checkout in another place: starting it afresh."
        fresh=(--fresh)
    elif [ -f "$folder/build.ninja" ]; then
        return # ninja configures again by itself when a CMake file has changed
    fi
    say "Configuring build/$preset."
    mkdir -p "$folder"
    (cd "$top" && cmake --preset "$preset" "${fresh[@]}") > "$folder/configure.log" 2>&1 || {
        tail -n 30 "$folder/configure.log" >&2
        fail "build/$preset could not be configured; CMake's messages stand above and in build/$preset/configure.log."
    }
}

# Builds the given targets of a preset, or all of them. What is up to date is skipped.
build() {
    local preset=$1
    shift
    say "Building preset $preset$([ $# = 0 ] || printf ' (%s)' "$*")."
    (cd "$top" && cmake --build --preset "$preset" ${1+--target "$@"}) ||
        fail "preset $preset could not be built; the messages stand above."
}
