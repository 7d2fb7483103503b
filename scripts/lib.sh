# SPDX-License-Identifier: Apache-2.0
# What ./run and ./test share: installing what is missing, and building. Sourced, not run.

# What a bare Debian 12 needs to build the program and its tests, and to run the program.
build_packages=(
    g++ cmake ninja-build pkg-config ca-certificates
    qt6-base-dev qt6-websockets-dev qt6-svg-dev qt6-tools-dev qt6-l10n-tools qt6-qpa-plugins
    qt6-translations-l10n qt6-wayland
    qcoro-qt6-dev qtkeychain-qt6-dev
    libsodium-dev libsimdjson-dev libedit-dev libxcb1-dev libsecret-1-0 libgtest-dev libgmock-dev
)
# What the tests need on top of that to run.
test_packages=(
    dbus dbus-bin file gnome-keyring libglib2.0-bin xdg-utils
    xvfb xauth openbox dunst xfce4-panel xdotool imagemagick x11-utils x11-xserver-utils
    fonts-dejavu-core fonts-noto-cjk
)
# What fuzzing needs on top of that: clang-14 cannot parse the standard library's <expected>.
fuzz_packages=(clang-19 libclang-rt-19-dev)

say() { printf '%s\n' "$*" >&2; }

# What to look for on a system that has other names for its packages.
say_what_is_needed() {
    say "This system has no apt, so nothing was installed. BRAM needs:"
    say "  a C++23 compiler (g++ 12 or later), CMake 3.25, Ninja, pkg-config;"
    say "  Qt 6.4 or later: base, WebSockets, SVG, Linguist tools, Korean translations, xcb and Wayland platforms;"
    say "  QCoro 0.8, QtKeychain, libsodium, simdjson, libedit, libxcb, libsecret; for the tests GoogleTest."
    say "Debian's names for them: $*"
}

# install_missing PACKAGE…: installs those that are not there; does nothing, quickly, when all are. A system
# without apt may have everything under other names: there the build is tried, and its failure explained.
install_missing() {
    local missing=() package installed
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        needed_packages+=("$@")
        return 0
    fi
    installed=$(dpkg-query -W -f '${db:Status-Abbrev} ${Package}\n' "$@" 2>/dev/null | sed -n 's/^ii *//p') || true
    for package in "$@"; do
        grep -qx -- "$package" <<<"$installed" || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            say "These packages are missing and need root to install: ${missing[*]}"
            return 1
        }
        as_root=(sudo)
    fi
    say "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get update -qq >&2 &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
}
needed_packages=() # those that this system has no apt for

# Reads what ninja prints where there is no terminal to draw on, and prints each tenth of the way, and all
# that is no progress: warnings and errors.
each_tenth() {
    awk '/^\[[0-9]+\/[0-9]+\] / {
            split(substr($1, 2), step, "/")
            tenth = int(10 * step[1] / (step[2] + 0))
            if (step[2] + 0 >= 20 && tenth > last) { last = tenth; print "  " 10 * tenth " %"; fflush() }
            next
        }
        /^ninja: (no work to do|Entering directory)/ { next }
        { print; fflush() }'
}

# build PRESET TARGET…: configures where that was not done and builds the targets. Warnings are errors where
# BRAM_WERROR=ON is in the environment.
build() {
    local preset=$1
    shift
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "Configuring ($preset) …"
        cmake --preset "$preset" -DBRAM_WERROR="${BRAM_WERROR:-OFF}" >"build-$preset.log" 2>&1 || {
            cat "build-$preset.log" >&2
            rm -f "build-$preset.log"
            [ ${#needed_packages[@]} -eq 0 ] || say_what_is_needed "${needed_packages[@]}"
            return 1
        }
        rm -f "build-$preset.log"
        say "Building; the first time takes a few minutes …"
    fi
    if [ -t 2 ]; then
        ninja -C "build/$preset" -n "$@" | grep -q '^ninja: no work to do' && return 0
        cmake --build --preset "$preset" --target "$@" >&2 # ninja draws one line that counts
    else
        # Under pipefail the status is the build's.
        cmake --build --preset "$preset" --target "$@" | each_tenth >&2
    fi
}
