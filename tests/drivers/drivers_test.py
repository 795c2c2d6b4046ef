# SPDX-License-Identifier: MIT
"""drivers_test.py KERNEL INITRD RING_LINE BIN_DIR [PATTERN]: wcf on the serial drivers of a Linux kernel.

Starts the kernel in an emulated machine with a 16550 UART and an FTDI adapter, a simulated chip at
the far end of each, and runs the checks of the table at the end; exits 1 when one has failed.
scripts/test-drivers makes what it needs."""

import contextlib
import itertools
import json
import os
import re
import shlex
import socket
import subprocess
import sys
import tempfile
import time

KERNEL, INITRD, RING_LINE, BIN = sys.argv[1:5]
PATTERN = "".join(sys.argv[5:])
UART, ADAPTER = "/dev/ttyS0", "/dev/ttyUSB0"
DEVICES = [UART, ADAPTER]
BOOT_SECONDS = 120  # 8 s on an idle machine
# On a busy machine the emulated timer is too late for the kernel's test of it.
KERNEL_OPTIONS = "console=ttyS2 quiet no_timer_check panic=-1"
ACCESS_FAILED, NO_PORT, LINE_LOST = 1, 3, 5
IN_USE = "it is in use by another program"

# Value of the chip's speed register for each bit rate of the program. A UART whose clock makes 115200
# at most cannot do the last two.
SPEEDS = {9600: "EB", 14400: "DA", 19200: "CB", 38400: "AB", 57600: "9A", 115200: "7A",
          128000: "74", 256000: "54"}
UART_LIMIT = 115200

EVERY_VALUE = ["RE 37 91", "::: LOOP", "SR 2B ML0", "RE 2B ML0", "INC ML0", "JNE ML0 00 LOOP"]


class Failed(Exception):
    pass


def expect(condition, *what):
    if not condition:
        raise Failed(" ".join(str(part) for part in what))


def wait_for(seconds, condition, what):
    end = time.monotonic() + seconds
    while not condition():
        expect(time.monotonic() < end, "waited", seconds, "s in vain:", what)
        time.sleep(0.02)


def exec_command(device, lines):
    return " ".join(["wcf exec", *[shlex.quote(line) for line in lines], "--port", device])


class Machine:
    """The emulated machine and what is plugged into it. All its processes end with this one."""

    def __init__(self, stack, folder):
        self.folder = folder
        self.stack = stack
        lines = [self.line_with_chip(number) for number in range(2)]
        self.ring = folder + "/ring"
        listeners = [self.listen("shell"), self.listen("monitor")]
        self.spawn(
            "qemu-system-x86_64", "-nodefaults", "-display", "none", "-no-reboot", "-m", "256",
            "-accel", "tcg", "-kernel", KERNEL, "-initrd", INITRD, "-append", KERNEL_OPTIONS,
            "-chardev", f"serial,id=uart,path={lines[0]}", "-serial", "chardev:uart",
            "-chardev", f"socket,id=shell,path={folder}/shell", "-serial", "chardev:shell",
            "-serial", f"file:{folder}/console",
            "-chardev", f"serial,id=adapter,path={lines[1]}", "-usb",
            "-device", "usb-serial,id=adapter,chardev=adapter",
            "-chardev", f"socket,id=monitor,path={folder}/monitor",
            "-mon", "chardev=monitor,mode=control",
            "-trace", "usb_serial*", "-trace", "serial_update_parameters", "-D", folder + "/trace",
            env=os.environ | {"LD_PRELOAD": RING_LINE, "VT63X_RING": self.ring})
        self.shell, self.monitor = [self.accept(listener) for listener in listeners]
        self.monitor_says("QMP")
        self.order("qmp_capabilities")
        try:
            self.answer(BOOT_SECONDS)
        except (Failed, OSError) as error:
            raise Failed("no answer; the kernel says:", self.content("console")) from error
        self.until(f"[ -c {ADAPTER} ]", 60)

    def spawn(self, *command, **options):
        process = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *command],
                                   stdin=subprocess.DEVNULL, text=True, **options)
        self.stack.callback(process.wait)
        self.stack.callback(process.kill)
        return process

    def line_with_chip(self, number):
        """A null-modem cable with a chip at its far end; gives the near one."""
        near, far = f"{self.folder}/near{number}", f"{self.folder}/far{number}"
        self.spawn("socat", f"pty,raw,echo=0,link={near}", f"pty,raw,echo=0,link={far}")
        wait_for(10, lambda: os.path.exists(near) and os.path.exists(far), "a line")
        chip = self.spawn(BIN + "/vt63x-sim", "--port", far, stdout=subprocess.PIPE)
        expect(far in chip.stdout.readline(), "no chip at", far)
        return near

    def listen(self, name):
        listener = self.stack.enter_context(socket.socket(socket.AF_UNIX))
        listener.bind(f"{self.folder}/{name}")
        listener.listen()
        listener.settimeout(20)
        return listener

    def accept(self, listener):
        connection = self.stack.enter_context(listener.accept()[0])
        return self.stack.enter_context(connection.makefile("rw")), connection

    def monitor_says(self, key, seconds=20):
        """Waits for the message of the emulator that has this key, or is the event of this name."""
        file, connection = self.monitor
        connection.settimeout(seconds)
        for line in file:
            message = json.loads(line)
            expect("error" not in message, message)
            if key in message or message.get("event") == key:
                return
        raise Failed("the emulator has ended")

    def order(self, command, **arguments):
        file, _ = self.monitor
        file.write(json.dumps({"execute": command, "arguments": arguments}) + "\n")
        file.flush()
        self.monitor_says("return")

    def answer(self, seconds):
        file, connection = self.shell
        connection.settimeout(seconds)
        output = []
        for line in file:
            end = re.search(r"=== (\d+)\r?$", line)
            if end:
                return int(end[1]), "".join(output)
            output.append(line)
        raise Failed("the emulated machine has ended")

    def run(self, command, seconds=30, user="root"):
        """The exit code and the output, errors included, of a command of the machine's shell."""
        expect("\n" not in command, "a line only:", command)
        file, _ = self.shell
        file.write(f"timeout -s KILL {seconds} su {user} -s /bin/sh -c {shlex.quote(command)}\n")
        file.flush()
        return self.answer(seconds + 30)

    def succeed(self, command, seconds=30, user="root"):
        code, output = self.run(command, seconds, user)
        expect(code == 0, command, "gives", code, output)
        return output

    @contextlib.contextmanager
    def wcf(self, device, lines, user="root"):
        """Runs lines in the background; goes on when the port is open."""
        command = shlex.quote(exec_command(device, ["//> begun", *lines]))
        self.succeed(f"rm -f /tmp/out /tmp/code; {{ su {user} -s /bin/sh -c {command}; "
                     "echo $? >/tmp/code; } >/tmp/out 2>&1 &")
        try:
            self.until("grep -q begun /tmp/out")
            yield
        finally:
            self.run("kill -9 $(pidof wcf)")

    def until(self, condition, seconds=10):
        code, _ = self.run(f"until {condition}; do usleep 10000; done", seconds)
        expect(code == 0, "waited", seconds, "s in vain:", condition)

    def end_of_wcf(self, seconds=10):
        self.until("[ -s /tmp/code ]", seconds)
        return int(self.succeed("cat /tmp/code")), self.succeed("cat /tmp/out")

    def content(self, name):
        with open(f"{self.folder}/{name}", encoding="utf-8", errors="replace") as file:
            return file.read()

    def trace(self):
        return self.content("trace")

    @contextlib.contextmanager
    def ringing(self):
        with open(self.ring, "w", encoding="utf-8"):
            pass
        try:
            yield
        finally:
            os.unlink(self.ring)

    def unplug(self):
        self.order("device_del", id="adapter")
        self.monitor_says("DEVICE_DELETED")
        self.until(f"[ ! -e {ADAPTER} ]")

    def plug(self):
        self.order("device_add", driver="usb-serial", id="adapter", chardev="adapter")
        self.until(f"[ -c {ADAPTER} ]", 30)


def reads_and_writes(machine, device):
    code, output = machine.run(exec_command(device, EVERY_VALUE), 60)
    expect(code == 0 and "257 comparisons made, 0 failed, 513 accesses, 0 failed" in output, code,
           output)


def bit_rate(machine, device, rate):
    """At this rate of chip and driver the bytes get across, and the UART itself was told of it."""
    seen = len(machine.trace())
    if device == UART and rate > UART_LIMIT:
        code, output = machine.run(exec_command(device, ["RE 37 91", f"CHB {rate}", "RE 37 91"]))
        expect(code == ACCESS_FAILED and "2 comparisons made, 0 failed" in output and
               f"the port does not take the bit rate {rate}" in output, code, output)
        expected = [9600]
    else:
        machine.succeed(exec_command(device, [
            "RE 37 91", f"SR 1F {SPEEDS[rate]}", f"CHB {rate}", "SR 2B 5A", "RE 2B 5A", "SR 1F EB",
            "CHB 9600", "RE 2B 5A"]))
        expected = [9600, rate, 9600] if rate != 9600 else [9600]
    told = [int(text) for text in re.findall(r"baud ?rate[= ](\d+)", machine.trace()[seen:])]
    steps = [step for step, _ in itertools.groupby(told)]
    expect(len(steps) == len(expected) and
           all(abs(step - wanted) <= wanted * 0.03 for step, wanted in zip(steps, expected)),
           "the UART was set to", steps)


def latency_timer(machine):
    timer = "/sys/class/tty/ttyUSB0/device/latency_timer"
    machine.unplug()
    machine.plug()
    machine.succeed("echo 16 >" + timer)  # as a real one has it; the emulated one starts with 0
    expect(machine.succeed("cat " + timer) == "16\n", "the driver does not take the time")
    seen = len(machine.trace())
    with machine.wcf(ADAPTER, ["SLP 60000"]):
        expect(machine.succeed("cat " + timer) == "1\n", "the driver's timer")
        expect("got control 0x4009, value 0x1\n" in machine.trace()[seen:], "the adapter's timer")


def exclusive_use(machine, device):
    machine.succeed(f"chmod 666 {device}")
    for holder in ["root", "nobody"]:
        with machine.wcf(device, ["SLP 60000"], holder):
            for user in ["root", "nobody"]:
                code, output = machine.run(exec_command(device, ["GR 37"]), user=user)
                expect(code == NO_PORT and f"cannot open {device}: {IN_USE}" in output, holder, user,
                       code, output)
            code, output = machine.run(f"exec 3<>{device}", user="nobody")
            expect(code != 0 and "resource busy" in output, "a program without locks", output)
    machine.succeed(exec_command(device, ["RE 37 91"]), user="nobody")


def ring_level(machine, device):
    output = machine.succeed(exec_command(device, ["WIL 1 50", "WIL 0 50"]))
    expect(re.findall(r"Result: (\d)", output) == ["0", "1"], output)
    with machine.wcf(device, ["WIL 1 60000", "//> rings", "WIL 0 60000"]):
        with machine.ringing():
            machine.until("grep -q rings /tmp/out")
        code, output = machine.end_of_wcf()
    expect(code == 0 and output.count("Result: 1") == 2, code, output)


def ring_edge(machine, device):
    with machine.wcf(device, ["WIE 5000"]):
        while machine.run("[ -s /tmp/code ]")[0] != 0:
            with machine.ringing():
                time.sleep(0.1)  # so long does it ring
            time.sleep(0.1)
        code, output = machine.end_of_wcf()
    expect(code == 0 and "Result: 1" in output, code, output)


def unplugging(machine, lines):
    try:
        with machine.wcf(ADAPTER, lines):
            machine.unplug()
            code, output = machine.end_of_wcf(5)
    finally:
        machine.plug()
    expect(code == LINE_LOST and "the line went away" in output, code, output[-500:])
    machine.succeed(exec_command(ADAPTER, ["RE 37 91"]))


CHECKS = [
    *[(f"{device}: every value written and compared", reads_and_writes, device) for device in DEVICES],
    *[(f"{device}: {rate} bps", bit_rate, device, rate) for device in DEVICES for rate in SPEEDS],
    (f"{ADAPTER}: the latency timer is 1 ms while the port is open", latency_timer),
    *[(f"{device}: exclusive use", exclusive_use, device) for device in DEVICES],
    *[(f"{device}: waits for a level of the ring line", ring_level, device) for device in DEVICES],
    (f"{UART}: waits for an edge of the ring line", ring_edge, UART),
    ("unplugged in a loop of reads", unplugging, ["::: L", "GR 37", "JMP L"]),
    ("unplugged in a wait for a ring", unplugging, ["WIE 60000"]),
    ("unplugged in a loop of waits for a ring", unplugging, ["::: L", "WIE 10", "JMP L"]),
    ("unplugged in a wait for a level", unplugging, ["WIL 1 60000"]),
    ("unplugged in a pause", unplugging, ["SLP 60000"]),
    ("unplugged in a loop of pauses", unplugging, ["::: L", "SLP 10", "JMP L"]),
]


def main():
    failed = 0
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as stack:
        began = time.monotonic()
        machine = Machine(stack, folder)
        print(f"booted in {time.monotonic() - began:.1f} s:", machine.succeed("uname -r").strip())
        chosen = [row for row in CHECKS if re.search(PATTERN, row[0])]
        for name, check, *arguments in chosen:
            began = time.monotonic()
            fault = ""
            try:
                check(machine, *arguments)
            except (Failed, OSError) as error:
                failed += 1
                fault = f"\n  {error}"
            verdict = "FAILED" if fault else "ok    "
            print(f"{verdict} {time.monotonic() - began:5.1f} s  {name}{fault}", flush=True)
    print(f"{len(chosen) - failed} of {len(chosen)} checks passed")
    return 1 if failed or not chosen else 0


sys.exit(main())
