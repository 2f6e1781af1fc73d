#!/usr/bin/env bash
# What the packages hold and say of themselves: contents.sh PACKAGES VERSION LIBDIR HEADER...
source "$(dirname "$0")/common.sh"
packages=$1 version=$2 libdir=$3
shift 3
needs dpkg-deb readelf
runtime=$(runtime_package) development=$(development_package)
major=${version%%.*}

field() { dpkg-deb --field "$1" "$2"; }
files_of() { dpkg-deb --fsys-tarfile "$1" | tar -t | grep -v '/$' | sed 's,^\./,,' | sort; }

expect_equal "the runtime package's name" "libquorvanevision$major" "$(field "$runtime" Package)"
expect_equal "the development package's name" "libquorvanevision-dev" "$(field "$development" Package)"
architecture=$(dpkg --print-architecture)
for package in "$runtime" "$development"; do
    expect_equal "the version of $package" "$version" "$(field "$package" Version)"
    expect_equal "the architecture of $package" "$architecture" "$(field "$package" Architecture)"
done
for dependency in libc6 libstdc++6; do
    grep -q "$dependency (>= " <<<"$(field "$runtime" Depends)" || fail "the runtime package does not depend on $dependency"
done
grep -qF "libquorvanevision$major (= $version)" <<<"$(field "$development" Depends)" ||
    fail "the development package does not depend on its runtime package"

# The runtime package: the library, OpenCV's libraries where they go along, two documents.
doc=usr/share/doc/libquorvanevision$major
expect_equal "the runtime package without OpenCV" \
    "$(printf '%s\n' "usr/$libdir/libQuorvaneVision.so.$major" "usr/$libdir/libQuorvaneVision.so.$version" "$doc/changelog.gz" "$doc/copyright" | sort)" \
    "$(files_of "$runtime" | grep -v "^usr/$libdir/quorvanevision/opencv/.*/libopencv_[a-z0-9_]*\.so\.")"

# The development package: every exported header and no other.
expect_equal "the headers" "$(printf '%s\n' "$@" | sort)" \
    "$(files_of "$development" | sed -n 's,^usr/include/QuorvaneVision/,,p')"
for file in cmake/QuorvaneVision/QuorvaneVisionConfig.cmake pkgconfig/quorvanevision.pc libQuorvaneVision.so; do
    grep -qx "usr/$libdir/$file" <<<"$(files_of "$development")" || fail "the development package lacks usr/$libdir/$file"
done

# The library: its soname, no path of the machine that built it, everything it needs in reach.
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
dpkg-deb --extract "$runtime" "$scratch"
dynamic=$(readelf --dynamic "$scratch/usr/$libdir/libQuorvaneVision.so.$version")
grep -q "SONAME.*\[libQuorvaneVision\.so\.$major\]" <<<"$dynamic" || fail "the soname is not libQuorvaneVision.so.$major"
while read -r library; do
    readelf --dynamic "$library" | sed -n 's/.*R\(UN\)\?PATH.*\[\(.*\)\]/\2/p' | tr ':' '\n' | grep -v '^\$ORIGIN' &&
        fail "$library looks for libraries outside the package"
    ldd "$library" | grep 'not found' && fail "$library needs what is nowhere"
done < <(find "$scratch" -name '*.so.*' -type f)

expect_equal "the shlibs file" "libQuorvaneVision $major libquorvanevision$major (>= $version)" \
    "$(dpkg-deb --ctrl-tarfile "$runtime" | tar -xO ./shlibs)"
echo "runtime: $(files_of "$runtime" | wc -l) files, development: $(files_of "$development" | wc -l) files"
