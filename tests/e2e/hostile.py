#!/usr/bin/env python3
# A table of attacks. Each row is a real run of a real program against a server or a disc that lies, or
# beside a neighbour who does; it says what the run must say, and how it must end. Whatever the row, all
# that lies outside of the copy and all of the user's own files in it must be as they were, nothing
# half made may be left, and no sanitizer may have complained.
#
#   hostile.py PART    PART is "web", "mirrors", "bulk", "near" or "disc"; BIN is the folder of the programs
#   HOSTILE_ROWS       a regular expression: only the rows whose names it is found in
import hashlib, io, itertools, os, re, shutil, socket, stat, struct, subprocess, sys, tempfile, threading, time
import zipfile
from concurrent.futures import ThreadPoolExecutor
from urllib.parse import unquote_to_bytes

BIN, RELEASE, ROWS = os.environ["BIN"], "Rel", []
OK, FAILED, REFUSED, GIVEN_UP = 0, 1, 2, 3
EXTRACT = "The installer cannot extract a file."
LOGIN = "Perhaps the network that you use wants you to log in first."
DONE = "I have finished updating"
USERS = {"mine.txt": b"mine", "Aircraft/my plane.acf": b"my plane", "Output/my flight.sit": b"flight"}


def md5(data):
    return hashlib.md5(data).hexdigest()


def packed(*entries):
    """A zip of (name, content[, mode with its kind]) entries, the worst of names included."""
    out = io.BytesIO()
    with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED, strict_timestamps=False) as archive:
        for name, data, *mode in entries:
            info = zipfile.ZipInfo("x", (2010, 1, 1, 0, 0, 0))
            info.filename, info.compress_type, info.create_system = name, zipfile.ZIP_DEFLATED, 3
            info.external_attr = (mode[0] if mode else stat.S_IFREG | 0o644) << 16
            archive.writestr(info, data)
    return out.getvalue()


def a_file(path, data=None, sig=None, sent=None, zip_kb=1, raw_kb=1, mode=stat.S_IFREG | 0o644, was=None):
    """A line of the manifest and what the mirror has for it; `was` is what an earlier release had."""
    data = data if data is not None else b"content of " + path.encode("utf-8", "surrogateescape")
    sent = packed(("it", data, mode)) if sent is None else sent
    return (path, sig or md5(data), sent, zip_kb, raw_kb, data, was)


def a_link(path, target):
    return a_file(path, target.encode(), mode=stat.S_IFLNK | 0o777)


GOOD = [a_file("All/Aircraft/one.acf"), a_file("All/Resources/two.txt")]


def manifest(files, extra=b""):
    lines = [b"I\n900 version\nINSTALLER\n\n"]
    for path, sig, _, zip_kb, raw_kb, _, was in files:
        folder, _, name = path.encode("utf-8", "surrogateescape").rpartition(b"/")
        lines.append(b"DIR %s/\n" % folder)
        if was is not None:
            lines.append(b"FILE 0 0 90000 0 %d %s %s\n" % (raw_kb, md5(was).encode(), name))
        lines.append(b"FILE 0 0 91001 %d %d %s %s\n" % (zip_kb, raw_kb, sig.encode(), name))
    return b"".join(lines) + extra


def server_list(*hosts, text=""):
    return ("I\n820 version\nSERVERS\nFINAL %s\n%s" % (RELEASE, text) + "".join(
        "SERVER %s\n/updates/\nMirror\n" % host for host in hosts) + "ENDOFLIST\n").encode()


def row(part, name, status, text="", **options):
    # A row that is to come to an end of its own has time for it on a busy machine, too.
    options.setdefault("patience", 6 if status in (None, GIVEN_UP) else 20)
    ROWS.append((part, name, status, text, options))


# --- the server that lies ------------------------------------------------------------------------

def answer(body, head=b"HTTP/1.1 200 OK", length=None, fields=b""):
    length = len(body) if length is None else length
    return b"%s\r\nContent-Length: %s\r\n%s\r\n%s" % (head, str(length).encode(), fields, body)


def chunked(*chunks, end=b"0\r\n\r\n"):
    return (b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" +
            b"".join(b"%x\r\n%s\r\n" % (len(c), c) for c in chunks) + end)


def for_ever(head, piece, pause=0.0):
    """Sends until the client has had enough, or half a gigabyte."""
    def send(connection):
        connection.sendall(head)
        for _ in range(512 * 1024 * 1024 // len(piece)):
            connection.sendall(piece)
            time.sleep(pause)
    return send


def stalls(data):
    def send(connection):
        connection.sendall(data)
        time.sleep(60)
    return send


class Liar:
    """site: what is asked for ("host/path", or "/path" of every host) -> bytes of a whole answer, or
    a function that is given the connection."""

    numbers = itertools.count()

    def __init__(self, site):
        self.site, self.asked = site, []
        # An address of the row's own: whatever port is used again, no other row's program gets here.
        number = next(Liar.numbers)
        self.host = "127.%d.%d.%d" % (os.getpid() % 199 + 1, number // 250 + 1, number % 250 + 1)
        self.socket = socket.create_server((self.host, 0), backlog=64)
        self.port = self.socket.getsockname()[1]
        self.thread = threading.Thread(target=self.accept, daemon=True)
        self.thread.start()

    def accept(self):
        while True:
            try:
                connection = self.socket.accept()[0]
            except OSError:
                return
            threading.Thread(target=self.serve, args=(connection,), daemon=True).start()

    def close(self):
        """Wakes the accepting thread first: a socket that is waited on outlives its close."""
        self.socket.shutdown(socket.SHUT_RDWR)
        self.thread.join()
        self.socket.close()

    def serve(self, connection):
        try:
            with connection:
                head = b""
                while b"\r\n\r\n" not in head:
                    piece = connection.recv(65536)
                    if not piece:
                        return
                    head += piece
                target = os.fsdecode(unquote_to_bytes(head.split()[1]))
                host, _, path = target.removeprefix("http://").partition("/")
                self.asked.append(host + "/" + path)
                what = self.site.get(host + "/" + path) or self.site.get("/" + path)
                what = what or answer(b"", b"HTTP/1.1 404 Not Found")
                what(connection) if callable(what) else connection.sendall(what)
                connection.shutdown(socket.SHUT_WR)
                connection.recv(1)
        except OSError:
            pass


# --- a run ---------------------------------------------------------------------------------------

def state_of(folder, leave_out=()):
    """Path -> kind, mode and content of everything below a folder, but for some that lie in it."""
    found = {}
    for where, folders, files in os.walk(os.fsencode(folder)):
        if where == os.fsencode(folder):
            for names in (folders, files):
                names[:] = [name for name in names if os.fsdecode(name) not in leave_out]
        for name in folders + files:
            path = os.path.join(where, name)
            relative = os.fsdecode(os.path.relpath(path, os.fsencode(folder)))
            info = os.lstat(path)
            content = os.readlink(path) if stat.S_ISLNK(info.st_mode) else None
            if stat.S_ISREG(info.st_mode):
                with open(path, "rb") as file:
                    content = md5(file.read())
            found[relative] = (stat.filemode(info.st_mode), content)
    return found


class Run:
    """The scene of a row: a copy with the user's files in it, a canary, the programs."""

    def __init__(self, base):
        self.base = base
        self.copy, self.canary, self.bin = base + "/sim", base + "/canary", base + "/bin"
        for folder in ("Airfoils", "Instructions", "Output", "Resources", "Aircraft"):
            os.makedirs(self.copy + "/" + folder)
        for path, data in USERS.items():
            self.put("sim/" + path, data)
        self.put("canary/secret.txt", b"secret", 0o640)
        self.put("canary/sub/other.txt", b"other")
        os.makedirs(base + "/tmp")
        os.makedirs(base + "/config/skyvane")
        os.makedirs(self.bin + "/Resources")
        os.symlink(BIN + "/Resources/text", self.bin + "/Resources/text")
        self.environment = dict(os.environ, XDG_CONFIG_HOME=base + "/config", TMPDIR=base + "/tmp",
                                HOME=base + "/home", ASAN_OPTIONS="detect_leaks=0:exitcode=99",
                                UBSAN_OPTIONS="print_stacktrace=1", DBUS_SESSION_BUS_ADDRESS="unix:path=/none")
        self.environment.pop("DISPLAY", None)

    def outside(self):
        """All that no run may change."""
        return state_of(self.base, leave_out=("sim", "tmp", "config", "bin", "out", "home"))

    def put(self, path, data=b"theirs", mode=0o644):
        path = self.base + "/" + path
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(data)
        os.chmod(path, mode)

    def command(self, options, liar):
        name = options.get("program", "skyvane-web-updater")
        program = self.bin + "/" + name
        if not os.path.exists(program):
            try:
                os.link(BIN + "/" + name, program)
            except OSError:
                # Not by this process, whose children would hold it open for writing: it could not be run.
                subprocess.run(["cp", BIN + "/" + name, program], check=True)
        return [*options.get("in_front", lambda scene: [])(self), program, "--unattended",
                options.get("place", lambda scene: "--copy=" + scene.copy)(self),
                "--pref:_proxy_host=" + liar.host, "--pref:_proxy_port_int=%d" % liar.port,
                "--give_up_after=%d" % options["patience"], *options.get("arguments", [])]

    def start(self, options, liar, out):
        return subprocess.Popen(self.command(options, liar), stdin=subprocess.DEVNULL, stdout=out,
                                stderr=subprocess.STDOUT, env=self.environment, cwd=self.base)


def site_of(options):
    """What the mirrors have: the good release, what the row changes of it, and its lies."""
    files = options.get("files", [])
    site = {}
    hosts = options.get("hosts", ["m1.example"])
    site["/serverlist9.txt"] = options.get("list") or answer(server_list(*hosts))
    text = manifest(options.get("base", GOOD) + files, options.get("extra", b""))
    text = options.get("manifest", text)
    site["/updates/%s/directory.txt.zip" % RELEASE] = options.get("archive") or answer(packed(("directory.txt", text)))
    good = [line[2] for line in GOOD]
    for path, _, sent, *_ in GOOD + files:
        site["/updates/%s/%s.zip" % (RELEASE, path)] = sent if callable(sent) else (
            sent if sent.startswith(b"HTTP/") or options.get("raw") and sent not in good else answer(sent))
    site.update(options.get("site", {}))
    return site


# Stands before a program and writes down its peak memory (kB, never less than the some 15,000 of the
# interpreter that has started it), as the system tells it at its end.
WEIGHED = [sys.executable, "-c", "import resource, subprocess, sys\ncode = subprocess.call(sys.argv[2:])\n"
           "open(sys.argv[1], 'w').write(str(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss))\nsys.exit(code)"]


def watch_disk(seen, base, ended):
    """Notes the most (kB) that lies in the folders of a run."""
    while not ended.wait(0.02):
        used = subprocess.run(["du", "-sk", base + "/sim", base + "/tmp"], capture_output=True, text=True)
        seen["disk"] = max(seen["disk"], sum(int(line.split()[0]) for line in used.stdout.splitlines()))


def perform(spec):
    """Runs a row; returns what is wrong with it."""
    part, name, status, text, options = spec
    base = tempfile.mkdtemp(prefix="skyvane-hostile-")
    wrong, began = [], time.time()
    liar = Liar(site_of(options))
    try:
        scene = Run(base)
        if "before" in options:
            options["before"](scene)
        users = {path: state_of(scene.copy).get(path) for path in list(USERS) + options.get("mine", [])}
        outside = scene.outside()
        with open(base + "/out", "wb") as out:
            runs = [scene.start(options, liar, out) for _ in range(options.get("programs", 1))]
            seen, ended = {"memory": 0, "disk": 0}, threading.Event()
            if part == "bulk":
                threading.Thread(target=watch_disk, args=(seen, base, ended), daemon=True).start()
            for while_it_runs in ("meanwhile", "during"):
                options.get(while_it_runs, lambda *_: None)(scene, runs)
            for run in runs:
                try:
                    run.wait(options["patience"] + 50)
                except subprocess.TimeoutExpired:
                    run.kill()
                    run.wait()
                    wrong.append("did not end")
            ended.set()
        with open(base + "/out", "rb") as file:
            said = file.read()
        log = b""
        for where, _, names in os.walk(base):
            for leaf in names:
                if leaf.endswith("Log.txt") and os.path.isfile(where + "/" + leaf):
                    with open(where + "/" + leaf, "rb") as file:
                        log += file.read()
        codes = sorted(run.returncode for run in runs)
        if codes[0] < 0:
            wrong.append("ended by signal %d" % -codes[0])
        if status is not None and codes != sorted(status if isinstance(status, list) else [status]):
            wrong.append("status %s, wanted %s" % (codes, status))
        for piece in [text] if isinstance(text, str) else text:
            if piece.encode() not in said + log:
                wrong.append("does not say: " + piece)
        if re.search(rb"Sanitizer|runtime error:|Segmentation", said):
            wrong.append("a sanitizer complained")
        if re.search(rb"[\x00-\x08\x0b-\x1a\x1c-\x1f\x7f]|\x1b(?!\[)", said + log):
            wrong.append("a control character was printed or logged")
        for path, was in users.items():
            if state_of(scene.copy).get(path) != was:
                wrong.append("the user's " + path + " was touched")
        if scene.outside() != outside:
            wrong.append("outside: %s" % sorted(set(scene.outside().items()) ^ set(outside.items()))[:3])
        made = state_of(scene.copy)
        for path, (kind, content) in made.items():
            if ".skyvane_part_" in path:
                wrong.append("a part was left: " + path)
            if kind[0] == "l" and path not in options.get("mine", []) and not (os.path.realpath(
                    scene.copy + "/" + path) + "/").startswith(os.path.realpath(scene.copy) + "/"):
                wrong.append("a link leads out: " + path)
            if path in options.get("mine", []):
                continue
            if kind[0] in "pscb" or "s" in kind[1:].lower() or "t" in kind[9:].lower():
                wrong.append("a file of an odd kind or mode: %s %s" % (path, kind))
        whole = {"/".join(p.split("/")[1:]): md5(d) for p, _, _, _, _, d, _ in GOOD + options.get("files", [])}
        for path in list(options.get("has", ["Aircraft/one.acf", "Resources/two.txt"] if status == OK else [])):
            if made.get(path, ("", ""))[1] != whole[path]:
                wrong.append("is not in its place: " + path)
        allowed = set(options.get("may", [])) | set(users) | set(whole)
        for path, (kind, content) in made.items():
            if kind[0] == "-" and path not in allowed:
                wrong.append("a file that nobody ships: " + path)
            if path in options.get("was", {}):  # what it was, and not a part of what it is to be
                whole[path] = md5(options["was"][path])
            if kind[0] == "-" and path in whole and path not in users and content != whole[path]:
                wrong.append("a wrong file has the name " + path)
        left = os.listdir(base + "/tmp")
        if left and "during" not in options:
            wrong.append("working files were left: %s" % left)
        if part == "bulk":
            with open(base + "/config/peak") as file:
                seen["memory"] = int(file.read())
            for what, unit in (("memory", 100000), ("disk", 100000)):
                if seen[what] > unit and "asan" not in BIN:
                    wrong.append("%s: %d kB" % (what, seen[what]))
            name += "  (status %s, memory %d kB, disk %d kB)" % (codes, seen["memory"], seen["disk"])
        if "check" in options:
            wrong += options["check"](scene, liar, said + log) or []
        if wrong and os.environ.get("HOSTILE_TALK"):
            sys.stderr.write("--- %s\n%s\n" % (name, said.decode("latin-1")[-1500:]))
    finally:
        liar.close()
        subprocess.run(["chmod", "-R", "u+rwx", base], stderr=subprocess.DEVNULL)
        shutil.rmtree(base, ignore_errors=True)
    print("%s %-9s %5.1f s  %s%s" % ("FAILED" if wrong else "ok    ", part, time.time() - began, name,
                                     "".join("\n         " + w for w in wrong)), flush=True)
    return wrong


def main():
    __import__("hostile_rows_disc" if "disc" in sys.argv else "hostile_rows")  # fills ROWS
    want = re.compile(os.environ.get("HOSTILE_ROWS", ""))
    rows = [spec for spec in ROWS if spec[0] in sys.argv[1:] and want.search(spec[1])]
    with ThreadPoolExecutor(int(os.environ.get("HOSTILE_AT_ONCE", 4))) as pool:
        failed = sum(1 for wrong in pool.map(perform, rows) if wrong)
    print("%d rows, %d failed" % (len(rows), failed))
    sys.exit(1 if failed or not rows else 0)


if __name__ == "__main__":
    sys.modules["hostile"] = sys.modules["__main__"]
    main()
