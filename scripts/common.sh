# Shared by the other scripts, which source it: installing what is missing, and building.
# shellcheck shell=bash disable=SC2034
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

any_qt_packages=(g++ cmake ninja-build pkg-config libtag1-dev fonts-dejavu-core)
build_packages=("${any_qt_packages[@]}" qtbase5-dev qtmultimedia5-dev libqt5multimedia5-plugins)
qt6_packages=("${any_qt_packages[@]}" qt6-base-dev qt6-multimedia-dev)
virtual_display_packages=(xvfb xauth)
package_packages=(dpkg-dev file lintian desktop-file-utils appstream imagemagick cmark-gfm)
check_packages=(git clang clang-format clang-tidy shellcheck)

# install_packages PACKAGE...: installs those that are missing; if none is, it needs neither the network nor root.
install_packages() {
    if ! command -v apt-get >/dev/null; then
        # Neither macOS nor another Linux has been tried: this only says what CMake will look for.
        if [[ $(uname) == Darwin ]]; then
            echo "This needs Xcode's command line tools and: brew install qt@5 taglib cmake ninja (for the preset qt6: qt)"
        else
            echo "This needs a C++17 compiler, CMake 3.25, Ninja, pkg-config, Qt 5.15 or 6.4 with Multimedia, TagLib and Xvfb."
        fi
        return
    fi

    local missing=() package commands
    for package in "$@"; do
        [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) == installed* ]] || missing+=("$package")
    done
    ((${#missing[@]})) || return 0

    commands="export DEBIAN_FRONTEND=noninteractive; apt-get -q update &&"
    commands+=" apt-get -q install -y --no-install-recommends ${missing[*]}"
    if [[ $(id -u) == 0 ]]; then
        echo "Installing ${missing[*]}."
        sh -c "$commands"
    elif command -v sudo >/dev/null; then
        echo "Installing ${missing[*]} with sudo."
        sudo sh -c "$commands"
    else
        echo "Packages are missing and only root can install them. Run this as root: $commands" >&2
        exit 1
    fi
}

# in_virtual_display SCREEN COMMAND...
in_virtual_display() {
    # xvfb-run trips over a blank in TMPDIR, so only the command gets that.
    local folder=${TMPDIR:-/tmp}
    TMPDIR=/tmp xvfb-run -a -s "-screen 0 $1" env TMPDIR="$folder" "${@:2}"
}

# build PRESET [TARGET...]: everything when no target is named.
build() (
    echo "Building the preset $1."
    cd "$root"
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER=ccache
    fi
    if [[ $(uname) == Darwin ]]; then
        # Homebrew keeps Qt 5 out of the folders that CMake searches.
        CMAKE_PREFIX_PATH=$(brew --prefix "$([[ $1 == qt6 ]] && echo qt || echo qt@5)")
        export CMAKE_PREFIX_PATH
    fi
    cmake --preset "$1"
    cmake --build --preset "$1" ${2:+--target "${@:2}"}
)
