#!/usr/bin/env bash
# InstallTest.sh BUILD_DIR VERSION gui|no-gui
# Installs the build into a temporary prefix and runs the installed programs as a new user would:
# HOME is an empty folder, QUARVEX_HOME and XDG_DATA_HOME are unset, the working directory is
# neither the build nor the prefix.
set -euo pipefail

build=$1 version=$2 gui=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() {
    echo "FAIL: $*" >&2
    exit 1
}

prefix=$scratch/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
for installed in bin/quarvex-cli share/quarvex/SearchRecords/RamanLib/Calcite_M00014_532.txt \
    share/quarvex/SearchRecords/XrayLib/Quartz.out share/quarvex/docs/desktop.md \
    share/quarvex/examples/raman/calcite_bwtek_785nm_icv.txt share/applications/quarvex.desktop \
    share/icons/hicolor/scalable/apps/quarvex.svg share/icons/hicolor/256x256/apps/quarvex.png \
    share/mime/packages/quarvex.xml share/man/man1/quarvex-cli.1.gz share/doc/quarvex/copyright; do
    [[ -f $prefix/$installed ]] || fail "not installed: $installed"
done
if command -v desktop-file-validate >/dev/null; then
    desktop-file-validate "$prefix/share/applications/quarvex.desktop" || fail "desktop entry"
fi

export HOME=$scratch/user
mkdir -p "$HOME" "$scratch/elsewhere"
unset QUARVEX_HOME XDG_DATA_HOME
cd "$scratch/elsewhere"
cli=$prefix/bin/quarvex-cli
home=$HOME/.local/share/quarvex
compiled=$home/SearchRecords/RamanLib/RamanSearchFileSlow.rsf

[[ $("$cli" --version) == "quarvex-cli $version" ]] || fail "quarvex-cli --version: $("$cli" --version)"

example=$prefix/share/quarvex/examples/raman/calcite_bwtek_785nm_icv.txt
first=$("$cli" search "$example" --top 3 2>"$scratch/first.err")
grep -q "compiled first" "$scratch/first.err" || fail "the first search did not compile the library"
echo "$first" | sed -n 3p | grep -q "^ *1 .*Calcite_" || fail "calcite does not rank first:
$first"
[[ -f $compiled ]] || fail "no library compiled in $home"
[[ -f $home/QV.ini && -d $home/UndoRecords ]] || fail "the home lacks its files"

stamp=$(stat -c %Y.%s "$compiled")
second=$("$cli" search "$example" --top 3 2>"$scratch/second.err")
grep -q "compiled first" "$scratch/second.err" && fail "the second search compiled again"
[[ $second == "$first" ]] || fail "the second search differs"
[[ $(stat -c %Y.%s "$compiled") == "$stamp" ]] || fail "the compiled library changed"
"$cli" home | grep -qx "Home folder: $home" || fail "quarvex-cli home: $("$cli" home)"

if [[ $gui == gui ]]; then
    version_text=$(env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$prefix/bin/quarvex" --version)
    [[ $version_text == "Quarvex $version" ]] || fail "quarvex --version without a display"
    export HOME=$scratch/desktop-user QT_QPA_PLATFORM=offscreen
    mkdir -p "$HOME"
    "$prefix/bin/quarvex" --screenshot "$scratch/window.png" "$example" 2>"$scratch/gui.err" ||
        fail "the desktop program failed: $(cat "$scratch/gui.err")"
    [[ -s $scratch/window.png ]] || fail "no window picture"
    [[ -f $HOME/.local/share/quarvex/SearchRecords/RamanLib/RamanSearchFileSlow.rsf ]] ||
        fail "the desktop program did not compile the seeded library"
fi
echo "installed program works from $prefix"
