# The packages that Quillon is built, run and tested with; sourced by run, test and bench.
#
#   packages_missing GROUP...   prints the packages of the groups that are not installed
#   packages_install GROUP...   installs them when this is root, else prints the command for an administrator

packages_of() {
    case $1 in
    build) echo "cmake ninja-build g++ pkg-config libsystemd-dev zlib1g-dev qt6-base-dev qt6-base-private-dev libwayland-dev wayland-protocols libxcb1-dev libxcb-res0-dev librsvg2-bin libgtest-dev" ;;
    run) echo "dbus qt6-qpa-plugins texlive-binaries texlive-latex-base texlive-metapost ghostscript" ;;
    test) echo "dbus xvfb openbox xdotool x11-utils imagemagick python3 python3-dbus python3-gi zathura qpdfview qpdfview-pdf-poppler-plugin vim-gtk3 geany mousepad emacs-lucid nano xterm clang-format poppler-utils libglib2.0-bin systemd at-spi2-core gir1.2-atspi-2.0 sway qt6-wayland wtype foot dpkg-dev lintian desktop-file-utils appstream man-db bash-completion make biber texlive-bibtex-extra texlive-latex-recommended texlive-xetex" ;;
    bench) echo "libx11-dev libxdamage-dev" ;;
    esac
}

packages_missing() {
    local group package
    for group in "$@"; do
        for package in $(packages_of "$group"); do
            # The list file of a package that is installed; far quicker than asking dpkg.
            [[ -e /var/lib/dpkg/info/$package.list ]] ||
                compgen -G "/var/lib/dpkg/info/$package:*.list" >/dev/null || echo "$package"
        done
    done | sort -u
}

packages_install() {
    local missing
    missing=$(packages_missing "$@" | tr '\n' ' ')
    missing=${missing% }
    [[ -z $missing ]] && return 0
    if [[ $(id -u) != 0 ]]; then
        echo "Packages are missing. Give an administrator this command:" >&2
        echo "    apt-get install --no-install-recommends $missing" >&2
        return 1
    fi
    echo "Installing $missing" >&2
    # shellcheck disable=SC2086
    DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing >&2 ||
        { apt-get update >&2 &&
            DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing >&2; }
}

# Builds the targets "$3" (blanks between) of the sources in $1 into the folder $2, with further options for cmake;
# configures only when that was never done.
quillon_build() {
    local source=$1 build=$2
    if [[ ! -e $build/build.ninja ]]; then
        cmake -S "$source" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${@:4}" >&2 || return 1
    fi
    # shellcheck disable=SC2086
    ninja -C "$build" --quiet $3 >&2
}
