#!/usr/bin/env bash
# Makes the man pages and completions of a program and looks at what they hold.
#   manual.sh MAKE-MANUAL PROGRAM FOLDER
set -euo pipefail
make_manual=$1 program=$2 folder=$3
command -v help2man >/dev/null || { echo "Skipped: help2man is not installed"; exit 77; }
fail() { echo "$*" >&2; exit 1; }

rm -rf "$folder"
"$make_manual" "$program" 1.2.3 "$folder"

# A page for the program and one for each command, with all that --help lists.
pages=0
mapfile -t commands < <("$program" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p')
[ ${#commands[@]} -ge 10 ] || fail "--help lists ${#commands[@]} commands"
for command in '' "${commands[@]}"; do
  name=fisheye-calibration${command:+-$command}
  page=$(sed 's/\\-/-/g; s/\\f[BRI]//g' "$folder/man1/$name.1")
  grep -q "^$name - [a-z]" <<<"$page" || fail "$name.1 has no name"
  grep -q '1\.2\.3' <<<"$page" || fail "$name.1 has no version"
  while read -r option; do
    grep -q -- "$option" <<<"$page" || fail "$name.1 lacks $option"
  done < <("$program" ${command:+"$command"} --help | grep -oE '^  (-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+')
  pages=$((pages + 1))
done
[ "$(find "$folder" -name '*.1' | wc -l)" -eq $pages ] || fail "$pages pages are not all"

# require_completion EXPECTED WORD...: what bash offers for the last word, each with a bar after it.
# shellcheck source=/dev/null
source "$folder/bash-completion/completions/fisheye-calibration"
require_completion() {
  local expected=$1
  shift
  COMP_WORDS=(fisheye-calibration "$@")
  COMP_CWORD=$#
  _fisheye_calibration 2>/dev/null || true # compopt works in a real completion only
  local offered=''
  [ ${#COMPREPLY[@]} -eq 0 ] || offered=$(printf '%s|' "${COMPREPLY[@]}")
  [ "$offered" = "$expected" ] || fail "completion of '$*': '$offered', not '$expected'"
}
cd "$folder"
touch "a camera.ini"
require_completion "calibrate|" cal
require_completion "calibrate|correct|crop|" c
require_completion "crop|" cr
require_completion "--version|" --v
require_completion "--residual-plot|--residual-table|--resolution|" calibrate points.csv --res
require_completion "auto|library|robust|" calibrate --solver ''
require_completion "raw|" map --to ra
require_completion "a camera.ini|" info a
require_completion "a camera.ini|" map --camera a
require_completion "" calibrate --tolerance a
! command -v zsh >/dev/null || zsh -n zsh/site-functions/_fisheye-calibration
