# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# The system packages that ./run, ./test and ./bench need, and the functions that install the missing ones.
# Sourced, not run.
#
# One line a package: group, name, reason. "a|b" takes the first that the system offers, a leading "?" marks
# a package the program does without where the system does not offer it, and "boost" stands for the newest
# libboost1.NN-dev from 1.81 on.
#
# Groups: build    compile the programs          run      open their windows
#         headless show the window where there is no display
#         test     run the tests                 bench    run the benchmarks
#         package  make a Debian package         pictures picture the window for the documents
#         bare     run commands on a bare Debian try      use the installed package
package_list() {
    cat <<'END'
build     g++                      the C++20 compiler
build     cmake                    describes the build
build     ninja-build              runs the build
build     qt6-base-dev             windows, text, D-Bus, downloads: Qt Core, Gui, Widgets, DBus, Network and Test
build     qt6-base-private-dev     the window's own frame where a Wayland desktop draws none
build     boost                    HTTP over TCP and Unix sockets: Asio and Beast, headers only
build     libmd4c-dev              reads the Markdown of replies
build     libmd4c-html0-dev        knows the characters that HTML has names for
build     libsqlite3-dev           keeps the conversation
build     libfontconfig-dev        reads the font configuration ahead of the first text
build     nlohmann-json3-dev       reads and writes JSON
build     libxcb1-dev              asks X11 window managers to bring the window to the front
build     bootstrap-icons          the drawings of the icons
run       qt6-qpa-plugins          connects Qt to the X11 display
run       ?qt6-wayland             connects Qt to a Wayland display, which is sharper than going through X11
run       fonts-dejavu-core        a text and a monospaced font, where the system has none
run       fonts-noto-color-emoji   emoji in messages
run       ca-certificates          proves who sends the model file
headless  xvfb                     a display in memory
headless  netpbm                   makes a PNG picture of that display
test      xvfb                     a display in memory for tests of the real window
test      openbox                  a window manager for tests that need focus and activation
test      weston                   a Wayland compositor that leaves title bars to the programs
test      sway                     a Wayland compositor that draws them
test      dbus-daemon              a private session bus for tests of the portal and of a second start
test      at-spi2-core             the accessibility bus that screen readers listen on
test      sqlite3                  reads the stored conversation as a user would
test      iproute2                 brings up the loopback interface in the tests' own network
test      desktop-file-utils       checks the desktop entry
test      appstream                checks the software centre's description
test      clang-format             checks how the sources are written
bench     pkgconf                  finds the X libraries
bench     libxcb-damage0-dev       tells when a program's window is painted
bench     xvfb                     the same display for every program measured
bench     iproute2                 brings up the loopback interface in the measurement's own network
bench     dbus-daemon              a session bus, as on a desktop
pictures  xvfb                     a display in memory
pictures  openbox                  a window manager, which gives the window the focus
pictures  xdotool                  types and clicks
pictures  x11-apps                 reads a window's pixels (xwd)
pictures  netpbm                   makes a PNG picture of them
pictures  dbus-daemon              a session bus for the settings of the acted desktop
pictures  fonts-cantarell          the font of the acted desktop
pictures  fonts-dejavu-core        its monospaced font
pictures  fonts-noto-color-emoji   emoji in messages
pictures  iproute2                 brings up the loopback interface in the pictures' own network
try       xvfb                     a display in memory
try       openbox                  a window manager, which gives the window the focus
try       dbus-daemon              a session bus
try       at-spi2-core             the accessibility bus that screen readers listen on
try       python3-gi               speaks to it as a screen reader does
try       iproute2                 brings up the loopback interface in the trial's own network
bare      debootstrap              makes a bare Debian in a folder
bare      git                      tells what is committed
package   dpkg-dev                 finds the packages of the libraries the program is linked with
package   file                     tells programs from other files in the package
package   librsvg2-bin             draws the icon in each size
package   lintian                  looks the package over
END
}

# Names that the system does not offer are kept here, so that later runs do not ask the package manager again.
# shellcheck disable=SC2154 # the sourcing script sets root
packages_not_offered="$root/build/packages-not-offered"

boost_is_new_enough() { # NAME
    [[ $1 =~ ^libboost1\.([0-9]+)-dev$ ]] && ((BASH_REMATCH[1] >= 81))
}

# Sets the array `missing` to the lines of the named groups that no installed package meets.
find_missing_packages() { # GROUP…
    local -A installed=() not_offered=() seen=()
    local name status group reason candidate met
    while read -r name status; do
        [[ $status != installed ]] || installed[$name]=1
    done < <(dpkg-query -W -f='${Package} ${db:Status-Status}\n')
    if [[ -r $packages_not_offered ]]; then
        while read -r name; do not_offered[$name]=1; done <"$packages_not_offered"
    fi
    missing=()
    while read -r group name reason; do
        [[ " $* " == *" $group "* && -z ${seen[$name]-} ]] || continue
        seen[$name]=1
        met=
        if [[ $name == boost ]]; then
            for candidate in "${!installed[@]}"; do
                ! boost_is_new_enough "$candidate" || met=1
            done
        elif [[ $name == \?* ]]; then
            [[ -z ${installed[${name#\?}]-} && -z ${not_offered[${name#\?}]-} ]] || met=1
        else
            for candidate in ${name//|/ }; do
                [[ -z ${installed[$candidate]-} ]] || met=1
            done
        fi
        [[ -n $met ]] || missing+=("$name $reason")
    done < <(package_list)
}

is_offered() { # NAME
    [[ $(apt-cache policy "$1" 2>/dev/null) =~ Candidate:\ [^\(] ]]
}

# Prints the name to install for an entry of the list; fails where the system offers none.
choose_package() { # ENTRY
    local candidate
    if [[ $1 == boost ]]; then
        while read -r candidate; do
            if boost_is_new_enough "$candidate" && is_offered "$candidate"; then
                echo "$candidate"
                return
            fi
        done < <(apt-cache pkgnames libboost1. | sort -rV)
        return 1
    fi
    candidate=${1#\?}
    for candidate in ${candidate//|/ }; do
        if is_offered "$candidate"; then
            echo "$candidate"
            return
        fi
    done
    return 1
}

# Sets `chosen` to the names to install and `unmet` to the entries that the system does not offer.
choose_packages() {
    local line name
    chosen=() unmet=()
    for line in "${missing[@]}"; do
        if name=$(choose_package "${line%% *}"); then
            chosen+=("$name")
        else
            unmet+=("${line%% *}")
        fi
    done
}

as_root() {
    if ((EUID == 0)); then
        "$@"
    else
        sudo "$@"
    fi
}

apt_get() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y \
        -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3 -o Dpkg::Use-Pty=0 "$@" >&2 </dev/null
}

# Installs what is missing of the named groups. Asks the package manager nothing where nothing is missing.
ensure_packages() { # GROUP…
    local missing chosen unmet line name
    if ! command -v dpkg-query >/dev/null; then
        say "This system has no dpkg; install what $root/scripts/packages.sh lists by hand."
        return 0
    fi
    find_missing_packages "$@"
    ((${#missing[@]})) || return 0

    choose_packages
    if ((${#unmet[@]})); then
        may_install
        say "Reading the list of packages that the system offers."
        apt_get update || say "The package lists could not all be read; going on with what there is."
        choose_packages
    fi
    for name in "${unmet[@]}"; do
        if [[ $name != \?* ]]; then
            fail "This system offers no package for \"$name\" (Debian 12 or Ubuntu 24.04 and later do)."
        fi
        mkdir -p "${packages_not_offered%/*}"
        echo "${name#\?}" >>"$packages_not_offered"
    done
    ((${#chosen[@]})) || return 0

    may_install
    say "Installing from the system's own packages:"
    for line in "${missing[@]}"; do
        name=${line%% *}
        [[ " ${unmet[*]} " == *" $name "* ]] || printf '    %-24s %s\n' "${name#\?}" "${line#* }" >&2
    done
    if ! apt_get install --no-install-recommends "${chosen[@]}"; then
        say "That failed; reading the list of packages again and trying once more."
        apt_get update || true
        apt_get install --no-install-recommends "${chosen[@]}" || fail "The packages could not be installed."
    fi
}

# Ends the script, saying what to do, where this user cannot install packages.
may_install() {
    ((EUID == 0)) && return
    if ! command -v sudo >/dev/null; then
        fail "Packages are missing and there is no sudo; as root, run: apt-get install ${chosen[*]}"
    fi
}
