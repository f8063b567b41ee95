#!/usr/bin/env bash
# The bill of materials describes what is shipped, gives the same bytes again, and its check notices what is wrong.
#   bill.sh SOURCES VERSION FOLDER
set -euo pipefail
sources=$1 version=$2 folder=$3
python=/usr/bin/python3
for needed in dpkg-deb dpkg-shlibdeps "$python"; do
  command -v "$needed" >/dev/null || { echo "Skipped: $needed is not installed"; exit 77; }
done
# What the bill names of this machine.
for package in libopencv-dev libhwy-dev libcli11-dev nlohmann-json3-dev libcpp-httplib-dev pybind11-dev python3-numpy; do
  dpkg-query -W "$package" >/dev/null 2>&1 || { echo "Skipped: $package is not installed"; exit 77; }
done
fail() { echo "$*" >&2; exit 1; }
export SOURCE_DATE_EPOCH=1700000000
rm -rf "$folder"
shipped=$folder/shipped
mkdir -p "$shipped"

# Small files with all that the bill looks at: an archive of sources, Debian packages, a wheel, a Windows archive.
echo sources >"$shipped/fisheye_calibration-$version.tar.gz"
# make_package NAME DEPENDS NOTICE...: among the dependencies is one that another package provides.
make_package() {
  local name=$1 place=$folder/package/$1
  rm -rf "$place"
  mkdir -p "$place/DEBIAN" "$place/usr/share/doc/$name/contained"
  printf '%s\n' "Package: $name" "Version: $version" "Architecture: amd64" "Maintainer: Test <test@localhost>" \
    "Depends: $2" "Description: test" >"$place/DEBIAN/control"
  for notice in "${@:3}"; do
    echo notice >"$place/usr/share/doc/$name/contained/$notice"
  done
  dpkg-deb --build --root-owner-group "$place" "$shipped/${name}_${version}_amd64.deb" >/dev/null
}
make_package libfisheye-calibration0 "libc6 (>= 2.34), libgcc-s1 | libgcc1"
make_package fisheye-calibration "libc6 (>= 2.34), libc6 (<< 9), libfisheye-calibration0 (= $version)" \
  CLI11.gz cpp-httplib nlohmann-json
make_package python3-fisheye-calibration "python3:any, python3-f2py" pybind11
mkdir -p "$folder/libraries/libpng-0123abc/lib/pkgconfig" "$folder/libraries/opencv-4567def/lib/cmake/opencv4"
echo 'Version: 1.6.39' >"$folder/libraries/libpng-0123abc/lib/pkgconfig/libpng.pc"
echo 'set(OpenCV_VERSION 4.10.0)' >"$folder/libraries/opencv-4567def/lib/cmake/opencv4/OpenCVConfig-version.cmake"
"$python" - "$shipped" "$version" <<'END'
import sys
import zipfile

folder, version = sys.argv[1:]
with zipfile.ZipFile(f"{folder}/fisheye_calibration-{version}-win64.zip", "w") as archive:
    licences = ("opencv/LICENSE", "opencv/videoInput", "libpng/LICENSE")
    for name in ("bin/fisheye_calibration.dll", *(f"licences/{licence}" for licence in licences)):
        archive.writestr(f"fisheye_calibration-{version}-win64/{name}", name)
with zipfile.ZipFile(f"{folder}/fisheye_calibration-{version}-cp311-cp311-linux_x86_64.whl", "w") as wheel:
    metadata = f"Name: fisheye_calibration\nVersion: {version}\nRequires-Dist: numpy>=1.24\n"
    wheel.writestr(f"fisheye_calibration-{version}.dist-info/METADATA", metadata)
    wheel.writestr(f"fisheye_calibration-{version}.dist-info/LICENSE.pybind11", "notice")
    wheel.write("/usr/bin/dpkg", "fisheye_calibration/_core.so")  # a program that is linked with several libraries
END
bill=$shipped/fisheye_calibration-$version.spdx.json
make_bill() {
  "$python" "$sources/scripts/make-sbom" "$shipped" "$version" \
    --libraries "$folder/libraries/libpng-0123abc;$folder/libraries/opencv-4567def"
}
make_bill
"$python" "$sources/scripts/check-sbom" "$shipped"
for sign in '"created": "2023-11-14T22:13:20Z"' '"versionInfo": "4.10.0"' '"versionInfo": "1.6.39"' '"libpng-2.0"' \
  '"extractedText": "licences/opencv/videoInput"' \
  '"name": "numpy"' '"comment": "numpy>=1.24"' '"name": "python3-numpy"' '"comment": "python3-f2py"' \
  '"comment": "libc6 (>= 2.34), libc6 (<< 9)"' '"comment": "libgcc-s1 | libgcc1"' \
  "\"versionInfo\": \"$(dpkg-query -W -f '${Version}' libopencv-dev)\"" \
  '"referenceLocator": "pkg:deb/debian/libc6@' '"referenceLocator": "pkg:generic/libpng@1.6.39"' \
  "\"referenceLocator\": \"pkg:deb/fisheye-calibration/libfisheye-calibration0@$version?arch=amd64&distro=debian-"; do
  grep -qF "$sign" "$bill" || fail "the bill lacks $sign"
done
# related KIND: what packages are related to, as lines "from to".
related() {
  "$python" - "$bill" "$1" <<'END'
import json
import sys

for found in json.load(open(sys.argv[1]))["relationships"]:
    if found["relationshipType"] == sys.argv[2]:
        print(found["spdxElementId"].removeprefix("SPDXRef-"), found["relatedSpdxElement"].removeprefix("SPDXRef-"))
END
}
grep -q "^Shipped-fisheye-calibration-.*deb Shipped-libfisheye-calibration0-.*deb$" <<<"$(related DEPENDS_ON)"
grep -q "^Shipped-fisheye-calibration-.*whl Debian-lib" <<<"$(related DEPENDS_ON)"
[ "$(related GENERATED_FROM | grep -c " Shipped-fisheye-calibration-$version.tar.gz$")" -eq 5 ]
cp "$bill" "$folder/first"
make_bill
cmp "$bill" "$folder/first"

# require_notice PART-OF-THE-MESSAGE: the check fails and says so; then what was changed is put back.
cp -r "$shipped" "$folder/good"
require_notice() {
  local said
  ! said=$("$python" "$sources/scripts/check-sbom" "$shipped" 2>&1) || fail "the check has not noticed: $1"
  [[ $said == *"$1"* ]] || fail "the check does not say '$1' but: $said"
  rm -rf "$shipped"
  cp -r "$folder/good" "$shipped"
}
echo more >>"$shipped/fisheye_calibration-$version.tar.gz"
require_notice "fisheye_calibration-$version.tar.gz: another checksum"
touch "$shipped/more.deb"
require_notice "more.deb is not described"
rm "$shipped"/*.whl
require_notice "is described but not shipped"
sed -i '/"name": "libpng"/d' "$bill"
require_notice "name is None"
sed -i 's/"libpng-2.0"/"libpng-3"/' "$bill"
require_notice "libpng-3 is not a licence"
sed -i 's/SPDX-2.3/SPDX-2.2/' "$bill"
require_notice "spdxVersion is 'SPDX-2.2'"
sed -i 's/"name": "libc6"/"name": "libc7"/' "$bill"
require_notice "['libc6'] is not libc7"
sed -i 's/"comment": "libc6 (>= 2.34)"/"comment": "libc6 (>= 2.30)"/' "$bill"
require_notice "depends on ['libc6 (>= 2.34)'"
sed -i 's/"comment": "libgcc-s1 | libgcc1"/"comment": ""/' "$bill"
require_notice "depends on ['libc6 (>= 2.34)', 'libgcc-s1 | libgcc1'], not ['libc6"
sed -i 's/"versionInfo": "4.10.0"/"versionInfo": ">= 4.10.0"/' "$bill"
require_notice "versionInfo is '>= 4.10.0'"
sed -i 's/"versionInfo": "4.10.0"/"versionInfo": "4.10.1"/' "$bill"
require_notice "package OpenCV: the package URL has not version 4.10.1"
libc=$(dpkg-query -W -f '${Version}\n' libc6 | head -1)
encoded=${libc//+/%2B}
sed -i "s/libc6@${encoded//./\\.}/libc6@9.9/; s/\"${libc//./\\.}\"/\"9.9\"/" "$bill"
require_notice "package libc6: version 9.9, but $libc is installed"
sed -i 's#"pkg:pypi/numpy@#"pypi/numpy@#' "$bill"
require_notice "package numpy: has no package URL"
sed -i 's/"relationshipType": "GENERATED_FROM"/"relationshipType": "CONTAINS"/' "$bill"
require_notice "made from []"
sed -i '/"name": "pybind11"/s/pybind11/pybind12/' "$bill"
require_notice ".whl: the notices differ by ['pybind11']"
sed -i '0,/"relationshipType": "CONTAINS"/s//"relationshipType": "HOLDS"/' "$bill"
require_notice "a relationship is 'HOLDS'"

# A package without a notice is reported; a dependency on what is neither installed nor shipped is refused.
make_package fisheye-calibration libc6 CLI11 cpp-httplib
make_bill
! said=$("$python" "$sources/scripts/check-sbom" "$shipped" 2>&1) || fail "a missing notice is not reported"
[[ $said == *"the notices differ by ['nlohmann-json']"* ]] || fail "of a missing notice the check says: $said"
require_refusal() {
  make_package fisheye-calibration "$1" CLI11 cpp-httplib nlohmann-json
  ! said=$(make_bill 2>&1) || fail "a dependency on $1 is not refused"
  [[ $said == *"make-sbom: $2"* ]] || fail "of $1 it says: $said"
}
require_refusal no-such-package "no-such-package, which the bill has to name, is not installed"
require_refusal fisheye-calibration-data "fisheye-calibration-data is needed, but not shipped"

# Of alternatives, the one that is installed counts.
make_package fisheye-calibration "no-such-package (>= 2) | libc6:amd64 (>= 2)" CLI11 cpp-httplib nlohmann-json
make_bill
"$python" "$sources/scripts/check-sbom" "$shipped"

# So is a library whose licence the archive holds, but of which nothing is known.
make_package fisheye-calibration libc6 CLI11 cpp-httplib nlohmann-json
"$python" - "$shipped"/*.zip <<'END'
import sys
import zipfile

with zipfile.ZipFile(sys.argv[1], "a") as archive:
    archive.writestr("fisheye/licences/unknown/LICENSE", "")
END
! make_bill 2>"$folder/refusal" || fail "an unknown library is not refused"
grep -q "holds unknown, which is not known here" "$folder/refusal" || fail "of it is said: $(cat "$folder/refusal")"
