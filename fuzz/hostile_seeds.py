#!/usr/bin/env python3
"""Writes hostile archives for the confinement target, aimed at the files it plants
(out/a.txt, out/dir/b.txt, out/shared.txt hard-linked from outside, the links out/escape,
out/up.txt and out/abs.txt pointing outside, and SCRATCH/beside.txt beside out/).

    hostile_seeds.py SEEDS OPEN SCRATCH

SEEDS gets the cases extraction handles today; OPEN the ones it still gets wrong (a run
with them fails until they are fixed). SCRATCH is where the target plants its files.

Tar headers are written by hand: Python's tarfile will not give a hard link a size.
Each tar's first name starts with a letter that makes the target read it as "tar" or
"all" (it picks the format from the first byte).
"""
import gzip
import io
import random
import sys
import unicodedata
import zipfile

seeds, open_seeds, scratch = sys.argv[1:4]

REG, LNK, SYM, DIR = b"0", b"1", b"2", b"5"


def header(name, kind, link=b"", size=0, mode=0o644):
    def octal(value, width):
        return b"%0*o\0" % (width - 1, value)

    block = bytearray(512)
    fields = [
        (0, name[:100]),
        (100, octal(mode, 8)),
        (108, octal(0, 8)),
        (116, octal(0, 8)),
        (124, octal(size, 12)),
        (136, octal(0, 12)),
        (148, b" " * 8),
        (156, kind),
        (157, link[:100]),
        (257, b"ustar\x0000"),
    ]
    for offset, value in fields:
        block[offset : offset + len(value)] = value
    block[148:156] = b"%06o\0 " % sum(block)
    return bytes(block)


def pax_record(key, value):
    body = b" %s=%s\n" % (key, value)
    length = len(body) + 1
    while len(b"%d" % length) + len(body) != length:
        length += 1
    return b"%d%s" % (length, body)


def tar(entries):
    """entries: (name, kind, link, data); a link may carry data (the hostile part)."""
    out = bytearray()
    for name, kind, link, data in entries:
        encode = lambda text: text.encode("utf-8") if isinstance(text, str) else text
        if kind == LNK and data:
            # libarchive takes a hard link's data only from a pax archive.
            record = pax_record(b"size", b"%d" % len(data))
            out += header(b"PaxHeader", b"x", b"", len(record)) + record
            out += b"\0" * (-len(record) % 512)
        out += header(encode(name), kind, encode(link), len(data), 0o755 if kind == DIR else 0o644)
        out += data + b"\0" * (-len(data) % 512)
    return bytes(out + b"\0" * 1024)


def write(folder, name, data):
    with open(f"{folder}/{name}", "wb") as file:
        file.write(data)


first = ("c.txt", REG, "", b"first\n")  # harmless, and read as "all"

# Cases extraction once got wrong: a hard link carrying data rewrote the file it linked to
# in place (mode too, through the planted hard link from outside); a hard link to a
# planted link that leads out made one more such link; a folder entry over a file left an
# empty file in its place. A case found and not yet fixed goes to open_seeds.
write(seeds, "hardlink-data-onto-existing.tar", tar([
    first,
    ("h", LNK, "a.txt", b"rewritten through a hard link\n"),
    ("h2", LNK, "shared.txt", b"rewritten through a hard link\n"),
]))
write(seeds, "hardlink-to-planted-outward-symlink.tar", tar([
    first,
    ("h", LNK, "up.txt", b""),
    ("h2", LNK, "abs.txt", b""),
]))
write(seeds, "folder-over-existing-file.tar", tar([
    first,
    ("a.txt/", DIR, "", b""),
    ("dir/b.txt/", DIR, "", b""),
    ("shared.txt/", DIR, "", b""),
]))
# The same, then an entry that fails the call: the cleanup must not take the folder that
# replaced a planted file, or the file's name vanishes.
write(seeds, "folder-over-existing-file-then-refused.tar", tar([
    first,
    ("a.txt/", DIR, "", b""),
    ("a.txt/inner.txt", REG, "", b"in\n"),
    ("../escape.txt", REG, "", b"x\n"),
]))

# Hostile cases extraction refuses or handles.
write(seeds, "hardlink-data-onto-shared.tar", tar([
    first,
    ("shared.txt", LNK, "shared.txt", b"rewritten in place\n"),
]))
write(seeds, "hardlink-data-through-outward-symlink.tar", tar([
    first,
    ("h", LNK, "up.txt", b"written through the link\n"),
    ("h2", LNK, "abs.txt", b"written through the link\n"),
    ("h3", LNK, "escape", b""),
    ("h3/target.txt", REG, "", b"through a linked folder\n"),
]))
write(seeds, "dotdot-names.tar", tar([
    first,
    ("../beside.txt", REG, "", b"climbed\n"),
    ("dir/../../beside.txt", REG, "", b"climbed\n"),
    ("../outside/target.txt", REG, "", b"climbed\n"),
    ("escape/target.txt", REG, "", b"through the planted link\n"),
    ("up.txt", REG, "", b"over the planted link\n"),
    ("a.txt", REG, "", b"replaced\n"),
]))
write(seeds, "absolute-links.tar", tar([
    first,
    ("abs2", SYM, f"{scratch}/beside.txt", b""),
    ("abs2", REG, "", b"through an absolute link\n"),
    ("root", SYM, "/", b""),
    (f"root{scratch}/beside.txt", REG, "", b"through the root\n"),
    ("h", LNK, f"{scratch}/beside.txt", b""),
    ("h2", LNK, f"{scratch}/out/a.txt", b""),
    ("h3", LNK, "/etc/passwd", b""),
    ("/abs.txt", REG, "", b"absolute name\n"),
]))
write(seeds, "hardlink-without-data.tar", tar([
    first,
    ("h", LNK, "a.txt", b""),
    ("h2", LNK, "shared.txt", b""),
    ("h4", LNK, "../beside.txt", b""),
    ("h5", LNK, "escape/target.txt", b""),
]))
nfc = unicodedata.normalize("NFC", "caf\u00e9")
nfd = unicodedata.normalize("NFD", "caf\u00e9")
assert nfc != nfd
write(seeds, "nfc-nfd-names.tar", tar([
    (f"{nfc}.txt", REG, "", b"composed\n"),
    (f"{nfd}.txt", REG, "", b"decomposed\n"),
    (f"{nfc}/", DIR, "", b""),
    (f"{nfd}", SYM, "../outside", b""),
    (f"{nfd}/x.txt", REG, "", b"through the decomposed link\n"),
    (f"{nfc}/x.txt", REG, "", b"in the composed folder\n"),
    (unicodedata.normalize("NFD", "a\u0301.txt"), REG, "", b"a with an accent\n"),
]))
with zipfile.ZipFile(f"{seeds}/nfc-nfd-names.zip", "w") as z:
    for name, data in [(f"{nfc}.txt", b"composed"), (f"{nfd}.txt", b"decomposed"),
                       (f"{nfc}/", b""), (f"{nfd}/x.txt", b"x")]:
        z.writestr(zipfile.ZipInfo(name), data)

# A tar.gz replacing planted files, cut a few bytes short: in the trailer, or in the
# compressed data. A failure leaves each old file whole.
rng = random.Random(1)
body = tar([
    ("a.txt", REG, "", bytes(rng.getrandbits(8) for _ in range(20000))),
    ("dir/b.txt", REG, "", b"replacement b\n" * 100),
    ("shared.txt", REG, "", b"replacement shared\n"),
])
whole = gzip.compress(body, mtime=0)
for cut in (3, 9, 40, 400):
    write(seeds, f"cut-{cut}-bytes.tgz", whole[:-cut])
write(seeds, "whole.tgz", whole)
