#!/usr/bin/env bash
# Installs the Debian packages Quarvex needs (only the missing ones), then configures and builds.
# Safe to run again: with everything in place it installs nothing and rebuilds nothing.
#   QUARVEX_WERROR=ON    turn compiler warnings into errors (CI does)
#   QUARVEX_BUILD_DIR    build folder (default: build)
#   QUARVEX_FUZZ=ON      also install clang and libFuzzer (tests/fuzz/run.sh builds the fuzzers)
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build_dir=${QUARVEX_BUILD_DIR:-$root/build}

packages=(
    cmake ninja-build g++ pkg-config
    libgtest-dev libgmock-dev libcli11-dev nlohmann-json3-dev
    qt6-base-dev qt6-qpa-plugins libqcustomplot-dev libeigen3-dev
    gemmi-dev tao-pegtl-dev
    xvfb xauth fonts-dejavu-core
    desktop-file-utils
    qt6-svg-dev poppler-utils
    libxy-dev
)
if [[ ${QUARVEX_FUZZ:-OFF} == ON ]]; then
    packages+=(clang libclang-rt-14-dev)
fi

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

if ((${#missing[@]} > 0)); then
    echo "setup: installing ${missing[*]}"
    as_root=()
    if [[ $(id -u) -ne 0 ]]; then
        as_root=(sudo)
    fi
    export DEBIAN_FRONTEND=noninteractive
    "${as_root[@]}" apt-get update -q
    "${as_root[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

cmake -S "$root" -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DQUARVEX_WERROR="${QUARVEX_WERROR:-OFF}" >/dev/null
cmake --build "$build_dir"
