#!/usr/bin/python3
"""pyvisa-py, a VISA written by others, against our VXI-11 server (portmapper on port 111).

Usage: pyvisa_peer.py RESOURCE. Prints one line per finding for the calling test to check.
"""
import sys

import pyvisa

resource = sys.argv[1]
rm = pyvisa.ResourceManager('@py')
inst = rm.open_resource(resource, open_timeout=3000)
inst.timeout = 3000
inst.read_termination = '\n'
inst.write_termination = '\n'
print('IDN', inst.query('*IDN?'))

# Binary data holds LF bytes: with a termination character the device stops at the first one
# (reason CHR), so the block is read up to END only.
inst.write('BLOCK?')
inst.read_termination = None
data = inst.read_raw()
inst.read_termination = '\n'
expected = b'#6524288' + bytes((i * 7) % 256 for i in range(524288)) + b'\n'
print('BLOCK', len(data), data == expected)
inst.write('BLOCK?')
print('CHR', inst.read_raw() == expected[:expected.index(b'\n') + 1])
inst.clear()

inst.timeout = 200
inst.write('SLOW?')
try:
    inst.read()
    print('SLOW answered')
except pyvisa.errors.VisaIOError as error:
    print('SLOW timeout', error.error_code == pyvisa.constants.StatusCode.error_timeout)
inst.timeout = 3000
print('ECHO', inst.query('ECHO after the time-out'))

inst.clear()
print('CLEAR done')
inst.close()
rm.close()
