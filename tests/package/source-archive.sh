#!/usr/bin/env bash
# The source archive holds the sources that this build is made of and configures by itself:
# source-archive.sh PACKAGES SOURCE SCRATCH VERSION OPENCV_DIR CXX GENERATOR
source "$(dirname "$0")/common.sh"
packages=$1 source=$2 scratch=$3 version=$4 opencv=$5 cxx=$6 generator=$7
needs tar xz

archive=$(only_file "$packages"/quorvanevision-*.tar.xz)
expect_equal "the archive's name" "quorvanevision-$version.tar.xz" "$(basename "$archive")"
rm -rf "$scratch" && mkdir -p "$scratch"
tar -xf "$archive" -C "$scratch"
expect_equal "the archive's only folder" "quorvanevision-$version" "$(ls "$scratch")"
unpacked=$scratch/quorvanevision-$version

[ ! -e "$unpacked/.git" ] && [ ! -e "$unpacked/build" ] || fail "the archive holds more than sources"
if git -C "$source" rev-parse --is-inside-work-tree >/dev/null 2>&1; then
    git -C "$source" ls-files -z | while IFS= read -r -d '' file; do
        [ ! -e "$source/$file" ] || cmp --quiet "$source/$file" "$unpacked/$file" || fail "$file is not in the archive as it is here"
    done
fi

cmake -G "$generator" -S "$unpacked" -B "$scratch/build" -D CMAKE_CXX_COMPILER="$cxx" -D OpenCV_DIR="$opencv" \
    -D QUORVANE_BUILD_TESTS=OFF -D QUORVANE_BUILD_BENCHMARKS=OFF -D QUORVANE_BUILD_EXAMPLES=OFF >"$scratch/configure.log" 2>&1 ||
    { cat "$scratch/configure.log"; fail "the unpacked sources cannot be configured"; }
echo "$(find "$unpacked" -type f | wc -l) files; they configure by themselves"
