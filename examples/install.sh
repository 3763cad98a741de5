#!/bin/sh
# install.sh CMAKE BUILD_DIR CLIENT_DIR [CXXFLAGS]: installs the build into a temporary prefix and
# uses only what was installed: a client built against the package with CMake and with pkg-config,
# and zel_device checking the installed configuration and booting the installed service. Run from
# an empty folder with a PATH that holds nothing of the build. CXXFLAGS: the build's sanitizers.
set -eu
cmake=$1
build=$(cd "$2" && pwd)
client=$(cd "$3" && pwd)
flags=${4:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
fail() { echo "install: $*" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log" || { cat "$work/install.log"; fail "install failed"; }
mkdir "$work/empty" && cd "$work/empty"
export PATH=/usr/local/bin:/usr/bin:/bin
unset LD_LIBRARY_PATH ZEL_SERVICE_LIBRARY CMAKE_PREFIX_PATH PKG_CONFIG_PATH
export PKG_CONFIG_PATH="$prefix/lib/pkgconfig"
libdir=$(pkg-config --variable=libdir zel_manager)
includedir=$(pkg-config --variable=includedir zel_manager)

# The layout.
for file in bin/zel_device share/zel_manager/zel_manager_config.xml share/zel_manager/zel_manager_config.xsd \
    lib/systemd/user/zel_device.service; do
    [ -f "$prefix/$file" ] || fail "missing $file"
done
[ -f "$includedir/zel_manager/zel_manager_proxy.h" ] && [ -f "$includedir/zel_manager/iremote_proxy.h" ] ||
    fail "headers missing under $includedir/zel_manager"
[ -e "$libdir/libzel_manager_service.so" ] || fail "missing the service library"
soname=$(readelf -d "$libdir/libzel_manager_client.so" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = libzel_manager_client.so.0 ] || fail "client soname is '$soname'"
grep -qx "ExecStart=$prefix/bin/zel_device serve --dir %t/zel_device" "$prefix/lib/systemd/user/zel_device.service" ||
    fail "the unit does not run the installed zel_device"
for file in "$prefix"/bin/*; do
    case ${file##*/} in zel_device | zelctl) ;; *) fail "installed a program not meant for it: $file" ;; esac
done
if ls "$libdir" | grep -E 'test|gtest|gmock|bench|fuzz'; then fail "installed a test library"; fi
# Nothing installed names the build tree: no run path, no fixed file path.
for file in "$prefix"/bin/* "$libdir"/*.so; do
    if readelf -d "$file" | grep -E 'RPATH|RUNPATH' | grep -qF "$build"; then fail "$file runs from the build tree"; fi
done
if readelf -p .rodata "$prefix/bin/zel_device" | grep -qF "$build"; then fail "zel_device names a path in the build tree"; fi

# A client built with CMake.
"$cmake" -S "$client" -B "$work/cmake_client" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS="$flags" \
    >"$work/client.log" 2>&1 || { cat "$work/client.log"; fail "configuring the client failed"; }
"$cmake" --build "$work/cmake_client" >>"$work/client.log" 2>&1 || { cat "$work/client.log"; fail "building the client failed"; }
out=$("$work/cmake_client/zel_client" 2>/dev/null)
[ "$out" = "Tarvo.IZelManager 2" ] || fail "the CMake client printed '$out'"

# A client built with pkg-config.
# shellcheck disable=SC2046,SC2086
c++ -std=c++20 $flags "$client/client.cpp" -o "$work/pc_client" $(pkg-config --cflags --libs zel_manager) \
    -Wl,-rpath,"$libdir" || fail "building the pkg-config client failed"
out=$("$work/pc_client" 2>/dev/null)
[ "$out" = "Tarvo.IZelManager 2" ] || fail "the pkg-config client printed '$out'"

# zel_device finds its configuration, schema and service library beside itself.
"$prefix/bin/zel_device" check-config "$prefix/share/zel_manager/zel_manager_config.xml" >"$work/check.txt" ||
    { cat "$work/check.txt"; fail "check-config refused the installed configuration"; }
grep -qx -- "-: schema: valid" "$work/check.txt" || { cat "$work/check.txt"; fail "check-config did not find its schema"; }
printf '%s\n' '0 boot' \
    '+10000 expect log level=D msg="FrameRateControl::SetBasicSceneAttributes name = BACK_DESKTOP, interruptible = 0"' \
    'end' >"$work/boot.scn"
"$prefix/bin/zel_device" run "$work/boot.scn" --quiet || fail "the installed device did not boot the installed service"
echo "install: prefix, CMake client, pkg-config client and zel_device all work"
