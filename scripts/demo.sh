#!/usr/bin/env bash
# Builds everything and runs the main job: the tqarchive command-line host on the
# sample files shipped in samples/ (zip and tgz a tree with non-ASCII names, extract
# both, gzip and gunzip a file, refuse a wrong password and a path-traversal archive).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
export LC_ALL=C.UTF-8
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc)"

tq="$PWD/build/cli/tqarchive"
work="$PWD/build/demo"
rm -rf "$work"
mkdir -p "$work"
cp -r samples "$work/samples"
# git keeps no empty folders, so the empty one is made here.
mkdir -p "$work/samples/vide (empty)"
cd "$work"

step() { printf '\n== %s\n' "$*"; }
run() {
  local shown=() a
  for a in "$@"; do
    if [[ "$a" == *" "* ]]; then shown+=("'$a'"); else shown+=("$a"); fi
  done
  printf '$ tqarchive %s\n' "${shown[*]}"
  "$tq" "$@"
}

step "The sample tree"
find samples | sort

step "Pack it as zip and as tar.gz"
run zip samples.zip samples
run tar samples.tgz samples -q
ls -l samples.zip samples.tgz

step "Extract both and compare with the originals"
run unzip samples.zip -d from-zip -q
run untar samples.tgz -d from-tgz -q
diff -r samples from-zip/samples && echo "from-zip/samples is identical to samples"
diff -r samples from-tgz/samples && echo "from-tgz/samples is identical to samples"

step "Gzip a file and gunzip it into another folder"
run gzip samples/measurements.csv -d gz
run gunzip gz/measurements.csv.gz -d restored
cmp samples/measurements.csv restored/measurements.csv && echo "restored/measurements.csv is identical"
ls -l samples/measurements.csv gz/measurements.csv.gz

step "An AES-256 encrypted zip, then a wrong password"
printf 'correct horse\n' > password.txt
# The first entry is a file: the password is checked on it before anything is written.
run zip secret.zip café-menu.txt 日本語 -C samples/notes --password-file password.txt
mkdir -p secret-out
status=0
run unzip secret.zip -d secret-out --password 'wrong guess' || status=$?
if [ "$status" -ne 1 ]; then
  echo "unexpected: the wrong password was not refused (exit status $status)" >&2
  exit 1
fi
echo "exit status $status (refused); secret-out holds $(find secret-out -mindepth 1 | wc -l) files"
run unzip secret.zip -d secret-out --password-file password.txt

step "An archive whose entry climbs out of the output folder"
python3 -c "import zipfile; z=zipfile.ZipFile('evil.zip','w'); z.writestr('../escaped.txt','x'); z.close()"
status=0
run unzip evil.zip -d evil-out || status=$?
if [ "$status" -ne 1 ]; then
  echo "unexpected: the traversal archive was not refused (exit status $status)" >&2
  exit 1
fi
echo "exit status $status (refused); evil-out exists: $([ -e evil-out ] && echo yes || echo no), ../escaped.txt exists: $([ -e escaped.txt ] && echo yes || echo no)"

step "Done: everything is in $work"
