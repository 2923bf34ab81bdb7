# Shared by the scripts: where things are, and the Debian packages the project needs.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-httpserver-dev qt6-websockets-dev libgl-dev
    qt6-declarative-dev qml6-module-qtquick qml6-module-qtquick-controls
    qml6-module-qtquick-layouts qml6-module-qtquick-window qml6-module-qtquick-templates
    qml6-module-qtqml-workerscript
    qt6-tools-dev qt6-l10n-tools
    fonts-dejavu-core openssl
    doxygen python3
    chromium chromium-driver
)

# Installs whichever of the packages are missing (as root, or through sudo when there is one).
ensure_packages() {
    local missing=()
    for package in "${packages[@]}"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' \
            || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    local run=()
    [ "$(id -u)" -eq 0 ] || run=(sudo)
    "${run[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${run[@]}" apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" >/dev/null
}

# Configures and builds into $1 with any further CMake arguments.
build() {
    local dir=$1
    shift
    cmake -S "$root" -B "$dir" -G Ninja "$@" >/dev/null
    cmake --build "$dir"
}
