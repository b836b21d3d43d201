# SPDX-License-Identifier: Apache-2.0
# Shared by the scripts, which source it in the project's folder.
# shellcheck shell=bash

# step TEXT: says what comes next.
step() { printf '\n== %s\n' "$*"; }

# configure FOLDER CMAKE-ARGUMENT...: prepares FOLDER for ninja, with ccache where it is installed.
configure() {
    local folder=$1
    shift
    local cache=()
    if command -v ccache >/dev/null; then
        cache=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    cmake -S . -B "$folder" -G Ninja "${cache[@]}" "$@" >/dev/null
}

# build FOLDER CMAKE-ARGUMENT...: configures and builds in FOLDER. Says little unless something fails.
build() {
    step "Building in $1"
    configure "$@"
    ninja -C "$1" --quiet
}

# run_tests FOLDER CTEST-ARGUMENT...
run_tests() {
    local folder=$1
    shift
    step "Testing $folder"
    grep -q '^QELJX_TEST_DATA:PATH=.*NOTFOUND' "$folder/CMakeCache.txt" &&
        echo "No folder of test files was found: the tests that need it are skipped."
    ctest --test-dir "$folder" --output-on-failure --timeout 300 -j "$(nproc)" "$@"
}
