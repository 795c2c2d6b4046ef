# SPDX-License-Identifier: MIT
"""system_calls_test.py BIN_DIR [PATTERN]: wcf while single system calls fail, do nothing or take long.

strace lets one call of a run fail: of those with the line, the command file, the log file, the file
of SAV, standard output or standard error. Whatever fails, wcf ends in time and by itself, a
log is whole or told to be not, and the exit code says what happened. Exits 1 when a case fails."""

import concurrent.futures
import os
import re
import subprocess
import sys
import tempfile

BIN = os.path.abspath(sys.argv[1])
PATTERN = "".join(sys.argv[2:])
SECONDS = 30  # nothing here takes more than 2 s

# Reads, writes, a late answer that has to be waited for, settings, waits for the ring line, a saved log.
SCRIPT = """//> begin
GR 37
SR 2B A6
CHB 9600
WIL 0 20
WIE 3
SLP 1
RE 2B A6
SAV saved
GR 38
//> end
"""
LATE_ANSWER = "delay=150@2+1"

# Exit codes.
WHOLE, FAILED, NOT_WRITTEN, LINE_LOST = 0, 1, 3, 5

TRANSIENT = ["error=EINTR", "error=EAGAIN", "retval=0", "delay_exit=700ms"]
HARD = ["error=EIO", "error=ENOSPC"]

# The how manyth request of a name: those of the opening, of the bit rate (first at the opening, then by
# CHB), and of the waits for the ring line.
OPENING = ["TCGETS2 1", "TCGETS2 2", "TCSETS2 1", "TCFLSH 1"]
SETTINGS = ["TCGETS2 3", "TCSETS2 2", "TCGETS2 4", "TIOCMBIC 1",
            "TCGETS2 5", "TCSETS2 3", "TCGETS2 6", "TIOCMBIC 2"]
WAITING = ["TIOCMGET 1", "TIOCMGET 2", "TIOCGICOUNT 1", "TIOCGICOUNT 2"]

# Target, system call, positions (the how manyth such call), faults, exit codes that are right.
MATRIX = [
    ("line", "openat", [1, 2], ["error=EINTR", "delay_exit=700ms"], [WHOLE]),
    ("line", "openat", [1, 2], ["error=EAGAIN", *HARD], [NOT_WRITTEN]),
    ("line", "read", [1, 2, 3, 4], TRANSIENT, [WHOLE]),
    ("line", "read", [1, 2, 3, 4], ["error=EIO"], [LINE_LOST]),
    ("line", "read", [1, 3], ["error=ENOSPC"], [FAILED]),
    ("line", "write", [1, 2, 3, 5], TRANSIENT, [WHOLE]),
    ("line", "write", [1, 2, 3, 5], ["error=EIO"], [LINE_LOST]),
    ("line", "write", [1, 3, 5], ["error=ENOSPC"], [FAILED]),
    ("line", "ppoll", [1], [*TRANSIENT, *HARD], [WHOLE]),
    ("line", "ioctl", OPENING, ["error=EAGAIN", *HARD], [NOT_WRITTEN]),
    ("line", "ioctl", SETTINGS + WAITING, ["error=EIO"], [LINE_LOST]),
    ("line", "ioctl", SETTINGS, ["error=EAGAIN", "error=ENOSPC"], [WHOLE, FAILED]),
    ("line", "ioctl", WAITING, ["error=EAGAIN", "error=ENOSPC"], [WHOLE, LINE_LOST]),
    ("line", "ioctl", OPENING + SETTINGS + WAITING, ["error=EINTR", "delay_exit=700ms"], [WHOLE]),
    ("script", "openat", [1], ["error=EINTR", "delay_exit=700ms"], [WHOLE]),
    ("script", "openat", [1], ["error=EAGAIN", *HARD], [NOT_WRITTEN]),
    ("script", "read", [1], ["error=EINTR", "delay_exit=700ms"], [WHOLE]),
    ("script", "read", [1, 2], ["error=EAGAIN", "error=EIO"], [NOT_WRITTEN]),
    ("log", "openat", [1], ["error=EINTR", "delay_exit=700ms"], [WHOLE]),
    ("log", "openat", [1], ["error=EAGAIN", *HARD], [NOT_WRITTEN]),
    ("log", "write", [1, 2, 5, 10], TRANSIENT, [WHOLE]),
    ("log", "write", [1, 2, 5, 10], HARD, [NOT_WRITTEN]),
    # SAV tries once, and says so.
    ("saved", "openat", [1], ["delay_exit=700ms"], [WHOLE]),
    ("saved", "openat", [1], ["error=EINTR", "error=EAGAIN", *HARD], [NOT_WRITTEN]),
    ("saved", "write", [1], ["retval=0", "delay_exit=700ms"], [WHOLE]),
    ("saved", "write", [1], ["error=EINTR", "error=EAGAIN", *HARD], [NOT_WRITTEN]),
    ("output", "write", [1, 2, 5, 10], TRANSIENT, [WHOLE]),
    ("output", "write", [1, 2, 5, 10], HARD, [NOT_WRITTEN]),
    ("messages", "write", [1], TRANSIENT, [WHOLE]),
    ("messages", "write", [1], HARD, [WHOLE]),
]


class Run:
    """One run of wcf, and what it left."""

    def __init__(self, target=None, inject=None):
        with tempfile.TemporaryDirectory() as folder:
            path = {name: f"{folder}/{name}" for name in ["line", "script", "log", "output",
                                                          "messages", "trace"]}
            path["saved"] = folder + "/SAVED.txt"
            with open(path["script"], "w", encoding="ascii") as script:
                script.write(SCRIPT)
            # strace knows a descriptor by its path, which a pipe needs a name for.
            pipes = {name: self.pipe(path[name]) for name in ["output", "messages"]}
            trace = []
            if target is not None:
                trace = ["strace", "-qq", "-o", path["trace"], "-P", path[target]]
                trace += ["-e", "inject=" + inject] if inject else []
            command = [BIN + "/vt63x-sim", "--fault", LATE_ANSWER, "--link", path["line"], "--",
                       "timeout", "-s", "KILL", str(SECONDS), *trace, BIN + "/wcf", "run", path["script"],
                       "--port", path["line"], "--log", path["log"]]
            process = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, check=False,
                                     stdout=pipes["output"][1], stderr=pipes["messages"][1])
            self.code = process.returncode
            texts = [self.drain(*pipes[name]) for name in pipes]
            texts += [self.content(path[name]) for name in ["log", "saved", "trace"]]
            self.output, self.messages, self.log, self.saved, self.trace = [
                text.replace("\r\n", "\n").replace(folder + "/", "") for text in texts]

    @staticmethod
    def pipe(path):
        os.mkfifo(path)
        reader = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
        return reader, os.open(path, os.O_WRONLY)

    @staticmethod
    def drain(reader, writer):
        """What is in the pipe; a run of another thread that is just starting may still hold it."""
        os.close(writer)
        try:
            text = os.read(reader, 1 << 16)
        except BlockingIOError:
            text = b""
        os.close(reader)
        return text.decode()

    @staticmethod
    def content(path):
        if not os.path.exists(path):
            return ""
        with open(path, encoding="utf-8", newline="") as file:
            return file.read()


def commands(log):
    """The lines of a log without what the chip answered and without the news that it is cut short."""
    return [re.sub(r"\s+//.*", "", line) for line in log.splitlines()
            if not line.startswith((" ", "User Break"))]


def begins_with(whole, part):
    return whole[:len(part)] == part


def faults_of(run, good, target, codes):
    """What is wrong with a run in which a call failed, compared with a run in which none did."""
    if "INJECTED" not in run.trace and "DELAYED" not in run.trace:
        yield "the call was never made"
    if run.code not in codes:
        yield f"exit code {run.code}"
    if run.code == WHOLE:
        if (run.output, run.log, run.saved) != (good.output, good.log, good.saved):
            yield "a log is not whole, and nothing tells"
        if "ok: " not in run.messages and target != "messages":
            yield "no verdict"
        return
    if "wcf: " not in run.messages:
        yield "nothing is told"
    if target == "log":
        if run.log and not begins_with(good.log, run.log):
            yield "the log file is not the beginning of the log"
        if run.output not in ["", good.output]:
            yield "standard output is not whole"
    elif target == "output":
        if not begins_with(good.output, run.output) or not begins_with(good.log, run.log):
            yield "a log is not the beginning of the log"
    elif run.output != run.log:
        yield "the two logs differ"
    elif run.code == FAILED and commands(run.log) != commands(good.log):
        yield "not every line was run"
    elif run.code == LINE_LOST and not begins_with(commands(good.log), commands(run.log)):
        yield "a line is lost or doubled"


def positions_of(requests, good):
    """Requests as positions among all requests of the good run."""
    names = re.findall(r"^ioctl\(\w+, (\w+)", good.trace, re.MULTILINE)
    for request in requests:
        name, count = request.split()
        yield [place for place, one in enumerate(names, 1) if one == name][int(count) - 1]


def main():
    good = Run("line")
    assert good.code == WHOLE and len(good.log.splitlines()) == 10 and good.log == good.output, (
        good.code, good.log, good.output, good.messages)
    cases = [(target, f"{call}:{fault}:when={position}", codes)
             for target, call, places, faults, codes in MATRIX
             for position in (positions_of(places, good) if call == "ioctl" else places)
             for fault in faults]
    cases = [case for case in cases if re.search(PATTERN, " ".join(case[:2]))]
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        runs = pool.map(lambda case: Run(*case[:2]), cases)
        for (target, inject, codes), run in zip(cases, runs):
            faults = list(faults_of(run, good, target, codes))
            if not faults:
                continue
            failed += 1
            print(f"FAILED {target} {inject}: {', '.join(faults)}; expected {codes}\n"
                  f"  {run.trace[-300:]}\n  {run.output[-300:]}\n  {run.messages}")
    print(f"{len(cases) - failed} of {len(cases)} faults of system calls stood")
    return 1 if failed or not cases else 0


sys.exit(main())
