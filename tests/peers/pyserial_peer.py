# SPDX-License-Identifier: MIT
"""An independent client of the simulator's RFC 2217 server: pyserial_peer.py URL.

Drives the chip by its own protocol (read: address | 0x80, back comes the value; write: address and
value, back comes the address) and prints what it found; the test reads that."""

import sys
import serial

port = serial.serial_for_url(sys.argv[1], baudrate=9600, timeout=5)


def read(address):
    port.write(bytes([address | 0x80]))
    return port.read(1)


def write(address, value):
    port.write(bytes([address, value]))
    return port.read(1)


print("version", read(0x37).hex())
for value in range(256):
    assert write(0x2B, value) == b"\x2b", value
    assert read(0x2B) == bytes([value]), value
print("every value")
assert write(0x1F, 0x79) == b"\x1f"
port.baudrate = 115200
print("at 115200", read(0x37).hex())
port.write(b"\xb7")
port.reset_input_buffer()
port.reset_output_buffer()
port.dtr = False
port.rts = False
print("purged", read(0x37).hex())
print("ring", port.ri, flush=True)
sys.stdin.readline()  # until the test has switched it on
for _ in range(1000):
    if port.ri:
        break
    read(0x37)
print("ring", port.ri, flush=True)
port.close()
