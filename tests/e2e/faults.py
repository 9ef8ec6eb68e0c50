#!/usr/bin/env python3
# One call of the system fails, in one job; whichever it is, the run must end in time and by itself,
# say what it could not do to which file or address, have touched nothing of the user's and left
# nothing half made; and the next run, undisturbed, must end in the right tree.
#
#   faults.py [--most N] [--each] [--all] [--part I/OF] [--seed N] [--workers N] [JOB [KIND[:N:HOW[:ON]]]]
#
# Without arguments the rows of FOUND, and one call of each kind, in one job after the other. With a
# job, that many calls of each kind of it, drawn by the seed; --each takes every one in one of its
# ways, --all in every way, and --part the share of them whose number leaves I - 1 when divided by OF.
# Kinds are in tests/faults/faults.h, ways below.
# Comes from faults.sh, with the programs in BIN, the sample in FIXTURE, a mirror at PORT and the
# discs mounted.
import argparse, hashlib, os, random, re, shutil, stat, subprocess, sys, time
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from queue import Queue

BIN, FIXTURE, SCRATCH = (os.environ[name] for name in ("BIN", "FIXTURE", "SCRATCH"))
IS_ASAN = "asan" in subprocess.run(["nm", "-D", BIN + "/skyvane-web-updater"], capture_output=True, text=True).stdout
TIME = 120  # seconds for a run that takes a tenth of one
# Many times what a run is without progress on a busy machine.
GIVE_UP = "--give_up_after=" + os.environ.get("GIVE_UP", "20")
BUILD = "build"
LOGS = ("MemoryLog.txt", "stack_crawl.txt")

WAYS = {
    "open": ["EMFILE", "EACCES", "EIO", "ENOSPC"], "read": ["EIO", "short", "EINTR", "end"],
    "write": ["ENOSPC", "EIO", "short", "EINTR"], "close": ["EIO"], "rename": ["EACCES", "EIO"],
    "unlink": ["EACCES", "EIO"], "mkdir": ["ENOSPC", "EACCES"], "mmap": ["ENOMEM"], "truncate": ["EIO"],
    "chmod": ["EPERM"], "symlink": ["ENOSPC", "EPERM"], "link": ["EIO", "EPERM", "ENOSPC"], "lock": ["ENOLCK"],
    "stat": ["EIO", "EACCES"], "readdir": ["EIO"], "socket": ["EMFILE"], "connect": ["ECONNREFUSED"],
    "send": ["ECONNRESET", "short", "EINTR"], "recv": ["ECONNRESET", "short", "end", "EINTR"],
    "malloc": ["ENOMEM"], "thread": ["EAGAIN"],
}
# What once went wrong.
FOUND = [
    ("build", "readdir:2:EIO:/sounds/alert"), ("build", "open:1:EMFILE:/Airfoils/."), ("build", "stat:1:EIO:sheet 18.png"),
    ("build", "thread:3:EAGAIN"), ("build", "malloc:9000:ENOMEM"), ("build", "mmap:1:ENOMEM"),
    ("update", "unlink:1:EACCES:/wheel.obj"), ("update", "stat:1:EIO:KVLM.framework/Versions/Current"),
    ("disc", "rename:1:EACCES:/Instructions/Manual.txt"),
    ("disc", "read:1:EIO:/directory.txt"), ("disc", "read:1:end:/directory.txt"),
    ("disc", "malloc:1:ENOMEM:1280 bytes"),  # an entry of libarchive's
    ("demo", "malloc:4000:ENOMEM"), ("demo", "thread:4:EAGAIN"),
]


# --- the jobs ------------------------------------------------------------------------------------

class Job:
    """What is run, where, and what is there before. `folder` is what it makes or changes."""
    program, folder, users = "", "dest/Copy", {}

    def prepare(self, base):
        os.makedirs(base + "/dest")

    def heal(self, base, state):
        """The commands of the user who tries once more."""
        return [self.command(base)]


def through_mirror():
    return ["--pref:_proxy_host=127.0.0.1", "--pref:_proxy_port_int=" + os.environ["PORT"], GIVE_UP]


class Demo(Job):
    program = "demo-installer"

    def command(self, base):
        return ["--unattended", "--accept_eula", "--dest=" + base + "/dest", "--name=Copy", *through_mirror()]


class Update(Job):
    program = "web-updater"
    users = {"my flights.txt": b"mine", "Aircraft/General Aviation/Little Wren/notes.txt": b"mine",
             "Instructions/Pilot's Guide.txt": b"changed by me", "Airfoils/Clark Y.afl": b"changed by me"}

    def command(self, base):
        return ["--unattended", "--copy=" + base + "/dest/Copy", *through_mirror()]

    def prepare(self, base):
        shutil.copytree(SCRATCH + "/old", base + "/dest/Copy", symlinks=True)


class Disc(Job):
    program = "disc-installer"

    def command(self, base):
        return ["--unattended", "--accept_eula", "--dest=" + base + "/dest", "--name=Copy", GIVE_UP]

    def heal(self, base, state):
        if not state:
            return [self.command(base)]
        return [["--unattended", GIVE_UP, "--copy=" + base + "/dest/Copy", *job] for job in
                (["--do=repair"], ["--do=scenery", "--sectors=all"])]


class Build(Job):
    program, folder = "demo-installer", "dest"

    def command(self, base):
        return ["--build_master", "--type=0", "--name=R", "--release=91001", "--source=" + FIXTURE + "/sample/new",
                "--output=" + base + "/dest", "--previous=" + FIXTURE + "/manifest-old/directory.txt"]


JOBS = {"demo": Demo(), "update": Update(), "disc": Disc(), BUILD: Build()}


# --- a run ---------------------------------------------------------------------------------------

DIGESTS = {}  # of large files that have not been touched since


def digest(path, info):
    known = (info.st_dev, info.st_ino, info.st_size, info.st_mtime_ns, info.st_ctime_ns)
    if known in DIGESTS:
        return DIGESTS[known]
    with open(path, "rb") as file:
        found = hashlib.md5(file.read()).digest()
    if info.st_size > 1000000:
        DIGESTS[known] = found
    return found


def state_of(folder):
    """Path -> kind, mode and content of everything below a folder."""
    found, folder = {}, os.fsencode(folder)
    for where, folders, files in os.walk(folder):
        for name in folders + files:
            path = os.path.join(where, name)
            info = os.lstat(path)
            content = os.readlink(path) if stat.S_ISLNK(info.st_mode) else None
            if stat.S_ISREG(info.st_mode):
                content = digest(path, info)
            found[os.fsdecode(os.path.relpath(path, folder))] = (stat.filemode(info.st_mode), content)
    return found


def without_folders(state):
    return {path: was for path, was in state.items() if was[0][0] != "d"}


def read_file(path):
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return b""


class Place:
    """A worker's own folder, in which one job runs after the other."""

    def __init__(self, base):
        self.base, self.wanted = base, {}
        os.makedirs(base + "/bin/Resources")
        os.symlink(BIN + "/Resources/text", base + "/bin/Resources/text")
        os.makedirs(base + "/other/Skyvane 9")
        with open(base + "/other/theirs.txt", "w") as file:
            file.write("theirs")
        for job in JOBS.values():
            for runs_out_of_memory in (False, True):
                path = self.program(job, runs_out_of_memory)
                if not os.path.exists(path):
                    shutil.copy(BIN + "/" + os.path.basename(path), path)

    def program(self, job, runs_out_of_memory):
        name = "skyvane-" + job.program
        return self.base + "/bin/" + (re.sub("-[a-z]*$", "-memory", name) if runs_out_of_memory else name)

    def prepare(self, job):
        for part in ("dest", "tmp", "config", "state", "note", "counts", "bin/Skyvane Installer Log.txt"):
            path = self.base + "/" + part
            shutil.rmtree(path) if os.path.isdir(path) else os.path.exists(path) and os.remove(path)
        os.makedirs(self.base + "/config/skyvane")
        os.makedirs(self.base + "/tmp")
        for name, data in self.settings().items():
            with open(self.base + "/config/skyvane/" + name, "wb") as file:
                file.write(data)
        job.prepare(self.base)

    def settings(self):
        return {"skyvane_install.txt": (self.base + "/other/\n").encode()}

    def run(self, job, options, fault=None, counts=False):
        """Status, or None of one that had to be killed, and all that was said."""
        environment = dict(os.environ, XDG_CONFIG_HOME=self.base + "/config", TMPDIR=self.base + "/tmp",
                           HOME=self.base + "/home", XDG_STATE_HOME=self.base + "/state", FAULT_NOTE=self.base + "/note",
                           ASAN_OPTIONS="detect_leaks=0:exitcode=99:verify_asan_link_order=0:allocator_may_return_null=1")
        environment.pop("DISPLAY", None)
        runs_out = fault is not None and fault.startswith("malloc") or counts == "malloc"
        if fault or counts:
            environment["LD_PRELOAD"] = "" if runs_out else BIN + "/tests/libfaults.so"
        if fault:
            environment["FAULT"] = fault
        if counts:
            environment["FAULT_COUNTS"] = self.base + "/counts"
        with open(self.base + "/out", "wb") as out:
            run = subprocess.Popen([self.program(job, runs_out), *options], stdin=subprocess.DEVNULL, stdout=out,
                                   stderr=subprocess.STDOUT, env=environment, cwd=self.base)
            try:
                status = run.wait(TIME)
            except subprocess.TimeoutExpired:
                run.kill()
                run.wait()
                status = None
        logs = [read_file(self.base + "/" + folder + "/Skyvane Installer Log.txt") for folder in ("bin", "state/skyvane")]
        return status, b"\n".join([read_file(self.base + "/out"), *logs])

    def kept(self):
        """All that no job may touch."""
        return {path: was for path, was in state_of(self.base).items()
                if not re.match(r"(dest|tmp|config|state)(/|$)|(note|out|counts)$|"
                                r"bin/(Skyvane Installer Log.*|MemoryLog|stack_crawl)\.txt$", path)}

    def want(self, name):
        """What an undisturbed run of a job makes: the tree, the settings; what was there before."""
        if name in self.wanted:
            return self.wanted[name]
        job = JOBS[name]
        self.program(job, False), self.program(job, True)
        self.prepare(job)
        before, settings = state_of(self.base + "/" + job.folder), state_of(self.base + "/config")
        status, said = self.run(job, job.command(self.base))
        if status != 0:
            sys.exit("%s: an undisturbed run ends with %s:\n%s" % (name, status, said.decode("latin1")))
        record = {"before": before, "tree": state_of(self.base + "/" + job.folder),
                  "config": state_of(self.base + "/config"), "settings": settings, "kept": self.kept()}
        self.wanted[name] = record
        return record

    def counts(self, name):
        """How often each kind of call is made."""
        job, found = JOBS[name], {}
        for programs in ("all", "malloc"):
            self.prepare(job)
            self.run(job, job.command(self.base), counts=programs)
            lines = dict(line.split() for line in read_file(self.base + "/counts").decode().splitlines())
            found.update({kind: int(n) for kind, n in lines.items() if (kind == "malloc") == (programs == "malloc")})
        return found


# --- what must hold ------------------------------------------------------------------------------

def names_of(note, base):
    """Any of these in what a run says tells the user what it is about."""
    kind, _, _, what = note.split(" ", 3)
    if kind in ("malloc", "mmap", "thread") and not what.startswith("/"):
        return ["emory", "thread"]
    if kind in ("connect", "send", "recv", "socket"):
        return [what or "socket", "mirror.example", "serverlist9.txt"]
    what = re.sub(r"/(\.|#\d+ \(deleted\)|\.skyvane_part_[^/]*)$", "", what)
    return [os.path.basename(what).removesuffix(".new").removesuffix(".zip")]


def is_in(name, text):
    """Names are bytes; a log has them as they are, and a terminal gets the letters of Latin-1 in UTF-8."""
    name = name.encode("utf-8", "surrogateescape")
    return name in text or name.decode("latin1").encode() in text


def wrong_after(place, name, status, said, note):
    """What must hold right after the run that was disturbed."""
    base, job, want = place.base, JOBS[name], place.want(name)
    wrong = []
    if status is None:
        wrong.append("it did not end in %d s" % TIME)
    elif status < 0 or status > 4:
        wrong.append("it ended by %s" % ("signal %d" % -status if status < 0 else "status %d" % status))
    if re.search(rb"Sanitizer|runtime error:", said):
        wrong.append("a sanitizer complained")
    if status and not any(is_in(text, said) for text in names_of(note, base)):
        wrong.append("it says nothing of " + " or ".join(names_of(note, base)))
    state = state_of(base + "/" + job.folder)
    files, whole, old = without_folders(state), without_folders(want["tree"]), without_folders(want["before"])
    for path in job.users:
        if files.get(path) != old[path]:
            wrong.append("the user's %s was touched" % path)
    for path, (kind, content) in files.items():
        if name == BUILD:
            break
        if content not in [tree[path][1] for tree in (whole, old) if path in tree]:
            wrong.append("half a file, or one that nobody knows: " + path)
    for path in old:
        if path in whole and path not in files:
            wrong.append("lost: " + path)
    if name == BUILD and status and files and files != whole and not note.startswith(("unlink", "readdir")):
        wrong.append("a part of a master was left: %d files" % len(files))
    if status == 0:
        silent = [path for path in differences(files, whole) if not is_told_of(path, said)]
        if name == BUILD and len(silent) < len(differences(files, whole)):
            silent = [path for path in silent if path not in ("build_record.txt", "disk_0/R/directory.txt.zip")]
        if note.startswith("chmod"):  # that a file may be written to is no harm
            silent = [path for path in silent if files[path][1] != whole[path][1] or "x" in whole[path][0]]
        if silent:
            wrong.append("it calls it done, and is not: %s" % silent[:3])
    return wrong, state


def differences(one, other):
    return sorted(path for path in set(one) | set(other) if one.get(path) != other.get(path))


def is_told_of(path, said):
    """A file that is not as it should be in a run that went well all the same."""
    path = re.sub(r"^disk_\d/R/(.*)\.zip$", r"\1", path)
    return any(is_in(path, line) for line in said.split(b"\n") if line.startswith((b"WARNING: ", b"Kept, because")))


def settled(tree):
    """Of a tree, what the next run puts right: what a release says of a file is its content."""
    return {path: was[1] for path, was in tree.items()}


def wrong_healed(place, name, state, note):
    """What must hold after the next run."""
    base, job, want = place.base, JOBS[name], place.want(name)
    files = without_folders(state)
    if name == BUILD and state:
        shutil.rmtree(base + "/dest")  # as the builder asks its maker to
        os.makedirs(base + "/dest")
    elif name != "update" and not files:
        shutil.rmtree(base + "/" + job.folder, ignore_errors=True)  # folders alone are nobody's
        state = {}
    wrong, ended = [], []
    if name == BUILD or settled(files) != settled(without_folders(want["tree"])):
        for options in job.heal(base, state):
            status, said = place.run(job, options)
            ended.append(status)
            if status != 0:
                wrong.append("the next run ends with %s: %s" % (status, said.decode("latin1").strip()[:300]))
    now, whole = (without_folders(tree) for tree in (state_of(base + "/" + job.folder), want["tree"]))
    if note.startswith("chmod"):
        now, whole = settled(now), settled(whole)  # which tells nobody who may start it
    if now != whole:
        wrong.append("the next run left another tree: %s" % differences(now, whole)[:3])
    config = state_of(base + "/config")
    for log in LOGS:  # where they go when they cannot lie with the program
        config.pop("skyvane/" + log, None)
    for path in [path for path in config if path.endswith(".new") and not ended]:
        config.pop(path)  # settings that were being written; the next run that writes them begins them anew
    for path in set(config) | set(want["config"]):
        if config.get(path) not in (want["config"].get(path), want["settings"].get(path)):
            wrong.append("settings: %s is neither as it was nor as it should be" % path)
    if ended and os.listdir(base + "/tmp"):
        wrong.append("working files were left")
    if place.kept() != want["kept"]:
        wrong.append("outside: %s" % sorted(set(place.kept().items()) ^ set(want["kept"].items()), key=str)[:3])
    return wrong


def perform(place, name, fault):
    """Returns what came of it: "passed" over, "failed" as it may, "missed" or "WRONG"; and the text."""
    job = JOBS[name]
    place.want(name)
    place.prepare(job)
    status, said = place.run(job, job.command(place.base), fault)
    note = read_file(place.base + "/note").decode("utf-8", "surrogateescape").split("\n")[0]
    if not note:
        # Where threads share the work, and answers come in pieces, a run may make fewer calls.
        return ("WRONG", "%s %s: no such call" % (name, fault)) if (name, fault) in FOUND else ("missed", "")
    wrong, state = wrong_after(place, name, status, said, note)
    if not any("not end" in text for text in wrong):
        wrong += wrong_healed(place, name, state, note)
    if os.environ.get("SHOW"):
        print(status, note, said.decode("latin1"), sep="\n")
    if wrong:
        return "WRONG", "%s (%s)\n    %s\n    again: script/faults %s '%s'" % (
            name, note.replace(place.base, ""), "\n    ".join(wrong), name, fault)
    return "failed" if status else "passed", ""


# --- which ---------------------------------------------------------------------------------------

def draw(counts, kinds, asked):
    for kind in kinds:
        count, ways = counts.get(kind, 0), WAYS[kind]
        every = [(n, way) for n in range(1, count + 1) for way in ways]
        if asked.all or not asked.each and len(every) <= asked.most:
            chosen = every
        else:
            # One way each, in turn; first and last ones are where a program begins and ends.
            numbers = random.sample(range(1, count + 1), count if asked.each else min(asked.most, count))
            chosen = [(n, ways[(i + asked.seed) % len(ways)]) for i, n in enumerate(sorted(numbers))]
        for n, way in chosen:
            yield "%s:%d:%s" % (kind, n, way)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--most", type=int, default=40)
    parser.add_argument("--each", action="store_true")
    parser.add_argument("--all", action="store_true")
    parser.add_argument("--part", default="1/1")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--workers", type=int, default=2)
    parser.add_argument("job", nargs="?", choices=[*JOBS, "every"])
    parser.add_argument("kind", nargs="?")
    asked = parser.parse_args()
    random.seed(asked.seed)
    places = Queue()
    for i in range(asked.workers):
        places.put(Place("%s/faults-%d" % (SCRATCH, i)))

    rows, counts = [], {}
    for name in JOBS if asked.job in (None, "every") else [asked.job]:
        if asked.kind and ":" in asked.kind:
            rows.append((name, asked.kind))
            continue
        place = places.get()
        place.want(name)
        counts[name] = place.counts(name)
        places.put(place)
        print(name, "makes", ", ".join("%d %s" % (n, kind) for kind, n in counts[name].items()), flush=True)
        if asked.job:
            rows += [(name, fault) for fault in
                     draw(counts[name], asked.kind.split(",") if asked.kind else WAYS, asked)]
    if not asked.job:
        rows = list(FOUND)
        for i, kind in enumerate(WAYS):
            jobs = [name for name in JOBS if counts[name][kind] > 0]
            name = jobs[i % len(jobs)]
            rows += [(name, "%s:%d:%s" % (kind, random.randint(1, counts[name][kind]), random.choice(WAYS[kind])))]

    part, parts = map(int, asked.part.split("/"))
    rows = [row for row in rows if int(re.findall(r"\d+", row[1])[0]) % parts == part - 1]

    def one(row):
        place = places.get()
        try:
            outcome, text = perform(place, *row)
        finally:
            places.put(place)
        if text:
            print("FAILED:", text.encode("utf-8", "replace").decode(), flush=True)
        return row, outcome

    began, table = time.time(), Counter()
    with ThreadPoolExecutor(asked.workers) as pool:
        for (name, fault), outcome in pool.map(one, rows):
            table[name, fault.split(":")[0], outcome] += 1
    print("%-8s %-9s %7s %7s %7s %7s" % ("job", "call", "passed", "failed", "missed", "WRONG"))
    for name, kind in sorted({key[:2] for key in table}):
        print("%-8s %-9s" % (name, kind), *("%7d" % table[name, kind, outcome] for outcome in
                                             ("passed", "failed", "missed", "WRONG")))
    print("%d faults in %d s, seed %d" % (len(rows), time.time() - began, asked.seed))
    sys.exit(1 if any(key[2] == "WRONG" for key in table) else 0)


main()
