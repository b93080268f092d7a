#!/usr/bin/env bash
# The printed page of two spectra (quarvex --print-pdf): one page, the axis title and both names
# of the legend found as text, and no word taller than 3% of the page (across its line).
#   printed_page_test.sh QUARVEX EXAMPLES_FOLDER
set -euo pipefail
quarvex=$1
examples=$2
if ! command -v pdftotext >/dev/null || ! command -v pdfinfo >/dev/null; then
    echo "pdftotext or pdfinfo is missing (poppler-utils): skipped"
    exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
calcite=calcite_bwtek_785nm_icv.txt
anatase=anatase_in_matrix_bwtek_785nm_icv.txt
"$quarvex" --home "$work" --print-pdf "$work/page.pdf" "$examples/$calcite" "$examples/$anatase"

pages=$(pdfinfo "$work/page.pdf" | awk '/^Pages:/ { print $2 }')
[[ $pages == 1 ]] || { echo "FAIL: $pages pages"; exit 1; }
pdftotext -layout "$work/page.pdf" "$work/page.txt"
for wanted in "Raman shift / cm-1" "$calcite" "$anatase"; do
    grep -qF -- "$wanted" "$work/page.txt" || { echo "FAIL: \"$wanted\" not on the page"; exit 1; }
done
pdftotext -bbox "$work/page.pdf" "$work/page.html"
awk '
    /<page / { match($0, /height="[0-9.]+"/); height = substr($0, RSTART + 8, RLENGTH - 9) }
    /<word / {
        match($0, /xMin="[0-9.]+"/); left = substr($0, RSTART + 6, RLENGTH - 7)
        match($0, /xMax="[0-9.]+"/); right = substr($0, RSTART + 6, RLENGTH - 7)
        match($0, /yMin="[0-9.]+"/); low = substr($0, RSTART + 6, RLENGTH - 7)
        match($0, /yMax="[0-9.]+"/); high = substr($0, RSTART + 6, RLENGTH - 7)
        # a word written upwards (the y-axis title) is as tall as its box is wide
        size = (right - left < high - low) ? right - left : high - low
        if (size > tallest) { tallest = size; word = $0 }
    }
    END {
        printf "tallest word: %.1f of a page %.1f high (%.2f%%)\n", tallest, height, 100 * tallest / height
        if (height == 0 || tallest > 0.03 * height) { print "FAIL: " word; exit 1 }
    }' "$work/page.html"
