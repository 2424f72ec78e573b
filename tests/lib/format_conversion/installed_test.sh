#!/bin/sh
# Installs the library alone into an empty folder, moves that, and builds the example against it in two ways.
#   installed_test.sh BUILD SOURCE COMPILER
set -eu
build=$1
source=$2
compiler=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --component format_conversion --prefix "$work/first" >/dev/null
mv "$work/first" "$work/root"

check() { # PROGRAM HOW
    said=$("$1" "$work/bars.uyvy")
    [ "$said" = "white 127 235 128 235, opaque" ] || { echo "$2: said '$said'"; exit 1; }
    [ "$(stat -c %s "$work/bars.uyvy")" = 1843200 ] || { echo "$2: wrong size"; exit 1; }
    echo "$2: $said"
}

cp -r "$source/examples/format_conversion" "$work/example"
cmake -S "$work/example" -B "$work/out" -DCMAKE_PREFIX_PATH="$work/root" -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
cmake --build "$work/out" >/dev/null
check "$work/out/colour_bars" find_package

PKG_CONFIG_PATH=$(dirname "$(find "$work/root" -name quillo-format-conversion.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046
"$compiler" -std=c++17 "$work/example/colour_bars.cpp" $(pkg-config --cflags --libs quillo-format-conversion) -o "$work/by_pkg_config"
check "$work/by_pkg_config" pkg-config

# Every kernel can be called from outside too.
cat >"$work/kernel.cpp" <<'CODE'
#include <lib/format_conversion/line.h>
int main()
{
    unsigned char const src[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    unsigned char dst[4];
    Processing::FXlib::format_conversion::line::vuyx::uyvy<false, false>(src, dst, 2);
    return dst[0] == 2 && dst[3] == 7 ? 0 : 1;
}
CODE
# shellcheck disable=SC2046
"$compiler" -std=c++17 "$work/kernel.cpp" $(pkg-config --cflags --libs quillo-format-conversion) -o "$work/kernel"
"$work/kernel"

# Nothing but the library was installed.
if find "$work/root" -type f | grep -vE '/lib/format_conversion/.*\.h$|libformat_conversion\.a$|QuilloFormatConversion|\.pc$'; then
    echo "installed without being asked for"
    exit 1
fi
