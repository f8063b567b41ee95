#!/usr/bin/env bash
# vector_code.sh COMPILER ARGUMENT... -- FOLDER: compiles all sources that Highway includes once per instruction
# set, unoptimised, and fails if a function that has to do with types of one instruction set is compiled for
# another: it passes vectors in other ways than its callers. Exit code 77: the compiler is missing.
set -uo pipefail
compiler=$1
shift
[ -n "$compiler" ] || { echo "Skipped: the compiler is not installed"; exit 77; }
arguments=()
while [ "$1" != -- ]; do arguments+=("$1"); shift; done
shift
mapfile -t sources < <(grep -rl "define HWY_TARGET_INCLUDE" "$@")
[ ${#sources[@]} -gt 0 ] || { echo "$* holds no vector code"; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Writes "<mangled name> <instruction sets>" for every function of a source.
functions_of() {
  if "$compiler" --version | grep -q clang; then
    "$compiler" "${arguments[@]}" -O0 -S -emit-llvm -o "$work/ir" "$1" || return
    awk '/^define / { match($0, /@"?[^"(]*/); name = substr($0, RSTART + 1, RLENGTH - 1); sub(/"/, "", name)
                      match($0, /\) [^)]*#[0-9]+/); group = substr($0, RSTART, RLENGTH); sub(/.*#/, "", group)
                      groups[name] = group }
         /^attributes #/ { match($0, /"target-features"="[^"]*"/)
                           features[substr($2, 2)] = substr($0, RSTART, RLENGTH) }
         END { for (name in groups) print name, features[groups[name]] }' "$work/ir"
  else
    "$compiler" "${arguments[@]}" -O0 -S -fdump-tree-optimized="$work/dump" -o "$work/assembly" "$1" || return
    awk '/^;; Function / { if (name != "") print name, target
                           match($0, / \([^ ]*, funcdef_no=/)
                           name = substr($0, RSTART + 2, RLENGTH - 15); target = "" }
         /^__attribute__/ { if (match($0, /target \(.*/)) target = substr($0, RSTART, RLENGTH) }
         END { if (name != "") print name, target }' "$work/dump"
  fi
}

# Those whose mangled name holds the namespace of an instruction set above the baseline, but which lack that.
# Highway's own helpers for all instruction sets, such as hwy::CopyBytes, take pointers.
uncovered() {
  awk '/^_ZN3hwyL?[0-9]+[^N0-9]/ { next }
       !/[0-9]N_[A-Z]/ || /[0-9]N_(SCALAR|EMU128|SSE2)/ { next }
       { ++seen
         need = /[0-9]N_AVX(3|10)/ ? "avx512f" : /[0-9]N_AVX2/ ? "avx2" : /[0-9]N_SSE4/ ? "sse4" : "ssse3"
         if (index($0, need) == 0) print $1 }
       END { if (seen < 20) print "Only " seen + 0 " functions of instruction sets were found" }'
}

code=0
for source in "${sources[@]}"; do
  functions=$(functions_of "$source") || { echo "$source does not compile"; exit 1; }
  found=$(uncovered <<<"$functions" | c++filt | sort)
  [ -z "$found" ] || { printf '%s, compiled for the baseline:\n%s\n' "$source" "$found"; code=1; }
done
exit $code
