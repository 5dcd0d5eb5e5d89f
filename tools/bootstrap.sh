#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Sets up a Debian 12 machine for Tessary, builds it, and then either opens the review window on
# the bundled sample session (`run`) or runs every test (`test`).
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(
    build-essential cmake ninja-build pkg-config git
    nlohmann-json3-dev libjpeg62-turbo-dev libpng-dev libexif-dev libssl-dev
    libgtest-dev qt6-base-dev xvfb xauth
    # The package and its checks: file for cpack's dependency scan, lintian, and the validators
    # of the launcher and the AppStream metadata.
    file lintian desktop-file-utils appstream
    # pdftotext and pdftoppm read the coaching report back in its tests.
    poppler-utils
)
# The pose worker of dravik-batch runs on Node.js; Debian's own is enough.
command -v node >/dev/null && command -v npm >/dev/null || packages+=(nodejs npm)

install_missing() {
    local missing=()
    for p in "${packages[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local sudo=()
    [ "$(id -u)" -eq 0 ] || sudo=(sudo)
    echo "Installing: ${missing[*]}"
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# The pose worker's Node packages, at the exact versions of its lock file, and its models.
# Nothing is downloaded when the program runs.
install_worker() {
    local worker=batch/worker
    if ! cmp -s "$worker/package-lock.json" "$worker/node_modules/.tessary-lock.json"; then
        (cd "$worker" && npm ci --no-audit --no-fund --loglevel=error)
        cp "$worker/package-lock.json" "$worker/node_modules/.tessary-lock.json"
    fi
    "$worker/fetch-models.sh" .cache/models
}

build() {
    cmake --preset default
    cmake --build --preset default
}

case "${1:-}" in
run)
    install_missing
    install_worker
    build
    shift
    if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
        echo "Tessary is built; start build/bin/tessary from a desktop session to open its window." >&2
        exit 1
    fi
    # With no arguments the window opens the bundled sample; "manifest results" open that session.
    exec build/bin/tessary "$@"
    ;;
test)
    install_missing
    install_worker
    cmake --workflow --preset default
    ;;
*)
    echo "usage: $0 run|test" >&2
    exit 64
    ;;
esac
