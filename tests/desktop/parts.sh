# SPDX-License-Identifier: Apache-2.0
# What the scripts of this folder share. Sourced, not run.

# private_home FOLDER: a home of one's own in that folder, and nothing left that leads libraries to the
# caller's session.
private_home() {
    mkdir -m 700 "$1/run" "$1/data" "$1/config" "$1/cache"
    export HOME=$1 XDG_RUNTIME_DIR=$1/run XDG_DATA_HOME=$1/data
    export XDG_CONFIG_HOME=$1/config XDG_CACHE_HOME=$1/cache
    unset DBUS_SESSION_BUS_ADDRESS GNOME_KEYRING_CONTROL XDG_CURRENT_DESKTOP DESKTOP_SESSION \
        KDE_FULL_SESSION GNOME_DESKTOP_SESSION_ID XDG_SESSION_TYPE WAYLAND_DISPLAY
}

# bus_config ADDRESS [SERVICE]…: on standard output, the configuration of a session bus that listens there
# and starts only those of the system's services by itself. The folder of the services is made in $HOME.
bus_config() {
    local address=$1 service
    shift
    mkdir -p "$HOME/services"
    for service in "$@"; do
        cp "/usr/share/dbus-1/services/$service.service" "$HOME/services"
    done
    cat <<CONF
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>$address</listen>
  <auth>EXTERNAL</auth>
  <servicedir>$HOME/services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
CONF
}

# start_keyring: in the background, with an unlocked login keyring; its process is $keyring.
start_keyring() {
    # The password makes a new login keyring and unlocks it. Nobody else may inherit the pipe.
    gnome-keyring-daemon --foreground --unlock --components=secrets \
        < <(printf 'keyring password') >/dev/null 2>&1 &
    keyring=$!
}

# wait_for_name NAME: until somebody has it on the session bus; fails after ten seconds.
wait_for_name() {
    gdbus wait --session --timeout 10 "$1"
}

# has_name NAME: whether somebody has it on the session bus.
has_name() {
    dbus-send --session --print-reply=literal --dest=org.freedesktop.DBus / \
        org.freedesktop.DBus.NameHasOwner "string:$1" 2>/dev/null | grep -q true
}

# wait_until COMMAND…: until it succeeds; fails after ten seconds.
wait_until() {
    local _
    for _ in $(seq 500); do
        "$@" && return
        sleep 0.02
    done
    return 1
}

# start_part PART COMMAND…: a daemon of the session in the background. stop_part knows it by its name, and
# what it prints is in a file of that name in the session's folder.
start_part() {
    local part=$1
    shift
    "$@" </dev/null >>"$BRAM_TEST_SESSION/$part.log" 2>&1 &
    echo $! >"$BRAM_TEST_SESSION/$part.pid"
    disown
}

# stop_part PART [SIGNAL]: and waits until it has ended. The signal is KILL when none is given.
stop_part() {
    local pid
    pid=$(cat "$BRAM_TEST_SESSION/$1.pid" 2>/dev/null) || return 0
    rm -f "$BRAM_TEST_SESSION/$1.pid"
    kill "-${2:-KILL}" "$pid" 2>/dev/null || return 0
    wait_until part_has_ended "$pid"
}
# Nobody may be there to reap it.
part_has_ended() {
    ! [ -e "/proc/$1" ] || grep -qs '^State:.Z' "/proc/$1/status"
}
