# Runs the tools on a system that fails: for each of a few commands every single read, write, fsync, rename, close,
# mmap, open, start of a thread and allocation fails once, processes that write a document are killed at any moment, and
# what is allocated for large files is counted.
#
# A run must end in time and in one of these ways:
# - with the exit status, the output and the files of an undisturbed run,
# - with exit status 1 and a reason on the error stream,
# - with the report of a broken contract, which is how exhausted memory ends.
# And no file that was there may be anything but what it was or what it should become.
#
# Arguments: the executable, the folder of modules, the library that lets allocations fail. Needs strace; without the right
# to trace processes it is skipped, with status 77.

import concurrent.futures
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

morvane, modules, fail_malloc = (os.path.abspath(argument) for argument in sys.argv[1:4])

LIMIT = 10  # seconds; an undisturbed run takes some milliseconds
REPORT = b"ABNORMAL PROGRAM TERMINATION"
LOADED = "munmap"  # what the system's loader does last; calls before it are not the program's

# What fails, with which errors. Whatever is interrupted must go on as if nothing had been.
CALLS = {
    "read": ["EIO", "EINTR"],
    "write": ["ENOSPC", "EINTR"],
    "fsync": ["EIO", "EINTR"],
    "rename,renameat,renameat2,linkat": ["EACCES"],
    "close": ["EIO"],
    "mmap": ["ENOMEM"],
    "openat": ["EMFILE", "EACCES"],
    "clone,clone3": ["EAGAIN"],
    "fchown,fchmod,fsetxattr,flock,fcntl": ["EPERM"],
}

TEXT = "Gr\u00fc\u00dfe \u2013 e\u0301t\u00e9\r\n".encode() * 400

# Arguments, standard input, and the files that may change.
COMMANDS = [
    (["store", "set", "doc", "network.port=9090", "a.b=c"], b""),
    (["store", "delete", "doc", "name"], b""),
    (["store", "merge", "doc", "other"], b""),
    (["store", "encode", "doc", "out"], b""),
    (["store", "decode", "binary", "out"], b""),
    (["store", "show", "doc"], b""),
    (["text", "convert", "--from", "utf-8", "--to", "utf-16le", "text", "out"], b""),
    (["text", "convert", "--from", "utf-8", "--to", "utf-16le"], TEXT),
    (["text", "normalize", "--form", "nfc", "text", "out"], b""),
    (["text", "case", "--upper"], TEXT),
    (["text", "lines", "--newline", "lf", "text"], b""),
    (["module", "run", "needs_result", "0", "printed"], b""),
]


FILES = {
    "doc": b"# kept\nnetwork.port=80\nname=value\n",
    "other": b"more=1\nnetwork.host=here\n",
    "binary": b"\x01\x01\x01\x01a\x01\x01\x011\x00",
    "text": TEXT,
    "out": b"old",
}


class Run:
    # One run of the tool in a folder of its own, below `wrapper`.
    def __init__(self, scratch, words, given, wrapper=(), **environment):
        folder = pathlib.Path(tempfile.mkdtemp(dir=scratch))
        for name, content in FILES.items():
            (folder / name).write_bytes(content)
        environment = {**os.environ, "XZ_MORVANE_BIN_PATH": modules, "TZ": "UTC", **environment}
        pipes = dict.fromkeys(("stdin", "stdout", "stderr"), subprocess.PIPE)
        process = subprocess.Popen([*wrapper, morvane, *words], cwd=folder, env=environment, start_new_session=True, **pipes)
        try:
            self.out, self.err = process.communicate(given, LIMIT)
            self.status = process.returncode
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            self.out, self.err = process.communicate()
            self.status = "hangs"
        self.files = {path.name: path.read_bytes() for path in folder.iterdir()}
        shutil.rmtree(folder)

    # What is wrong with this run beside the right one, or None.
    def fault(self, right, must_succeed=False):
        for name, old in FILES.items():
            if self.files.get(name) not in (old, right.files.get(name)):
                return f"{name} is lost: {self.files.get(name)!r:.80}"
        if self.status == 0:
            return None if self.out == right.out and self.files == right.files else "success with a wrong result"
        if must_succeed:
            return f"an interrupted call is not repeated, status {self.status}"
        if self.status in (-signal.SIGABRT, 128 + signal.SIGABRT) and REPORT in self.err:
            return None
        left = set(self.files) - set(right.files) - set(FILES)
        if left:
            return f"leaves {left} behind"
        return None if self.status == 1 and self.err.strip() else f"ends with {self.status}"


def traced(calls, log, *inject):
    return ["strace", "-f", "-qq", "--seccomp-bpf", "-o", str(log), "-e", f"trace={calls},{LOADED}", *inject]


# Each traced call of a command fails in turn.
def failing_calls(scratch, words, given):
    for calls, errors in CALLS.items():
        log = scratch / f"log{os.getpid()}.{random.random()}"
        right = Run(scratch, words, given, traced(calls, log))
        names = re.findall(r"^\d+ +(\w+)\(", log.read_text(errors="replace"), re.M)
        first = names.index(LOADED)
        count = sum(name != LOADED for name in names)
        if right.status != 0:
            yield f"{words}: {right.status}, {right.err!r}"
        for error in errors:
            if error == "EINTR" and words[0] == "module":
                continue  # the system's loader does not go on
            for number in range(first + 1, count + 1):
                inject = f"inject={calls}:error={error}:when={number}"
                run = Run(scratch, words, given, traced(calls, log, "-e", inject))
                fault = run.fault(right, error == "EINTR")
                if fault:
                    yield f"{' '.join(words)}: {inject}: {fault}; {run.err[-200:]!r}"


COUNTED = {"LD_PRELOAD": fail_malloc, "FAIL_MALLOC_COUNT": "2"}


def allocations(run):
    return int(run.err.split()[-1])


def failing_allocations(scratch, words, given):
    right = Run(scratch, words, given, LD_PRELOAD=fail_malloc)
    count = allocations(Run(scratch, words, given, **COUNTED))
    # One alone, and here and there all from it on, so that the report too finds no memory.
    for number in [*range(1, count + 1), *range(-1, -count, -7)]:
        fault = Run(scratch, words, given, LD_PRELOAD=fail_malloc, FAIL_MALLOC=str(number)).fault(right)
        if fault:
            yield f"{' '.join(words)}: allocation {number} of {count}: {fault}"


# Counts what tools allocate for ten times the input, in an order that no writer would choose.
def growing(scratch):
    for words in ["store", "set", "-", "e7=new"], ["store", "show", "-"], ["text", "case", "--upper"]:
        counts = []
        for lines in 2000, 20000:
            order = (i // 2 if i % 2 else lines - i // 2 for i in range(lines))
            given = "".join(f"e{i:x}={i}\n" for i in order).encode()
            counts.append(allocations(Run(scratch, words, given, **COUNTED)))
        if counts[1] > 12 * counts[0]:
            yield f"{' '.join(words)} allocates {counts[0]} times for 2,000 lines and {counts[1]} for 20,000"


# Kills `store set` at any moment: the document is always one that was written as a whole.
def killed(scratch, rounds):
    document = scratch / "killed"
    chance = random.Random(1)
    lines = b"".join(b"entry%d=%d\n" % (i, i) for i in range(200))
    document.write_bytes(lines + b"value=0\n")
    began = time.monotonic()
    subprocess.run([morvane, "store", "set", document, "value=0"], check=True)
    usual = time.monotonic() - began
    for number in range(1, rounds + 1):
        process = subprocess.Popen([morvane, "store", "set", document, f"value={number}"])
        time.sleep(chance.random() * 1.5 * usual)
        process.kill()
        process.wait()
        found = re.fullmatch(re.escape(lines) + rb"value=(\d+)\n", document.read_bytes())
        if not found or int(found[1]) > number:
            yield f"killed in round {number}: {document.read_bytes()[-80:]!r}"
    if subprocess.run([morvane, "store", "set", document, "value=last"]).returncode != 0:
        yield "does not write after it was killed"


# A document that is open already is written over, also where the file system cannot reserve room.
def overwritten(scratch):
    path = scratch / "over"
    path.write_bytes(b"a=1\n" * 2000)
    wrapper = traced("fallocate", scratch / "log", "-e", "inject=fallocate:error=EOPNOTSUPP")
    subprocess.run([*wrapper, morvane, "store", "set", "/dev/stdin", "b=" + "x" * 9000], stdin=path.open())
    if not path.read_bytes().endswith(b"1\nb=" + b"x" * 9000 + b"\n"):
        yield "a document that is open is not written over"


with tempfile.TemporaryDirectory() as name:
    scratch = pathlib.Path(name)
    try:
        probe = Run(scratch, ["id"], b"", traced("read", scratch / "log", "-e", "inject=read:error=EINTR:when=1"))
    except FileNotFoundError:
        probe = None
    if probe is None or b"ptrace" in probe.err:
        print("strace is not there or may not trace")
        sys.exit(77)

    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        work = [pool.submit(lambda: [*killed(scratch, 1000), *overwritten(scratch), *growing(scratch)])]
        for words, given in COMMANDS:
            for kind in failing_calls, failing_allocations:
                work.append(pool.submit(lambda *arguments: list(arguments[0](*arguments[1:])), kind, scratch, words, given))
        faults = [fault for done in work for fault in done.result()]

for fault in faults:
    print(fault)
sys.exit(1 if faults else 0)
