#!/usr/bin/env bash
# Builds the reference-vector check of RzRandom (RzRandom.cpp and
# random_vectors_main.cpp, nothing else) with g++ and clang++ at -O0 and -O2,
# and at -O2 for a processor with fused multiply-add when this one has it,
# always with the unit's own compile options, and runs each build: the
# results must not depend on the compiler or on optimisation. Each build runs
# a second time with glibc's processor-specific mathematics turned off: glibc
# computes log and exp with fused multiply-add where the processor has it, and
# the two give different last bits for a few arguments in ten thousand, so
# the published vectors must be ones on which both agree.
#
# Usage: random_vectors_compilers.sh <source root> <work folder> <options>
# (options as a CMake list). Exits 77 (skipped) when neither compiler exists.
set -euo pipefail

root=$1
work=$2
IFS=';' read -r -a unit_options <<<"${3:-}"
mkdir -p "$work"

levels=("-O0" "-O2")
if grep -qw fma /proc/cpuinfo 2>/dev/null; then levels+=("-O2 -march=haswell"); fi

built=0
for cxx in g++ clang++; do
    if ! command -v "$cxx" >/dev/null; then
        echo "$cxx: not installed, skipped"
        continue
    fi
    for level in "${levels[@]}"; do
        exe="$work/random_vectors_${cxx}_${level//[ =]/_}"
        # shellcheck disable=SC2086
        "$cxx" -std=c++17 $level "${unit_options[@]}" -Wall -Wextra -Werror -I"$root" \
            "$root/Rz/RzMath/RzRandom.cpp" "$root/tests/RzMath/random_vectors_main.cpp" -o "$exe"
        printf '%s %s: ' "$cxx" "$level"
        "$exe" "$root/tests/data/random_vectors.txt"
        printf '%s %s, without FMA in the C library: ' "$cxx" "$level"
        GLIBC_TUNABLES=glibc.cpu.hwcaps=-FMA,-FMA4,-AVX2 "$exe" "$root/tests/data/random_vectors.txt"
        built=$((built + 1))
    done
done
[ "$built" -gt 0 ] || exit 77
