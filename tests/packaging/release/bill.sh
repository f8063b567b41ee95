#!/usr/bin/env bash
# The bill of materials describes what is shipped, gives the same bytes again, and its check notices what is wrong.
#   bill.sh SOURCES VERSION FOLDER
set -euo pipefail
sources=$1 version=$2 folder=$3
python=/usr/bin/python3
for needed in dpkg-deb "$python"; do
  command -v "$needed" >/dev/null || { echo "Skipped: $needed is not installed"; exit 77; }
done
# What the bill names of this machine.
for package in libopencv-dev libhwy-dev libcli11-dev nlohmann-json3-dev pybind11-dev; do
  dpkg-query -W "$package" >/dev/null 2>&1 || { echo "Skipped: $package is not installed"; exit 77; }
done
fail() { echo "$*" >&2; exit 1; }
export SOURCE_DATE_EPOCH=1700000000
rm -rf "$folder"
shipped=$folder/shipped
mkdir -p "$shipped"

# Small files with all that the bill looks at: an archive of sources, a Debian package, a wheel, a Windows archive.
echo sources >"$shipped/fisheye_calibration-$version.tar.gz"
mkdir -p "$folder/package/DEBIAN"
cat >"$folder/package/DEBIAN/control" <<END
Package: fisheye-calibration
Version: $version
Architecture: amd64
Maintainer: Test <test@localhost>
Depends: libc6 (>= 2.34), libopencv-core406 | libopencv-core, libfisheye-calibration0 (= $version)
Description: test
END
dpkg-deb --build --root-owner-group "$folder/package" "$shipped/fisheye-calibration_${version}_amd64.deb" >/dev/null
mkdir -p "$folder/libraries/libpng-0123abc/lib/pkgconfig" "$folder/libraries/opencv-4567def/lib/cmake/opencv4"
echo 'Version: 1.6.39' >"$folder/libraries/libpng-0123abc/lib/pkgconfig/libpng.pc"
echo 'set(OpenCV_VERSION 4.10.0)' >"$folder/libraries/opencv-4567def/lib/cmake/opencv4/OpenCVConfig-version.cmake"
"$python" - "$shipped" "$version" <<'END'
import sys
import zipfile

folder, version = sys.argv[1:]
with zipfile.ZipFile(f"{folder}/fisheye_calibration-{version}-win64.zip", "w") as archive:
    for name in ("bin/fisheye_calibration.dll", "licences/opencv/LICENSE", "licences/libpng/LICENSE"):
        archive.writestr(f"fisheye_calibration-{version}-win64/{name}", name)
with zipfile.ZipFile(f"{folder}/fisheye_calibration-{version}-cp311-cp311-linux_x86_64.whl", "w") as wheel:
    metadata = f"Name: fisheye_calibration\nVersion: {version}\nRequires-Dist: numpy>=1.24\n"
    wheel.writestr(f"fisheye_calibration-{version}.dist-info/METADATA", metadata)
END
bill=$shipped/fisheye_calibration-$version.spdx.json
make_bill() {
  "$python" "$sources/scripts/make-sbom" "$shipped" "$version" \
    --libraries "$folder/libraries/libpng-0123abc;$folder/libraries/opencv-4567def"
}
make_bill
"$python" "$sources/scripts/check-sbom" "$shipped"
for sign in '"created": "2023-11-14T22:13:20Z"' '"versionInfo": "4.10.0"' '"versionInfo": "1.6.39"' '"libpng-2.0"' \
  '"name": "numpy"' '"name": "libopencv-core406"'; do
  grep -qF "$sign" "$bill" || fail "the bill lacks $sign"
done
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
require_notice "depends on ['libc6'"
sed -i '0,/"relationshipType": "CONTAINS"/s//"relationshipType": "HOLDS"/' "$bill"
require_notice "a relationship is 'HOLDS'"

# A library whose licence the archive holds, but of which nothing is known, is refused.
"$python" - "$shipped"/*.zip <<'END'
import sys
import zipfile

with zipfile.ZipFile(sys.argv[1], "a") as archive:
    archive.writestr("fisheye/licences/unknown/LICENSE", "")
END
! make_bill 2>"$folder/refusal" || fail "an unknown library is not refused"
grep -q "holds unknown, which is not known here" "$folder/refusal"
