#!/usr/bin/python3
"""Replays a list of SCPI exchanges with pyvisa-py, as a plain script would, and prints timings.

Usage: pyvisa_exchanges.py RESOURCE FILE REPEATS
FILE holds one program message per line, exactly as the program sent them. A line ending in
'?' (or holding '? ') is a query and its reply is read; ':WAVeform:DATA?' is read as a binary
block and converted to volts with the preamble read just before it (PREamble? replies are kept).
Prints one line of key=value pairs: exchanges, total_ms (median over the repeats),
per_exchange_us, and for a block block_ms (request to volts) and points.
"""
import statistics
import sys
import time

import numpy as np
import pyvisa


def is_query(line):
    return line.endswith("?") or "? " in line


def replay(inst, lines):
    preamble = None
    block_s = 0.0
    points = 0
    for line in lines:
        if line.upper().startswith(":WAVEFORM:DATA?") or line.upper().startswith(":WAV:DATA?"):
            t0 = time.perf_counter()
            codes = inst.query_binary_values(line, datatype="B", container=np.ndarray,
                                             header_fmt="ieee", expect_termination=True)
            if preamble is not None:
                x_inc, x_org = preamble[4], preamble[5]
                y_inc, y_org, y_ref = preamble[7], preamble[8], preamble[9]
                volts = (codes.astype(np.float64) - round(y_ref)) * y_inc + y_org
                times = np.arange(len(codes), dtype=np.float64) * x_inc + x_org
                points = min(len(volts), len(times))
            block_s += time.perf_counter() - t0
        elif "PREAMBLE?" in line.upper() or "PRE?" in line.upper():
            preamble = [float(v) for v in inst.query(line).split(",")]
        elif is_query(line):
            inst.query(line)
        else:
            inst.write(line)
    return block_s, points


def main():
    resource, path, repeats = sys.argv[1], sys.argv[2], int(sys.argv[3])
    with open(path) as f:
        lines = [l.rstrip("\n") for l in f if l.strip()]
    rm = pyvisa.ResourceManager("@py")
    inst = rm.open_resource(resource, read_termination="\n", write_termination="\n")
    inst.timeout = 10000
    inst.chunk_size = 1 << 20
    replay(inst, lines)  # warm-up
    totals, blocks = [], []
    points = 0
    for _ in range(repeats):
        t0 = time.perf_counter()
        block_s, points = replay(inst, lines)
        totals.append(time.perf_counter() - t0)
        blocks.append(block_s)
    inst.close()
    rm.close()
    total_ms = statistics.median(totals) * 1e3
    print("exchanges=%d total_ms=%.3f per_exchange_us=%.1f block_ms=%.3f points=%d" %
          (len(lines), total_ms, total_ms * 1e3 / len(lines), statistics.median(blocks) * 1e3,
           points))


if __name__ == "__main__":
    main()
