#!/usr/bin/env bash
# scripts/release refuses whatever is not a clean tag of the project's version.
#   refusals.sh SOURCES VERSION FOLDER
set -euo pipefail
sources=$1 version=$2 folder=$3
command -v git >/dev/null || { echo "Skipped: git is not installed"; exit 77; }
fail() { echo "$*" >&2; exit 1; }

rm -rf "$folder" "$folder-outer"
mkdir -p "$folder/debian" "$folder/scripts"
cp "$sources/CMakeLists.txt" "$folder"
cp "$sources/debian/changelog" "$folder/debian"
printf '# Changelog\n\n## [%s] - 2023-11-14\n' "$version" >"$folder/CHANGELOG.md"
cp "$sources/scripts/release" "$folder/scripts"
# What it would do next.
# shellcheck disable=SC2016 # for the script
printf '#!/bin/sh\necho "clean: $*"\n' >"$folder/scripts/clean-environment"
chmod +x "$folder/scripts/clean-environment"
cd "$folder"
export GIT_CONFIG_GLOBAL=/dev/null GIT_CONFIG_SYSTEM=/dev/null GIT_AUTHOR_DATE='1700000000 +0000'
export GIT_COMMITTER_DATE=$GIT_AUTHOR_DATE GIT_CEILING_DIRECTORIES=$folder/..
commit() { git add -A && git -c user.name=Test -c user.email=test@localhost commit --quiet --allow-empty -m "$1"; }

# require CODE PART-OF-THE-MESSAGE ARGUMENT...
require() {
  local expected=$1 sign=$2 code=0 said
  shift 2
  said=$(scripts/release "$@" 2>&1) || code=$?
  [ "$code" -eq "$expected" ] || fail "release $*: code $code, not $expected: $said"
  [[ $said == *"$sign"* ]] || fail "release $* says: $said"
  [ ! -e build ] || fail "release $* has made something"
}

require 2 "usage:"
require 2 "usage:" --fast "$version"
require 2 "usage:" "$version" --output
require 2 "usage:" "$version" --output --without-windows
require 2 "usage:" --compare "$version" --output build
require 2 "usage:" --dry-run "$version" "$version"
require 1 "this is not a git tree" --dry-run "$version"
mkdir "$folder-outer"
cp -r . "$folder-outer/part"
git init --quiet "$folder-outer"
! said=$("$folder-outer/part/scripts/release" --dry-run "$version" 2>&1) || fail "a part of another tree is released"
[[ $said == *"this is not a git tree, but part of "* ]] || fail "release in a part of another tree says: $said"
git init --quiet .
commit first
require 1 "CMakeLists.txt has version $version, not 9.9.9" 9.9.9
require 1 "there is no tag v$version" "$version"
git tag "v$version"
require 0 "v$version can be released, dated 2023-11-14T22:13:20Z" --dry-run "$version"
require 0 "scripts/release $version --output /elsewhere/a place --without-windows" "$version" --without-windows \
  --output "/elsewhere/a place"
touch forgotten
require 1 "changes that are not committed" "$version"
commit second
require 1 "the commit of the tag v$version is not checked out" "$version"
require 1 "the commit of the tag v$version is not checked out" --compare "$version"
git checkout --quiet "v$version"
require 0 "can be released" --dry-run "$version"
echo >>CMakeLists.txt
require 1 "changes that are not committed" "$version"
git checkout --quiet CMakeLists.txt
sed -i "s/^## .*/## [Unreleased]/" CHANGELOG.md
commit unreleased
git tag --force "v$version" >/dev/null
require 1 "CHANGELOG.md has no heading [$version]" "$version"
git checkout --quiet HEAD~ -- CHANGELOG.md
sed -i "1s/) [a-z]*;/) UNRELEASED;/" debian/changelog
commit undated
git tag --force "v$version" >/dev/null
require 1 "debian/changelog says UNRELEASED" "$version"
sed -i "1s/$version/$version.1/" debian/changelog
commit third
git tag --force "v$version" >/dev/null
require 1 "debian/changelog has version $version.1, not $version" "$version"
