# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# What ./run, ./test and ./bench share. Sourced with `root` set to the top of the tree.

say() { printf '%s\n' "$*" >&2; }
fail() {
    say "$*"
    exit 1
}

# shellcheck source=scripts/packages.sh
source "$root/scripts/packages.sh"

# Configures where needed and builds a preset. Ninja runs CMake again by itself when a CMakeLists.txt has
# changed; a changed preset file or a tree that was moved it does not see.
build_preset() { # PRESET [CMAKE ARGUMENT…]
    local preset=$1 build=$root/build/$1
    shift
    if [[ ! -e $build/build.ninja || $root/CMakePresets.json -nt $build/build.ninja ]] || (($#)) ||
        ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$build/CMakeCache.txt"; then
        use_ccache
        local fresh=()
        grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$build/CMakeCache.txt" || fresh=(--fresh)
        (cd "$root" && cmake "${fresh[@]}" --preset "$preset" "$@") >&2 || return
        touch "$build/build.ninja"
    fi
    use_ccache
    ninja -C "$build" -j "$(nproc)" >&2
}

# A compiler cache is used where the developer has one; nothing needs it.
use_ccache() {
    if [[ -z ${CMAKE_CXX_COMPILER_LAUNCHER+set} ]] && command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER=ccache
    fi
}

# Puts the engine of the on-device model beside a build; the program and the tests look for it there.
ensure_engine() { # PRESET
    "$root/scripts/get-engine" "$root/build/$1/libexec/tellwick" >&2
}
