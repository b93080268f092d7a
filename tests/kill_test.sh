#!/usr/bin/env bash
# The kill test: kills "quarvex-cli compile" and "quarvex-cli xray-project save" at random
# moments. After every kill the next read of the library or the project (which completes a
# commit that the kill cut short) finds it entirely old or entirely new, the next compile or
# save succeeds, and no temporary file or journal remains after it.
#   tests/kill_test.sh QUARVEX_CLI [KILLS [SECONDS]]   (20 kills of each, within 50 s)
# On a slow machine the kills stop when half of SECONDS has gone on each writer (at least 5).
set -euo pipefail

cli=$1
kills=${2:-20}
budget_ms=$((${3:-50} * 1000 / 2))
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
work=$(mktemp -d)
trap '[[ -n ${KEEP:-} ]] || rm -rf "$work"' EXIT

fail() {
    echo "kill test: $*" >&2
    exit 1
}
now_ms() { echo $(($(date +%s%N) / 1000000)); }
# Starts a command, kills it (SIGKILL) after a random delay of 0 to $1 ms, waits for it.
kill_after_random() {
    local limit=$1
    shift
    "$@" >/dev/null 2>&1 &
    local pid=$!
    local delay=$((RANDOM * RANDOM % (limit + 1)))
    sleep "$((delay / 1000)).$(printf '%03d' $((delay % 1000)))"
    kill -9 "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
}
leftovers() { find "$1" \( -name '*.quarvex-tmp-*' -o -name '*.quarvex-journal' \) | wc -l; }
library_sum() { (cd "$1/SearchRecords/RamanLib" && cat RamanSearch*.rsf | md5sum); }

# The library: old from three reference spectra, new from six.
template=$work/template
mkdir -p "$template/SearchRecords/RamanLib"
mapfile -t references < <(ls "$root"/data/raman/model_library/*_M0000[1-6]_*.txt)
cp "${references[@]:0:3}" "$template/SearchRecords/RamanLib/"
"$cli" --home "$template" compile >/dev/null
old_library=$(library_sum "$template")
cp "${references[@]:3:3}" "$template/SearchRecords/RamanLib/"
expected=$work/expected
cp -a "$template" "$expected"
start=$(now_ms)
"$cli" --home "$expected" compile >/dev/null
compile_ms=$(($(now_ms) - start))
new_library=$(library_sum "$expected")
[[ $old_library != "$new_library" ]] || fail "old and new library do not differ"

unknown=${references[4]}
start=$(now_ms)
library_kills=0
for ((k = 1; k <= kills; k++)); do
    ((k <= 5 || $(now_ms) - start < budget_ms)) || break
    home=$work/library-$k
    cp -a "$template" "$home"
    # The template's library is still the old one: its three new spectra are not compiled yet.
    cp "$template/SearchRecords/RamanLib/"RamanSearch*.rsf "$home/SearchRecords/RamanLib/"
    kill_after_random $((compile_ms * 3 / 2 + 5)) "$cli" --home "$home" compile
    "$cli" --home "$home" search "$unknown" >/dev/null 2>&1 || true # reads, completing a commit
    now=$(library_sum "$home")
    [[ $now == "$old_library" || $now == "$new_library" ]] || fail "library torn after kill $k"
    "$cli" --home "$home" compile >/dev/null || fail "compile after kill $k failed"
    [[ $(library_sum "$home") == "$new_library" ]] || fail "compile after kill $k: wrong library"
    [[ $(leftovers "$home") -eq 0 ]] || fail "temporary files left after kill $k"
    rm -rf "$home"
    library_kills=$k
done

# The project: old saved against one reference file, new against another.
pattern=$root/examples/quartz_pattern.txt
old_ref=$root/data/xray/reference/Quartz.out
new_ref=$root/data/xray/reference/Quartz_Ka12.out
project_home=$work/project-template
mkdir -p "$project_home"
"$cli" --home "$project_home" xray-project new "$project_home/p.xproj" "$pattern" >/dev/null 2>&1
"$cli" --home "$project_home" xray-project save "$project_home/p" "$pattern" "$old_ref" \
    >/dev/null 2>&1
old_project=$("$cli" --home "$project_home" xray-project show --json "$project_home/p")
expected_project=$work/project-expected
cp -a "$project_home" "$expected_project"
start=$(now_ms)
"$cli" --home "$expected_project" xray-project save "$expected_project/p" "$pattern" "$new_ref" \
    >/dev/null 2>&1
save_ms=$(($(now_ms) - start))
new_project=$("$cli" --home "$expected_project" xray-project show --json "$expected_project/p" |
    sed "s|$expected_project|$project_home|g")
[[ $old_project != "$new_project" ]] || fail "old and new project do not differ"

start=$(now_ms)
project_kills=0
for ((k = 1; k <= kills; k++)); do
    ((k <= 5 || $(now_ms) - start < budget_ms)) || break
    home=$work/project-$k
    cp -a "$project_home" "$home"
    kill_after_random $((save_ms * 3 / 2 + 5)) \
        "$cli" --home "$home" xray-project save "$home/p" "$pattern" "$new_ref"
    shown=$("$cli" --home "$home" xray-project show --json "$home/p" | sed "s|$home|$project_home|g") ||
        fail "project unreadable after kill $k"
    [[ $shown == "$old_project" || $shown == "$new_project" ]] || fail "project torn after kill $k"
    "$cli" --home "$home" xray-project save "$home/p" "$pattern" "$new_ref" >/dev/null 2>&1 ||
        fail "save after kill $k failed"
    [[ $(leftovers "$home") -eq 0 ]] || fail "temporary files left after project kill $k"
    rm -rf "$home"
    project_kills=$k
done
echo "kill test: $library_kills kills of compile (${compile_ms} ms a run), $project_kills of save" \
    "(${save_ms} ms a run): all old or new, nothing left over"
