#!/usr/bin/env bash
# Installs the build into a fresh prefix; builds README's example, word for word, against the package and with
# pkg-config, and a source that includes every installed header; runs the programs there.
# install_test.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1 source=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/prefix

fail() { echo "install_test: $*" >&2; exit 1; }
# quietly COMMAND...: its output when it fails, nothing otherwise.
quietly() { "$@" >"$scratch/log" 2>&1 || { cat "$scratch/log" >&2; fail "$*"; }; }
# block LANGUAGE: the first code block of that language in README.
block() { sed -n "/^\`\`\`$1\$/,/^\`\`\`\$/p" "$source/README.md" | sed '1d;/^```$/,$d'; }
# roots PROGRAM: whether it imports the example.
imports() { "$1" "$source/examples/pump.step" | grep -qx '1 roots' || fail "$1 does not import the example"; }

quietly cmake --install "$build" --prefix "$prefix"
[[ -n $(find "$prefix" -name LICENSE) && -n $(find "$prefix" -name THIRD-PARTY-NOTICES.md) ]] || fail "no licences"

mkdir "$scratch/app"
block cmake >"$scratch/app/CMakeLists.txt"
block cpp >"$scratch/app/main.cpp"
for header in host/ZemtarCoreExport.h $(cd "$source" && ls host/*.h); do
    [[ -f $prefix/include/zemtar/$header ]] || fail "$header is not installed"
done
for header in $(cd "$source/sdk" && find cadex -name '*.hxx'); do
    [[ -f $prefix/include/$header ]] || fail "$header is not installed"
done
{ (cd "$prefix/include/zemtar" && find . -name '*.h') && (cd "$prefix/include" && find cadex -name '*.hxx'); } |
    sed 's|^\(\./\)\?\(.*\)$|#include "\2"|' >"$scratch/app/headers.cpp"
echo 'target_sources(app PRIVATE headers.cpp)' >>"$scratch/app/CMakeLists.txt"
quietly cmake -S "$scratch/app" -B "$scratch/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
quietly cmake --build "$scratch/build"
imports "$scratch/build/app"

if command -v pkg-config >/dev/null; then
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name ZemtarCADExchange.pc)"):${PKG_CONFIG_PATH:-}
    export PKG_CONFIG_PATH
    libraries=$(pkg-config --variable=libdir ZemtarCADExchange)
    quietly c++ "$scratch/app/main.cpp" -o "$scratch/plain" $(pkg-config --cflags --libs ZemtarCADExchange) \
        -fPIC -Wl,-rpath,"$libraries"
    imports "$scratch/plain"
fi

# The engine shows its interface and what the standard library's headers put into every library; nothing else.
if [[ $(uname) == Linux ]] && command -v nm >/dev/null; then
    shown=$(nm -DC --defined-only "$(find "$prefix" -name libcadex.so)" | cut -c20- | grep -vE 'cadex|std::|__gnu_cxx|^(__bss_start|_edata|_end)$' || true)
    [[ -z $shown ]] || fail "libcadex shows $shown"
    find "$prefix" -name "libcadex.so.*" | grep -q . || fail "libcadex has no version"
fi

# The programs run where they were put, say one version, and load the renderer when it is asked for.
export QT_QPA_PLATFORM=offscreen
cad=$prefix/bin/zemtar-cad
"$cad" formats >/dev/null
version=$("$cad" --version)
[[ ${version#zemtar-cad } == "$("$prefix/bin/zemtar-viewer" --version | sed 's/zemtar-viewer //')" ]] || fail "two versions"
grep -q "${version#zemtar-cad }" "$(find "$prefix" -name 'zemtar-cad.1')" || fail "the manual page is of another version"
"$cad" import "$source/examples/pump.step" --preview "$scratch/pump.png" >/dev/null 2>"$scratch/log" ||
    grep -q OpenGL "$scratch/log" || { cat "$scratch/log" >&2; fail "the renderer is not found"; }
if command -v Xvfb >/dev/null; then # a machine without a display gets one of its own, and is left without it
    env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM TMPDIR="$scratch" \
        "$cad" import "$source/examples/pump.step" --preview "$scratch/server.png" >/dev/null 2>"$scratch/log" ||
        { cat "$scratch/log" >&2; fail "no picture without a display"; }
    grep -q PNG "$scratch/server.png" || fail "no picture without a display"
    [[ -z $(find "$scratch" -name key) ]] || fail "the key of the display is left"
fi
entry=$(find "$prefix" -path '*thumbnailers/org.zemtar.Viewer.thumbnailer')
if [[ $(uname) == Linux ]]; then
    thumbnailer=$(sed -n 's/^TryExec=//p' "$entry")
    [[ $("$prefix/bin/$thumbnailer" --version) == "$thumbnailer ${version#zemtar-cad }" ]] || fail "no thumbnailer"
fi
if command -v readelf >/dev/null && readelf -d "$cad" | grep -E 'NEEDED.*(OpenGL|Widgets)'; then
    fail "zemtar-cad links what only windows and pictures need"
fi
bash -c "source '$(find "$prefix" -path '*completions/zemtar-cad')'; COMP_WORDS=('$cad' con) COMP_CWORD=1; _zemtar_cad
    [[ \${COMPREPLY[*]} == convert ]]" || fail "the completion knows no convert"
