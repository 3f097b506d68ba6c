# shellcheck shell=bash disable=SC2034
# The Debian packages that the project needs, by purpose, and how they come onto this machine. Sourced.

build_tools=(build-essential cmake ninja-build pkg-config librsvg2-bin)
libraries=(
    qt6-base-dev libgl-dev
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
    libopencv-core-dev libopencv-videoio-dev libyuv-dev
    libfontconfig-dev libsystemd-dev
    libmicrohttpd-dev libarchive-dev
)
# What the application needs to run.
running=(
    gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-alsa gstreamer1.0-x
    ffmpeg fonts-liberation fonts-noto-cjk
    libqt6gui6 qt6-qpa-plugins procps
)
# What finished films, pages and archives are looked at with.
judging=(gstreamer1.0-tools libxml2-utils chromium chromium-driver python3 unzip)
checking=(clang-format git python3 shellcheck) # tools/rules
linting=(clang-tidy git) # tools/lint
hurting=(ffmpeg python3 xdotool xvfb) # tools/hurt
fuzzing=(clang) # tools/fuzz

# missing_of PACKAGE...: those that are not there, a line each.
missing_of()
{
    local package
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)" = installed ] ||
            echo "$package"
    done
}

# name_missing PACKAGE...: tells those that are not there, and fails when there is one.
name_missing()
{
    local missing
    mapfile -t missing < <(missing_of "$@")
    [ "${#missing[@]}" -eq 0 ] || { printf 'set-up: the package %s is missing\n' "${missing[@]}" >&2; return 1; }
}

# install_missing PACKAGE...: installs those that are not there, as root or with sudo.
install_missing()
{
    local missing as_root=()
    mapfile -t missing < <(missing_of "$@")
    [ "${#missing[@]}" -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            { echo "these packages are missing and neither root nor sudo is at hand: ${missing[*]}" >&2; return 1; }
        as_root=(sudo)
    fi
    echo "installing ${missing[*]}"
    "${as_root[@]}" apt-get -qq update
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends \
        "${missing[@]}" >/dev/null
}
