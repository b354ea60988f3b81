#include "Tools.hpp"

#include <stdexcept>

namespace tqtest {

namespace {

const char* kPythonHelpers = R"(import io, os, sys, tarfile, zipfile, zlib, struct
def text(n): return n if isinstance(n, str) else n.decode('utf-8', 'surrogateescape')
def member(name, kind, mode, owner=1234):
    i = tarfile.TarInfo(text(name)); i.type = kind; i.mode = mode; i.uid = i.gid = owner
    i.mtime = 981173106; return i
def reg(name, data=b'', mode=0o644, owner=1234):
    i = member(name, tarfile.REGTYPE, mode, owner); i.size = len(data); return (i, data)
def folder(name): return (member(name, tarfile.DIRTYPE, 0o755), None)
def sym(name, target):
    i = member(name, tarfile.SYMTYPE, 0o777); i.linkname = text(target); return (i, None)
def hard(name, target):
    i = member(name, tarfile.LNKTYPE, 0o644); i.linkname = text(target); return (i, None)
def node(name, kind, major=0, minor=0, mode=0o666):
    i = member(name, kind, mode); i.devmajor = major; i.devminor = minor; return (i, None)
def tar(path, *members):
    with tarfile.open(path, 'w', format=tarfile.GNU_FORMAT, encoding='utf-8',
                      errors='surrogateescape') as t:
        for i, data in members: t.addfile(i, io.BytesIO(data) if data is not None else None)
def linkWithData(name, target, data):
    i = tarfile.TarInfo(name); i.linkname = target; i.size = len(data); i.mode = 0o644
    i.mtime = 981173106; i.pax_headers = {'comment': 'carries data'}
    b = bytearray(i.tobuf(tarfile.PAX_FORMAT, 'utf-8', 'surrogateescape'))
    h = len(b) - 512
    b[h + 156] = ord('1')
    b[h + 148:h + 156] = b' ' * 8
    b[h + 148:h + 155] = ('%06o\0' % sum(b[h:h + 512])).encode()
    return bytes(b) + data + b'\0' * (-len(data) % 512)
def pax(path, *members):
    out = b''
    for m in members:
        if isinstance(m, bytes): out += m; continue
        i, data = m; out += i.tobuf(tarfile.PAX_FORMAT, 'utf-8', 'surrogateescape')
        if data: out += data + b'\0' * (-len(data) % 512)
    open(path, 'wb').write(out + b'\0' * 1024)
)";

}  // namespace

const char* const kFolderSwapRacer = R"(import ctypes, os, sys
libc = ctypes.CDLL(None, use_errno=True)
out, other = sys.argv[1], sys.argv[2]
d, s = (out + '/d').encode(), (out + '/s').encode()
open(out + '.ready', 'w').close()
while not os.path.isdir(d): pass
os.symlink(os.path.abspath(other), s)
open(out + '.racing', 'w').close()
while True: libc.renameat2(-100, d, -100, s, 2)
)";

CommandResult runIn(const fs::path& dir, const std::string& commandLine) {
    return runCommand("cd " + shellQuote(dir.string()) + " && " + commandLine);
}

std::string sh(const fs::path& dir, const std::string& commandLine) {
    const auto [status, output] = runIn(dir, commandLine);
    if (status != 0) {
        throw std::runtime_error("command failed: " + commandLine + "\n" + output);
    }
    return output;
}

std::string python(const fs::path& dir, const std::string& code) {
    writeFile(dir / "make.py", kPythonHelpers + code + "\n");
    const std::string output = sh(dir, "python3 make.py");
    fs::remove(dir / "make.py");
    return output;
}

std::string rejectedPassword(const fs::path& dir, const std::string& archive) {
    return sh(dir, "for i in $(seq 999); do bsdtar -xOf " + archive +
                       " --passphrase w$i 2>&1 >/dev/null | grep -q 'Incorrect passphrase' && "
                       "echo -n w$i && break; done");
}

}  // namespace tqtest
