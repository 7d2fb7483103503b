# SPDX-License-Identifier: Apache-2.0
# What ./run and ./test share: installing what is missing, and building. Sourced, not run.

# What a bare Debian 12 needs to build the program and its tests, and to run the program.
build_packages=(
    g++ cmake ninja-build pkg-config ca-certificates
    qt6-base-dev qt6-websockets-dev qt6-svg-dev qt6-tools-dev qt6-l10n-tools qt6-qpa-plugins
    qt6-translations-l10n
    qcoro-qt6-dev qtkeychain-qt6-dev
    libsodium-dev libsimdjson-dev libedit-dev libxcb1-dev libsecret-1-0 libgtest-dev libgmock-dev
)
# What the tests need on top of that to run.
test_packages=(
    dbus dbus-bin gnome-keyring libglib2.0-bin xdg-utils
    xvfb xauth openbox dunst xfce4-panel xdotool imagemagick x11-utils x11-xserver-utils
    fonts-dejavu-core fonts-noto-cjk
)
# What fuzzing needs on top of that: clang-14 cannot parse the standard library's <expected>.
fuzz_packages=(clang-19 libclang-rt-19-dev)

say() { printf '%s\n' "$*" >&2; }

# install_missing PACKAGE…: installs those that are not there; does nothing, quickly, when all are.
install_missing() {
    local missing=() package installed
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

# build PRESET TARGET…: configures where that was not done and builds the targets.
build() {
    local preset=$1
    shift
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "Configuring ($preset) …"
        cmake --preset "$preset" >"build-$preset.log" 2>&1 || {
            cat "build-$preset.log" >&2
            rm -f "build-$preset.log"
            return 1
        }
        rm -f "build-$preset.log"
        say "Building; the first time takes a few minutes …"
    fi
    # Under pipefail the status is the build's.
    cmake --build --preset "$preset" --target "$@" -- --quiet | sed '/^ninja: no work to do\.$/d' >&2
}
