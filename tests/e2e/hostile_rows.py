# The rows of the table of attacks; hostile.py says what each of them must leave alone.
import itertools, os, signal, socket, stat, struct, subprocess, sys, threading, time
from hostile import *

BOMB = b"\0" * 4_000_000
LNK, REG = stat.S_IFLNK | 0o777, stat.S_IFREG | 0o644
EVIL = "All/Resources/evil.txt"


def sends(sent, data=b"x", path=EVIL, **more):
    """The one mirror sends this for a file."""
    return {"files": [a_file(path, data, sent=sent, **more)], "has": []}


def left_out(path, **more):
    """A line that no file below the destination can have is passed over; the others are installed."""
    return {"files": [a_file(path, **more)]}


# --- what a mirror's archives hold ---------------------------------------------------------------
NAME = "evil.txt"
for name, sent in {
    "an archive with two files": packed((NAME, b"x"), ("more.txt", b"y")),
    "an archive whose second file leads out": packed((NAME, b"x"), ("../../canary/new.txt", b"y")),
    "an archive whose second file is absolute": packed((NAME, b"x"), ("/tmp/skyvane-escaped", b"y")),
    "an archive with a folder beside the file": packed((NAME, b"x"), ("folder/", b"")),
    "an archive of a link and a file through it": packed((NAME, b"../../canary", LNK), (NAME + "/new.txt", b"y")),
    "an archive with the same file twice": packed((NAME, b"x"), (NAME, b"y")),
    "a fork entry of another name": packed((NAME, b"x"), ("__MACOSX/../../canary/._new", b"y")),
    "an empty archive": packed(),
    "an empty body": b"",
    "a file of other content": packed((NAME, b"not it")),
    "a link in place of a file": packed((NAME, b"../../canary/secret.txt", LNK)),
    "a fifo in place of a file": packed((NAME, b"", stat.S_IFIFO | 0o644)),
    "a device in place of a file": packed((NAME, b"", stat.S_IFBLK | 0o644)),
    "a folder in place of a file": packed((NAME + "/", b"", stat.S_IFDIR | 0o755)),
    "a bomb, 4 MB for 1 KB": packed((NAME, BOMB)),
    "half an archive": packed((NAME, b"x"))[:60],
    "a log-in page in place of an archive": b"<html>Please log in.</html>",
    "a size that lies in the central directory": packed((NAME, BOMB)).replace(struct.pack("<I", 4_000_000), struct.pack("<I", 1)),
    "sizes of 4 GB": packed((NAME, b"x")).replace(struct.pack("<II", 3, 1), struct.pack("<II", 0xFFFFFFFF, 0xFFFFFFFE)),
    "a directory offset beyond the end": packed((NAME, b"x"))[:-6] + b"\xff\xff\xff\x7f\0\0",
    "65,535 entries of which there are none": packed((NAME, b"x"))[:-14] + b"\xff\xff\xff\xff" + packed((NAME, b"x"))[-10:],
    "a 7z in place of a zip": b"7z\xbc\xaf\x27\x1c\0\4" + b"\xff" * 200,
}.items():
    row("web", name, FAILED, EXTRACT, **sends(sent))

# The name within the archive does not matter; the mode is masked.
for name, inside in {"leads out": "../../../canary/secret.txt", "is absolute": "/tmp/skyvane-escaped",
                     "has back slashes": "..\\..\\canary\\secret.txt", "is empty": ""}.items():
    row("web", "a name in the archive that " + name, OK if inside else FAILED, DONE if inside else EXTRACT,
        files=[a_file(EVIL, b"x", sent=packed((inside, b"x")))], has=["Resources/evil.txt"] if inside else [])
for mode in (0o6777, 0o7777, 0o777, 0):
    row("web", "mode %o" % mode, OK, DONE, files=[a_file(EVIL, mode=stat.S_IFREG | mode)], check=lambda scene, *_: [
        "mode %o" % m for m in [os.stat(scene.copy + "/Resources/evil.txt").st_mode & 0o7777] if m & ~0o755 or not m & 0o400])

# --- links ---------------------------------------------------------------------------------------
for target in ("../../canary", "/etc/passwd", "../../canary/secret.txt", "a/../../../canary", "..", "../..",
               "", "../sim/../../canary", "./././../../canary", "//etc"):
    row("web", "a link to '%.30s'" % target, OK if target == ".." else FAILED, "" if target == ".." else EXTRACT,
        files=[a_link("All/Resources/evil", target)], has=[])
row("web", "a file below a link that is shipped", OK, DONE, has=[], check=lambda scene, *_: [
    "a file went through the link" for leaf in os.listdir(scene.copy + "/Output") if leaf == "new.txt"],
    files=[a_link("All/Resources/to", "../Output"), a_file("All/Resources/to/new.txt")])
row("web", "a file below a link of another case", FAILED, EXTRACT, has=[],
    before=lambda scene: os.symlink("../canary", scene.copy + "/Linked"), mine=["Linked"],
    files=[a_link("All/linked", "Output"), a_file("All/Linked/new.txt")])
row("web", "two links, each harmless, that together lead out", FAILED, EXTRACT, has=[],
    files=[a_link("All/Resources/a", "b/.."), a_link("All/Resources/b", "../Output"), a_link("All/Resources/c", "a/../../canary")])
row("web", "a folder link of the user's is followed", OK, [DONE], mine=["Custom"],
    before=lambda scene: (os.mkdir(scene.base + "/tmp/drive"), os.symlink("../tmp/drive", scene.copy + "/Custom")),
    files=[a_file("All/Custom/new.txt")], has=[], during=lambda *_: None)
row("web", "a file that is deleted below a link", OK, DONE, files=[], mine=["Dir"],
    before=lambda scene: os.symlink("../canary", scene.copy + "/Dir"),
    extra=b"DIR All/Dir/\nFILE 0 0 90000 0 1 %s secret.txt\nFILE 0 0 91001 0 0 GONE secret.txt\n" % md5(b"old").encode())
row("web", "a file of the user's where a link is shipped", OK, "files kept, because you have modified them",
    files=[a_link("All/mine.txt", "Output")], has=["Resources/two.txt"])
row("web", "a folder of the user's where a file is shipped", FAILED, EXTRACT, files=[a_file("All/Aircraft", b"x")], has=[])
row("web", "a folder of the user's where a link is shipped", FAILED, EXTRACT, files=[a_link("All/Aircraft", "Output")], has=[])

# --- paths in the manifest -----------------------------------------------------------------------
for path in ("All/../../canary/secret.txt", "All/../evil.txt", "../../canary/new.txt", "All/Resources/../../../canary/new.txt",
             "All//etc/new.txt", "All/./evil.txt", "All/.../../../evil.txt", "/All/../../new.txt", "All/a//b.txt"):
    row("web", "a path " + path, OK, "", **left_out(path))
row("web", "a path of 3,000 letters", OK, "", **left_out("All/" + "a/" * 1500 + "b.txt"))
row("web", "a name of 300 letters", FAILED, "", has=[], **{"files": [a_file("All/Resources/" + "n" * 300)]})
row("web", "a path with control characters", OK, "", files=[a_file("All/Resources/\x1b]0;owned\x07\x1b[2J\x08.txt")])
row("web", "a path left out with control characters", OK, "", **left_out("All/../\x1b]0;owned\x07.txt"))
row("web", "a name that is no UTF-8", OK, DONE, files=[a_file("All/Resources/\udcff\udcfe%#?\".txt")])
row("web", "a name with a back slash", OK, DONE, files=[a_file("All/Resources/..\\..\\up.txt")])
row("web", "case twins", OK, DONE, files=[a_file("All/Resources/Twin.txt", b"1"), a_file("All/Resources/twin.TXT", b"2")])
row("web", "device names of another system", OK, DONE, files=[a_file("All/Resources/" + n) for n in ("con", "NUL.txt", "a:b", "aux ")])
row("web", "names of ours", OK, DONE, files=[a_file("All/Resources/.skyvane_partner")])
row("web", "a line without a signature, so without a name", FAILED, "found a path that has no file!", has=[], extra=b"DIR All/Resources/\nFILE 0 0 91001 0 1  evil.txt\n")
for sig in ("short", "z" * 32, "../../../canary/secret.txt", "0" * 33, "gone"):
    row("web", "a signature field '%s'" % sig, OK, DONE, files=[], extra=b"DIR All/Resources/\nFILE 0 0 91001 0 1 %s evil.txt\n" % sig.encode())
for number in ("-1", "99999999999999999999", "nan", "2147483647"):
    row("web", "numbers of " + number, OK, DONE, files=[],
        extra="DISK {0}\nDIR All/Resources/\nFILE {0} {0} {0} {0} {0} GONE evil.txt\n".format(number).encode())
row("web", "sizes that are negative", FAILED, EXTRACT, has=[], files=[a_file(EVIL, zip_kb=-5, raw_kb=-5, sent=packed((NAME, BOMB)))])
row("web", "a manifest of broken lines only", GIVEN_UP, LOGIN, base=[], has=[], extra=b"DIR\nFILE\nDIR \nFILE 0\nDISK\n")

# --- the manifest and the list themselves --------------------------------------------------------
for name, text in {"empty": b"", "without an end": b"I\n900 version\nINSTALLER", "of one byte": b"I", "of NULs": b"\0" * 9999}.items():
    row("web", "a manifest that is " + name, *((FAILED, "") if name == "empty" else (GIVEN_UP, LOGIN)), manifest=text, has=[])
row("web", "a manifest of a later format", FAILED, "you need to get a new installer!", manifest=b"I\n999 version\nINSTALLER\n", has=[])
for name, archive, say in (
    ("is a log-in page", answer(b"<html>Log in</html>"), LOGIN), ("is empty", answer(b""), ""),
    ("is no archive", answer(b"PK\x03\x04" + b"z" * 500), "unable to open"),
    ("holds another name", answer(packed(("evil.txt", b"I"))), ""), ("holds a link", answer(packed(("directory.txt", b"/etc/passwd", LNK))), ""),
    ("holds two files", answer(packed(("directory.txt", manifest(GOOD)), ("../evil.txt", b""))), ""),
    ("leads out", answer(packed(("../../canary/directory.txt", manifest(GOOD)))), ""),
):
    row("web", "a manifest's archive that " + name, GIVEN_UP if say in (LOGIN,) else FAILED, say, archive=archive, has=[])
for name, body, say in (
    ("is a log-in page", b"\xef\xbb\xbf \n<!DOCTYPE html>", LOGIN), ("is empty", b"", LOGIN),
    ("is of another kind", b"I\n820 version\nHELLO\n", LOGIN), ("is of a later format", b"I\n999 version\nSERVERS\n", "get a new installer"),
    ("has no mirrors", server_list(), ""), ("names a host with a line end", server_list("a\r\nX: y"), ""),
    ("names control characters", server_list("\x1b[2J\x07.example"), ""), ("names a host of 5,000 letters", server_list("h" * 5000), ""),
):
    row("web", "a list that " + name, FAILED if "later" in name else GIVEN_UP, say, list=answer(body), has=[])
for release in ("../../canary", "..", "/etc", "a/b", "\x1b[2J"):
    row("web", "a release '%s'" % ascii(release), OK, DONE, list=answer(server_list("m1.example", text="FINAL %s\n" % release)))
row("web", "a thousand mirrors", OK, DONE, list=answer(server_list(*["m%d.example" % i for i in range(1000)])))
row("web", "a path that would split the request", GIVEN_UP, "", list=answer(server_list().replace(b"ENDOFLIST", b"SERVER a.example\n/x HTTP/1.1\r\nHost: b\r\n\r\n/\n")), has=[])

# --- how it is sent ------------------------------------------------------------------------------
# What is too large or no archive ends with an alert; what is no answer at all is asked for again.
ENDS = {"a length of a terabyte": FAILED, "a length beyond 64 bits": FAILED, "a length that is too small": FAILED,
        "a chunk that never ends": FAILED, "part of it": OK}
good = packed((NAME, b"x"))
for name, sent in {
    "a length that is too small": answer(good, length=10), "a length of a terabyte": answer(good, length=10 ** 12),
    "a length beyond 64 bits": answer(good, length="9" * 40), "a negative length": answer(good, length=-1),
    "two lengths": answer(good, fields=b"Content-Length: 5\r\n"), "no length": b"HTTP/1.1 200 OK\r\n\r\n" + good,
    "a chunk that never ends": chunked(good, end=b"ffffffffffffffff\r\nxx"), "a chunk of nonsense": chunked(good, end=b"zz\r\n"),
    "chunks without an end": chunked(good, end=b""), "a chunk with no line end": b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + b"1" * 70000,
    "a head of 10 MB": answer(good, fields=b"X: " + b"y" * 10_000_000 + b"\r\n"), "no head": b"\xff" * 1000,
    "a line without an end": b"HTTP/1.1 " + b"2" * 200_000, "a status of none": answer(good, b"HTTP/1.1 abc"), "an end at once": b" ",
    "a redirection": answer(b"", b"HTTP/1.1 302 Found", fields=b"Location: file:///etc/passwd\r\n"),
    "part of it": answer(good, b"HTTP/1.1 206 Partial Content", fields=b"Content-Range: bytes 0-9/99\r\n"),
    "a head without an end": stalls(b"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n"), "a body that stands still": stalls(answer(good, length=len(good) + 9)),
}.items():
    lies = sends(sent)
    row("mirrors", name, ENDS.get(name, GIVEN_UP), "", raw=True, **dict(lies, patience=20 if ENDS.get(name) in (OK, FAILED) else 4))
row("mirrors", "chunks that are right, in odd spelling", OK, DONE, files=[a_file(EVIL, b"x", sent=chunked(good[:9], good[9:]).replace(b"Transfer-Encoding: c", b"tRANSFER-eNCODING:\t c"))])
row("mirrors", "nine mirrors that lie, one that does not", OK, DONE, patience=40, hosts=["m%d.example" % i for i in range(10)],
    files=[a_file("All/Resources/f%d.txt" % i) for i in range(9)],
    site={"m%d.example/updates/Rel/All/Resources/f%d.txt.zip" % (m, f): answer(packed(("f", BOMB if m % 2 else b"wrong")))
          for m in range(9) for f in range(9)})


def refuses(times, then):
    count = [0]

    def send(connection):
        count[0] += 1
        connection.sendall(answer(b"", b"HTTP/1.1 503 No") if count[0] <= times else then)
    return send


row("mirrors", "a mirror that refuses once beside one that lies", OK, DONE, hosts=["m1.example", "m2.example"], patience=20,
    files=[a_file(EVIL, b"x")], has=["Resources/evil.txt"],
    site={"m1.example/updates/Rel/" + EVIL + ".zip": refuses(1, answer(good)), "m2.example/updates/Rel/" + EVIL + ".zip": answer(b"no")})
row("mirrors", "a mirror that always refuses beside one that lies", FAILED, EXTRACT, hosts=["m1.example", "m2.example"], patience=30, has=[],
    **{"files": [a_file(EVIL, b"x")]},
    site={"m1.example/updates/Rel/" + EVIL + ".zip": answer(b"", b"HTTP/1.1 503 No"), "m2.example/updates/Rel/" + EVIL + ".zip": answer(b"no")})



def dies(times, sent):
    """A mirror whose process is killed in the middle of an answer, again and again, and that comes back."""
    count = itertools.count()

    def send(connection):
        if next(count) >= times:
            connection.sendall(answer(sent))
            return
        connection.sendall(answer(sent)[:-20])
        connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        connection.close()
    return send


row("mirrors", "a mirror that dies in the middle and comes back", OK, DONE, patience=30, files=[a_file(EVIL, b"x", sent=dies(2, good))], has=["Resources/evil.txt"])
row("mirrors", "a mirror that dies in the middle for good", GIVEN_UP, "", patience=4, has=[], **{"files": [a_file(EVIL, b"x", sent=dies(10 ** 9, good))]})
row("mirrors", "a mirror that dies in the middle of its manifest", OK, DONE, patience=30, archive=dies(2, packed(("directory.txt", manifest(GOOD)))))
row("mirrors", "a list that dies in the middle", OK, DONE, patience=30, list=dies(2, server_list("m1.example")))
NEXT = packed((NAME, b"of the next release"))
row("mirrors", "a mirror that has changed to the next release since it sent its manifest", FAILED, EXTRACT, has=[], **{"files": [a_file(EVIL, b"x", sent=NEXT)]})
row("mirrors", "the same beside one that has not", OK, DONE, hosts=["m1.example", "m2.example"], files=[a_file(EVIL, b"x")], has=["Resources/evil.txt"],
    site={"m1.example/updates/Rel/" + EVIL + ".zip": answer(NEXT)})
flip = itertools.count()
row("mirrors", "a list that is another at each request", OK, DONE, patience=20, has=[], list=lambda connection: connection.sendall(answer(
    [b"I\n820 version\nSERVERS\nENDOFLIST\n", b"<html>", server_list("m1.example")][next(flip) % 3])))

# --- memory and disk: one mirror, files of 1 KB --------------------------------------------------
MB = b"\0" * 1_000_000
TOO_LARGE = ("a bomb of 600 MB", "a body without an end", "one chunk without an end", "chunks without an end")
LARGE_BOMB = packed(("directory.txt", b"\0" * 600_000_000)) if "bulk" in sys.argv else b""
for name, sent in {
    "a bomb of 600 MB": answer(LARGE_BOMB),
    "a body without an end": for_ever(b"HTTP/1.1 200 OK\r\nContent-Length: 999999999999\r\n\r\n", MB),
    "a body of no length without an end": for_ever(b"HTTP/1.1 200 OK\r\n\r\n", MB),
    "one chunk without an end": for_ever(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nfffffffff\r\n", MB),
    "chunks without an end": for_ever(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n", b"f4240\r\n" + MB + b"\r\n"),
    "a head without an end": for_ever(b"HTTP/1.1 200 OK\r\n", b"X: " + MB + b"\r\n"),
    "a chunk's extension without an end": for_ever(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5;", MB),
    "trailers without an end": for_ever(chunked(good, end=b"0\r\n"), b"X: " + MB + b"\r\n"),
    "heads of the 100 kind without an end": for_ever(b"", b"HTTP/1.1 100 Continue\r\n\r\n" * 1000),
}.items():
    row("bulk", name, FAILED if name in TOO_LARGE else GIVEN_UP, "", raw=True, **sends(sent))
row("bulk", "a list without an end", GIVEN_UP, "", has=[], list=for_ever(b"HTTP/1.1 200 OK\r\nContent-Length: 9999999999\r\n\r\n", b"I\n820 version\nSERVERS\n" * 9999))
row("bulk", "a manifest's archive without an end", GIVEN_UP, "", has=[], archive=for_ever(b"HTTP/1.1 200 OK\r\nContent-Length: 9999999999\r\n\r\n", MB))
row("bulk", "a manifest that is a bomb of 600 MB", FAILED, "", has=[],
    archive=answer(LARGE_BOMB))

for spec in ROWS:
    if spec[0] == "bulk":
        spec[4]["in_front"] = lambda scene: WEIGHED + [scene.base + "/config/peak"]

# --- neighbours ----------------------------------------------------------------------------------
LOG = "bin/Skyvane Installer Log.txt"


def linked(path, target="canary/secret.txt"):
    def make(scene):
        os.makedirs(os.path.dirname(scene.base + "/" + path), exist_ok=True)
        os.symlink(scene.base + "/" + target, scene.base + "/" + path)
    return make


def fifo(path):
    return lambda scene: os.mkfifo(scene.base + "/" + path)


for name, before in {
    "the log is a link to the canary": linked(LOG), "the log is a fifo": fifo(LOG), "the log is a folder": lambda s: os.mkdir(s.base + "/" + LOG),
    "the log is a hard link": lambda s: os.link(s.canary + "/secret.txt", s.base + "/" + LOG),
    "the crawl is a link": linked("bin/stack_crawl.txt"), "the memory report is a link": linked("bin/MemoryLog.txt"), "the memory report is a fifo": fifo("bin/MemoryLog.txt"),
    "the preference file is a fifo": fifo("config/skyvane/Skyvane Installer.prf"), "the list of copies is a fifo": fifo("config/skyvane/skyvane_install.txt"),
    "the list of copies is a link": linked("config/skyvane/skyvane_install.txt"),
    "a forged mark beside the program": lambda s: s.put("bin/copied from disc", b"0" * 32 + b"\n"),
    "part names that are links": lambda s: [os.symlink(s.canary + "/secret.txt", s.copy + "/Resources/.skyvane_part_%d" % i) for i in range(9)],
}.items():
    row("near", name, OK, DONE, before=before)
row("near", "a file of the user's with the name of an archive", OK, DONE, mine=["Aircraft/one.acf.zip"],
    before=lambda s: s.put("sim/Aircraft/one.acf.zip", packed(("my photo.jpg", b"photo"))))
row("near", "a temporary folder that is none", OK, DONE, before=lambda s: s.environment.update(TMPDIR=s.canary + "/secret.txt"))

# --- an ordinary user, whom modes bind ----------------------------------------------------------

def as_user(before=lambda scene: None, mounts=""):
    """The scene becomes an ordinary user's, but for what `before` does; `mounts` is for the shell, in a mount namespace of the row's own."""
    def give(scene):
        os.chmod(scene.base, 0o755)
        subprocess.run(["chown", "-Rh", "65534:65534", scene.base], check=True)
        before(scene)
    return {"before": give, "in_front": lambda scene: [
        "unshare", "--mount", "--propagation", "private", "sh", "-c",
        mounts + ' exec setpriv --reuid=65534 --regid=65534 --clear-groups "$@"', scene.base]}


NO_ROOM = "No space left on device"
row("near", "a temporary folder that may not be written", OK, DONE, **as_user(lambda scene: os.chmod(scene.base + "/tmp", 0o555)))
row("near", "no temporary folder at all", FAILED, "I could not make a temporary folder to work in!", has=[], **as_user(
    lambda scene: os.chmod(scene.base + "/tmp", 0o555),
    'mount --bind /tmp /tmp && mount -o remount,bind,ro /tmp && mount --bind "$0" "$0" && mount -o remount,bind,rw "$0" || exit 9;'))
for name, room in {"full": 0, "full once the list is there": 1}.items():
    row("near", "a temporary folder that is " + name, FAILED, NO_ROOM, has=[], **as_user(mounts='mount -t tmpfs -o size=64k,mode=1777 tmpfs "$0/tmp" && '
        'head -c %dk /dev/zero >"$0/tmp/fill" || exit 9;' % (64 - 4 * room)))
KEPT, NEW = "Resources/kept/it.txt", b"new" * 3000
for name, status, text, owner, mode, links in (
    ("of the user's own", OK, DONE, 65534, 0o555, 1), ("that is another's", FAILED, "Permission denied", 0, 0o755, 1),
    ("of the user's own, with a second name elsewhere", FAILED, "Permission denied", 65534, 0o555, 2),
):
    def shut(scene, owner=owner, mode=mode, links=links):
        scene.put("sim/" + KEPT, b"old")
        os.chown(scene.copy + "/" + KEPT, 65534, 65534)
        if links == 2:
            os.link(scene.copy + "/" + KEPT, scene.canary + "/second.txt")
        os.chown(os.path.dirname(scene.copy + "/" + KEPT), owner, owner)
        os.chmod(os.path.dirname(scene.copy + "/" + KEPT), mode)

    row("near", "an earlier release's file in a read-only folder " + name, status, text, files=[a_file("All/" + KEPT, NEW, raw_kb=9, was=b"old")],
        has=[KEPT] * (status == OK), was={KEPT: b"old"} if status else {}, check=lambda scene, *_, mode=mode: [
            "the folder has other rights" for now in [os.stat(scene.copy + "/Resources/kept").st_mode & 0o777] if now != mode], **as_user(shut))
row("near", "a file that was changed by the user", OK, "files kept, because you have modified them", mine=["Aircraft/one.acf"],
    before=lambda s: s.put("sim/Aircraft/one.acf", b"changed by me"), has=["Resources/two.txt"])
row("near", "a fifo where a file is shipped", OK, "files kept, because you have modified them", has=["Resources/two.txt"],
    before=fifo("sim/Aircraft/one.acf"), mine=["Aircraft/one.acf"])


def together(count):
    """Programs that begin at once; the one that works is held until the others have ended."""
    others_ended = threading.Event()

    def hold(connection):
        others_ended.wait(60)
        connection.sendall(answer(packed((NAME, b"x"))))

    def watch(scene, runs):
        while sum(run.poll() is None for run in runs) > 1 and not others_ended.wait(0.05):
            pass
        others_ended.set()

    files = [a_file("All/Resources/part %d.txt" % i) for i in range(30)] + [a_file(EVIL, b"x", sent=hold)]
    return {"programs": count, "meanwhile": watch, "files": files}


row("near", "two programs at once", [OK, 4], "", **together(2))
row("near", "three programs at once", [OK, 4, 4], "", **together(3))


def swaps(scene, runs):
    """A neighbour puts a link in the place of a folder and takes it away again, all the time."""
    folder = scene.copy + "/Swapped"
    while any(run.poll() is None for run in runs):
        for make, undo in ((os.mkdir, os.rmdir), (lambda f: os.symlink("../canary", f), os.unlink)):
            try:
                make(folder)
                time.sleep(0.002)
                undo(folder)
            except OSError:
                subprocess.run(["rm", "-rf", folder])
    subprocess.run(["rm", "-rf", folder])


def kills(moment):
    def during(scene, runs):
        time.sleep(moment)
        runs[0].send_signal(signal.SIGTERM)
    return during


# --- odd places ---------------------------------------------------------------------------------

def moved(to):
    """The copy has another name, and its old one leads to it."""
    def before(scene):
        os.rename(scene.copy, scene.base + "/tmp/" + to)
        os.symlink(scene.base + "/tmp/" + to, scene.copy)
    return before


row("near", "a copy that is reached by a link", OK, DONE, before=moved("real"), during=lambda *_: None)
row("near", "two programs, one by a link to the copy", [OK, 4], "", before=moved("real"), during=lambda *_: None, **together(2),
    place=lambda scene, turn=itertools.cycle(["/sim", "/tmp/real"]): "--copy=" + scene.base + next(turn))
for name, to in {"control characters": "\x1b[2J\x07", "bytes that are no UTF-8": "\udcff\udcfe", "200 letters": "n" * 200}.items():
    row("near", "a copy with %s in its path" % name, OK, DONE, before=moved(to), during=lambda *_: None, place=lambda scene, to=to: "--copy=" + scene.base + "/tmp/" + to)
row("near", "a copy with a line end in its path", REFUSED, "a path in one line", has=[], place=lambda scene: "--copy=" + scene.copy + "/a\nb")
row("near", "a path of 5,000 letters to a copy", REFUSED, "", has=[], place=lambda scene: "--copy=" + scene.base + "/x" * 2500)
row("near", "a copy that is a file", REFUSED, "", has=[], place=lambda scene: "--copy=" + scene.copy + "/mine.txt")
row("near", "a copy that is the user's home", REFUSED, "", has=[], place=lambda scene: "--copy=" + scene.canary)
DEMO = {"program": "skyvane-demo-installer", "arguments": ["--accept_eula"]}
NESTED = ["Resources/new/Aircraft/one.acf", "Resources/new/Resources/two.txt"]
row("near", "a new copy inside another one", OK, "", has=[], may=NESTED, check=lambda scene, *_: [
    "misses " + path for path in NESTED if not os.path.exists(scene.copy + "/" + path)], **{
        **DEMO, "arguments": ["--accept_eula", "--name=new"], "place": lambda scene: "--dest=" + scene.copy + "/Resources"})
for name in ("../canary", "..", ".", "a/../../canary", "/etc", "new\nline", "\x1b[2J", "n" * 300, "a" * 5000):
    row("near", "a new copy called %.20s" % ascii(name), REFUSED, "--name wants ", has=[], program=DEMO["program"], arguments=["--accept_eula", "--name=" + name],
        place=lambda scene: "--dest=" + scene.base + "/tmp", during=lambda *_: None)
row("near", "a new copy in a folder that is a link to the canary", REFUSED, "already exists", has=[], before=lambda s: os.symlink(s.canary, s.base + "/tmp/new"),
    place=lambda scene: "--dest=" + scene.base + "/tmp", during=lambda *_: None, **{**DEMO, "arguments": ["--accept_eula", "--name=new"]})
row("near", "a folder that turns into a link and back", None, "", during=swaps, has=[], patience=20, mine=["Swapped"],
    files=[a_link("All/Swapped", "Output")] + [a_file("All/Swapped/part %d.txt" % i) for i in range(30)])
row("near", "interrupted while a body stands still", GIVEN_UP, "interrupted", during=kills(3), patience=20, has=[], **{"files": [a_file(EVIL, b"x", sent=stalls(answer(good, length=900)))]})
