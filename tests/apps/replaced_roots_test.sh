#!/usr/bin/env bash
# The library builds against a host core and a CAD SDK that stand elsewhere: here roots made of our declarations alone,
# with empty libraries. Its package finds both again. Kept between runs, so that only what changed is built.
# replaced_roots_test.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
scratch=$1/replaced-roots source=$2
host=$scratch/host sdk=$scratch/sdk

fail() { echo "replaced_roots_test: $*" >&2; exit 1; }
quietly() { "$@" >"$scratch/log" 2>&1 || { tail -n 40 "$scratch/log" >&2; fail "$*"; }; }

mkdir -p "$host/include/host" "$host/lib" "$sdk/include/cadex/internal" "$sdk/lib"
cp -pu "$source"/host/*.h "$host/include/host"
cp -pu "$source"/sdk/cadex/*.hxx "$sdk/include/cadex"
cp -pu "$source"/sdk/cadex/internal/*.hxx "$sdk/include/cadex/internal"
rm -f "$sdk/include/cadex/internal/Reports.hxx" # the open engine's alone
for library in "$host/lib/libZemtarCore.so" "$host/lib/libZemtarBranding.so" "$sdk/lib/libcadex.so"; do
    [[ -f $library ]] || echo | c++ -x c++ -shared -o "$library" -
done

quietly cmake -S "$source" -B "$scratch/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
    -DZEMTAR_HOST_ROOT="$host" -DZEMTAR_CAD_SDK_ROOT="$sdk" -DZEMTAR_BUILD_APPS=OFF -DZEMTAR_BUILD_TESTS=OFF
! grep -oE -- "-(I|isystem )$source(/sdk)?( |\")" "$scratch/build/compile_commands.json" | sort -u | grep . ||
    fail "our own headers are on an include path"
quietly cmake --build "$scratch/build" --target ZemtarCADExchange

quietly cmake --install "$scratch/build" --prefix "$scratch/prefix"
[[ ! -d $scratch/prefix/include/cadex && ! -d $scratch/prefix/include/zemtar/host ]] ||
    fail "headers of a replaced side are installed"
mkdir -p "$scratch/app"
echo '#include "cadexchange/CZemtarCADExchangeReaderHandler.h"' >"$scratch/app/main.cpp"
cat >"$scratch/app/CMakeLists.txt" <<'TEXT'
cmake_minimum_required(VERSION 3.23)
project(app LANGUAGES CXX)
find_package(ZemtarCADExchange CONFIG REQUIRED)
add_library(app OBJECT main.cpp)
target_link_libraries(app PRIVATE Zemtar::CADExchange Zemtar::Core cadex::cadex)
TEXT
quietly cmake -S "$scratch/app" -B "$scratch/app/build" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix"
quietly cmake --build "$scratch/app/build"
