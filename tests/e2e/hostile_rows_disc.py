# The rows of the table of attacks that come with a disc: an image or a folder that is mounted for the
# row's program alone. hostile.py says what each of them must leave alone.
import os, stat, struct, subprocess, tempfile
from hostile import *

LNK, BOMB, NAME = stat.S_IFLNK | 0o777, b"\0" * 400_000, "evil.txt"
EVIL = "All/Resources/evil.txt"
TILE = "All/Global Scenery/-global terrain-/Earth nav data/+30-120/+33-118.dsf"
LABEL, LIST = "dvd_version.txt", RELEASE + "/directory.txt.zip"
NO_DISC_OF_OURS = "This DVD does not appear to be a Skyvane 9 DVD."
NOT_COPIED, NOT_UNZIPPED = "I was unable to copy the file ", "I was unable to unzip the file "
# Whatever is left of the program ends with it: a disc behind FUSE has a process of its own.
OWN_MOUNTS = ["unshare", "--mount", "--propagation", "private", "--pid", "--fork", "--kill-child", "sh", "-c", """
  if [ -e "$0/disc.iso" ]; then
    fuseiso -n "$0/disc.iso" "$0/mount" 2>/dev/null || mount -o loop,ro "$0/disc.iso" "$0/mount"
  else
    mount -t tmpfs tmpfs /media && mkdir /media/disc && mount --bind "$0/disc" /media/disc &&
      mount -o remount,bind,ro /media/disc
  fi && exec "$@" """]


def label(text=None, release=RELEASE):
    return ("I\n900 version\nDVD\n\nVERSION %s\n" % release).encode() if text is None else text


def points(target):
    """In place of a file of the disc: a link."""
    return lambda path: os.symlink(target, path)


def make_disc(scene, image, content):
    for path, what in content.items():
        if what is None:
            continue
        path = os.fsencode(scene.base + "/disc/" + path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if callable(what):
            what(path)
        else:
            with open(path, "wb") as file:
                file.write(what)
    if image:
        os.mkdir(scene.base + "/mount")
        subprocess.run(["xorriso", "-as", "mkisofs", "-R", "-J", "-o", scene.base + "/disc.iso", scene.base + "/disc"],
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def disc(name, status, text="", files=(), on_disc=(), extra=b"", image=True, do="repair", **more):
    """on_disc: path on the disc -> its bytes, None, or a function that makes it."""
    lines = GOOD + list(files)
    content = {LABEL: label(), LIST: packed(("directory.txt", manifest(lines, extra)))}
    for path, _, sent, *_ in lines:
        if ".." not in path.split("/") and len(path) < 500:
            content[RELEASE + "/" + path + (".7z" if "Global Scenery" in path else ".zip")] = sent
    content.update(on_disc)
    row("disc", name, status, text, files=list(files), program="skyvane-disc-installer", arguments=["--do=" + do, *more.pop("arguments", [])],
        in_front=lambda scene: OWN_MOUNTS + [scene.base], before=lambda scene: make_disc(scene, image, content), **more)


def bad_file(name, sent, text=NOT_UNZIPPED, path=EVIL, **more):
    disc(name, FAILED, text, files=[a_file(path, b"x")], on_disc={RELEASE + "/" + path + ".zip": sent}, **more)


disc("a disc that is as it should be", OK, "I have finished repairing")
disc("the same as a folder", OK, "I have finished repairing", image=False)

# --- the label and the folder of the release -----------------------------------------------------
for name, what in {
    "leads out": label(release="../canary"), "leads elsewhere": label(release="/etc"), "names no release": label(b"I\n900 version\nDVD\n\n"),
    "is empty": b"", "is of NULs": b"\0" * 9999, "has no end": label(b"I\n900 version\nDVD\n\nVERSION"), "is of a later format": label(b"I\n999 version\nDVD\n\nVERSION Rel\n"),
    "has control characters": label(release="\x1b]0;owned\x07\x1b[2J"), "names a release of 5,000 letters": label(release="r" * 5000),
    "is a line of 8 MB": label(release="r" * 8_000_000), "is a link to a file without an end": points("/dev/zero"), "is a link to a secret": points("../canary/secret.txt"),
}.items():
    disc("a label that " + name, REFUSED, "", on_disc={LABEL: what}, has=[])
for name, what in {"a fifo": os.mkfifo, "a folder": os.mkdir, "a link to itself": points(LABEL)}.items():
    disc("a label that is " + name, None, "", on_disc={LABEL: what}, image=False, has=[])
disc("a release's folder that is a link to the canary", FAILED, "DVD scan: The installer cannot extract a file.", image=False, has=[],
     on_disc={RELEASE: points("../canary"), LIST: None, **{RELEASE + "/" + path + ".zip": None for path, *_ in GOOD}})

# --- the manifest --------------------------------------------------------------------------------
for name, what in {
    "is no archive": b"<html>Please log in.</html>", "is empty": b"", "is missing": None, "holds another name": packed(("evil.txt", b"I")),
    "holds a link": packed(("directory.txt", b"/etc/passwd", LNK)), "holds two files": packed(("directory.txt", b"I"), ("../../canary/new.txt", b"")),
    "leads out": packed(("../../canary/directory.txt", manifest(GOOD))), "is a link to a file without an end": points("/dev/zero"),
    "is a fifo": os.mkfifo, "is a folder": os.mkdir, "holds nothing": packed(("directory.txt", b"")),
}.items():
    disc("a manifest's archive that " + name, FAILED, "DVD scan: The installer cannot extract a file.", on_disc={LIST: what}, has=[],
         image=what not in (os.mkfifo, os.mkdir))
for name, text in {"is a page": b"<html>", "is cut": b"I\n900 version\nINSTALLER", "is of NULs": b"\0" * 9999, "has no files of ours": b"I\n900 version\nINSTALLER\nDIR\nFILE\nDISK\n"}.items():
    disc("a manifest that " + name, REFUSED, NO_DISC_OF_OURS, on_disc={LIST: packed(("directory.txt", text))}, has=[])
disc("a manifest of a later format", None, "you need to get a new installer!", on_disc={LIST: packed(("directory.txt", b"I\n999 version\nINSTALLER\n"))}, has=[])
for path in ("All/../../canary/secret.txt", "All/../evil.txt", "/All/../../new.txt", "All/a//b.txt", "All/" + "a/" * 1500 + "b.txt", "All/../\x1b]0;owned\x07.txt"):
    disc("a path %.40s" % ascii(path), OK, files=[a_file(path)], image=False)
for sig in ("short", "z" * 32, "../../../canary/secret.txt", "gone"):
    disc("a signature field '%s'" % sig, OK, extra=b"DIR All/Resources/\nFILE 0 0 91001 0 1 %s evil.txt\n" % sig.encode())
# A disc beyond the last is asked for, and never comes; a number below the first is the first.
for number, is_here in {"999999999": False, "99999999999999999999": False, "-5": True, "nan": True, "-2147483648": True}.items():
    line = a_file(EVIL, b"x")
    disc("disc number " + number, OK if is_here else GIVEN_UP, "" if is_here else "Please insert DVD number 100", patience=6, files=[line],
         on_disc={LIST: packed(("directory.txt", manifest(GOOD, b"DISK %s\n" % number.encode() + manifest([line])[len(manifest([])):]))),
                  **({} if is_here else {RELEASE + "/" + EVIL + ".zip": None})},
         has=["Aircraft/one.acf", "Resources/two.txt"] + ["Resources/evil.txt"] * is_here)

# --- archives ------------------------------------------------------------------------------------
for name, sent in {
    "with two files": packed((NAME, b"x"), ("../../canary/new.txt", b"y")), "of other content": packed((NAME, b"not it")), "that is half": packed((NAME, b"x"))[:60],
    "that is a bomb": packed((NAME, BOMB)), "that is a web page": b"<html>", "that is empty": packed(), "of no bytes": b"",
    "of a link in place of a file": packed((NAME, b"../../canary/secret.txt", LNK)), "of a device": packed((NAME, b"", stat.S_IFBLK | 0o644)),
    "that is a link to a secret": points("../../../../canary/secret.txt"),
}.items():
    bad_file("an archive " + name, sent)
for name, sent in {"that is a link to a file without an end": points("/dev/zero"), "that is a link to itself": points(NAME + ".zip"), "that is a fifo": os.mkfifo,
                   "that is a folder": os.mkdir, "that is missing": None, "of 8 MB for 1 KB": b"z" * 8_000_000}.items():
    bad_file("an archive " + name, sent, NOT_COPIED, image=sent is None or isinstance(sent, bytes))
for target in ("../../canary", "/etc/passwd", "a/../../../canary"):
    disc("a link to " + target, FAILED, NOT_UNZIPPED, files=[a_link("All/Resources/evil", target)])
disc("modes of all kinds", OK, files=[a_file("All/Resources/%o.txt" % mode, mode=stat.S_IFREG | mode) for mode in (0o6777, 0o7777, 0o777, 0)])
disc("a name in the archive that leads out", OK, files=[a_file(EVIL, b"x", sent=packed(("../../../canary/secret.txt", b"x")))], has=["Resources/evil.txt"])


# --- 7z archives, made by 7-Zip ------------------------------------------------------------------

def made_by_7zip(*entries, rename=(), options=()):
    """entries: (name, content or the target of a link). rename: (from, to) pairs, as `7z rn` takes them."""
    with tempfile.TemporaryDirectory() as folder:
        for name, data, *link in entries:
            os.makedirs(os.path.dirname(folder + "/in/" + name), exist_ok=True)
            if link:
                os.symlink(data, folder + "/in/" + name)
            else:
                with open(folder + "/in/" + name, "wb") as file:
                    file.write(data)
        for command in (["a", *options, *([] if not entries else [e[0] for e in entries])], ["rn", *rename]):
            if command[1:]:
                subprocess.run(["7z", command[0], folder + "/x.7z", *command[1:]], cwd=folder + "/in", check=True, stdout=subprocess.DEVNULL)
        with open(folder + "/x.7z", "rb") as file:
            return file.read()


def flipped(data, at):
    return data[:at] + bytes([data[at] ^ 0x55]) + data[at + 1:]


def tile(name, status, sent, text="", has=(), **more):
    disc("a 7z " + name, status, text, files=[a_file(TILE, b"tile", sent=sent)], do="scenery", arguments=["--sectors=all"],
         has=has, **more)


TILE_HERE = TILE.removeprefix("All/")
ONE = made_by_7zip(("t.dsf", b"tile"))
tile("that is as it should be", OK, ONE, has=[TILE_HERE])
# Its name within the archive does not matter.
for to in ("../../../canary/secret.txt", "/tmp/skyvane-escaped", "..", "a/../../../canary/new.txt", "con", "\x1b[2J", "n" * 300):
    tile("whose file is called %.30s" % ascii(to), OK, made_by_7zip(("t.dsf", b"tile"), rename=("t.dsf", to)), has=[TILE_HERE])
for name, sent in {
    "with two files": made_by_7zip(("t.dsf", b"tile"), ("u.dsf", b"more")),
    "whose second file leads out": made_by_7zip(("t.dsf", b"tile"), ("u.dsf", b"more"), rename=("u.dsf", "../../../canary/new.txt")),
    "with a link beside the file": made_by_7zip(("t.dsf", b"tile"), ("u", "../../../canary", LNK), options=["-snl"]),
    "of a link alone": made_by_7zip(("t.dsf", "../../../canary/secret.txt", LNK), options=["-snl"]),
    "of a link and a file through it": made_by_7zip(("a", "../../../canary", LNK), ("b", b"tile"), options=["-snl"], rename=("b", "a/new.txt")),
    "with a folder beside the file": made_by_7zip(("f/t.dsf", b"tile"), ("u", b""), rename=("u", "f/u/")),
    "of other content": made_by_7zip(("t.dsf", b"not it")),
    "that is encrypted": made_by_7zip(("t.dsf", b"tile"), options=["-psecret"]),
    "whose names are encrypted": made_by_7zip(("t.dsf", b"tile"), options=["-psecret", "-mhe=on"]),
    "that is a bomb": made_by_7zip(("t.dsf", b"\0" * 4_000_000)),
    "of zeros, packed by another method": made_by_7zip(("t.dsf", b"\0" * 400_000), options=["-m0=BZip2"]),
    "that is a zip": packed(("t.dsf", b"not it")), "of nothing": made_by_7zip(("t.dsf", b"")), "of its first bytes": ONE[:32],
    "with a head far behind its end": ONE[:12] + struct.pack("<Q", 1 << 62) + ONE[20:],
    "with a head of a terabyte": ONE[:20] + struct.pack("<Q", 1 << 40) + ONE[28:], "whose head is the wrong one": flipped(ONE, len(ONE) - 20),
    "whose content is flipped": flipped(made_by_7zip(("t.dsf", b"tile"), options=["-mx0"]), 33), "of no bytes": b"", "of a web page": b"<html>",
}.items():
    tile(name, FAILED, sent, NOT_UNZIPPED)
# A mirror may send one in place of a zip; but no manifest under another name.
for to in ("../../../canary/secret.txt", "/tmp/skyvane-escaped"):
    row("disc", "a mirror's 7z whose file is called " + to, OK, DONE, files=[a_file(EVIL, b"x", sent=made_by_7zip(("t", b"x"), rename=("t", to)))],
        has=["Resources/evil.txt"])
    row("disc", "a mirror's manifest in a 7z that calls it " + to, FAILED, EXTRACT, has=[],
        archive=answer(made_by_7zip(("directory.txt", manifest(GOOD)), rename=("directory.txt", to))))
row("disc", "a mirror's 7z with a link that leads out beside the file", FAILED, EXTRACT, has=[],
    files=[a_file(EVIL, b"x", sent=made_by_7zip(("a", "../../../canary", LNK), ("b", b"x"), options=["-snl"], rename=("b", "a/new.txt")))])
