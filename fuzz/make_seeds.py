#!/usr/bin/env python3
"""Writes the seed corpora under corpus/<target>/: one well-formed example of each kind of
input a target takes apart, in the layout its harness reads (see the comment above each
LLVMFuzzerTestOneInput). Run it again after changing a harness's input layout."""
import os
import struct

HERE = os.path.dirname(os.path.abspath(__file__))


def write(target, name, data):
    folder = os.path.join(HERE, "corpus", target)
    os.makedirs(folder, exist_ok=True)
    if isinstance(data, str):
        data = data.encode("latin-1")
    with open(os.path.join(folder, name), "wb") as f:
        f.write(data)


# format_scan_fuzz: mode, three round selectors (directive | capacity index << 2), chunks.
TEXT, NUMBERS, BLOCK, RAW = 0, 1, 2, 3


def rounds(*pairs):
    return bytes(directive | (capacity << 2) for directive, capacity in pairs)


def chunks(data, size=63, end=True):
    data = data.encode("latin-1") if isinstance(data, str) else data
    out = b""
    for i in range(0, len(data), size):
        part = data[i:i + size]
        last = i + size >= len(data)
        out += bytes([len(part) | (0x40 if last and end else 0)]) + part
    return out


idn = "KEYSIGHT TECHNOLOGIES,DSO-X 3034T,QVSIM00001,07.50\n"
numbers = "+1.00000000E-03,-2.5E+00,+7680,3\n"
block = "#210" + "".join(chr(c) for c in [0, 10, 128, 255, 13, 10, 1, 2, 3, 4]) + "\n"
for mode, tag in ((1, "socket"), (0, "end")):
    write("format_scan_fuzz", f"text_{tag}",
          bytes([mode]) + rounds((TEXT, 7), (TEXT, 2), (NUMBERS, 5)) +
          chunks(idn) + chunks("short\n") + chunks(numbers))
    write("format_scan_fuzz", f"numbers_{tag}",
          bytes([mode]) + rounds((NUMBERS, 5), (NUMBERS, 2), (RAW, 4)) +
          chunks(numbers, 5) + chunks(numbers) + chunks("+1,+2\n"))
    write("format_scan_fuzz", f"block_{tag}",
          bytes([mode]) + rounds((BLOCK, 6), (BLOCK, 4), (TEXT, 6)) +
          chunks(block, 4) + chunks(block) + chunks("+0,\"No error\"\n"))
write("format_scan_fuzz", "indefinite_block_end",
      bytes([0]) + rounds((BLOCK, 6), (BLOCK, 1), (TEXT, 6)) +
      chunks("#0abc\ndef\n") + chunks("#0" + "x" * 40 + "\n") + chunks("late"))

# resource_name_fuzz: the string itself.
for i, name in enumerate([
        "USB0::0x0957::0x1797::MY12345678::0::INSTR", "usb::2391::6039::SERIAL::INSTR",
        "TCPIP0::192.168.1.20::5025::SOCKET", "TCPIP0::192.168.1.20::inst0::INSTR",
        "TCPIP::scope.local::INSTR", "TCPIP0::192.168.1.20::hislip0::INSTR",
        "TCPIP1::[fe80::1]::hislip0,4881::INSTR", "TCPIP0::host:1111::inst0::INSTR",
        "TCPIP0::host:core:1024::INSTR"]):
    write("resource_name_fuzz", f"name_{i}", name)


# vxi11_reply_fuzz: procedure, record limit index, piece size, record-marked replies.
def xdr_opaque(data):
    return struct.pack(">I", len(data)) + data + b"\0" * (-len(data) % 4)


def reply(xid, results, stat=0):
    return struct.pack(">IIIIII", xid, 1, 0, 0, 0, stat) + results


def record(data, fragment=None):
    fragment = fragment or len(data)
    out = b""
    for i in range(0, len(data), fragment):
        part = data[i:i + fragment]
        out += struct.pack(">I", len(part) | (0x80000000 if i + fragment >= len(data) else 0))
        out += part
    return out


write("vxi11_reply_fuzz", "create_link",
      bytes([0, 3, 64]) + record(reply(7, struct.pack(">iiII", 0, 1, 0, 1024))))
write("vxi11_reply_fuzz", "device_write",
      bytes([1, 3, 5]) + record(reply(8, struct.pack(">iI", 0, 6))))
write("vxi11_reply_fuzz", "device_read_fragments",
      bytes([2, 4, 3]) +
      record(reply(9, struct.pack(">iI", 0, 4) + xdr_opaque(b"#15hello+1.0E-03\n")), 12) +
      record(reply(10, struct.pack(">iI", 0, 1) + xdr_opaque(b"x" * 40))))
write("vxi11_reply_fuzz", "read_stb",
      bytes([3, 3, 64]) + record(reply(11, struct.pack(">iI", 0, 0x40))))
write("vxi11_reply_fuzz", "device_error",
      bytes([4, 3, 64]) + record(reply(12, struct.pack(">i", 15))) +
      record(struct.pack(">IIIIII", 13, 1, 1, 0, 2, 2)))
write("vxi11_reply_fuzz", "portmapper_port",
      bytes([5, 2, 64]) + record(reply(14, struct.pack(">I", 1024))) +
      record(reply(15, struct.pack(">II", 1, 1), stat=2)))


# hislip_client_fuzz: read size, actions, max size index, sync length (2 bytes), sync, async.
def hs(kind, control=0, parameter=0, payload=b""):
    return b"HS" + struct.pack(">BBIQ", kind, control, parameter, len(payload)) + payload


DATA, DATA_END, FATAL, ERROR, INTERRUPTED = 6, 7, 2, 3, 13
CLEAR_COMPLETE_ACK, ASYNC_CLEAR_ACK, ASYNC_SRQ = 9, 23, 20
FIRST = 0xFFFFFF00


def hislip(read_size, actions, max_size, sync, asyn=b""):
    return bytes([read_size, actions, max_size]) + struct.pack("<H", len(sync)) + sync + asyn


write("hislip_client_fuzz", "response",
      hislip(4, 1, 3, hs(DATA, 0, FIRST, b"+1.0E") + hs(DATA_END, 0, FIRST, b"-03\n")))
write("hislip_client_fuzz", "stale_then_response",
      hislip(3, 3, 2, hs(DATA_END, 0, FIRST - 2, b"old\n") + hs(INTERRUPTED, 0, FIRST) +
             hs(DATA_END, 0, 0xFFFFFFFF, b"any id\n") + hs(DATA_END, 0, FIRST + 2, b"next\n")))
write("hislip_client_fuzz", "error_and_fatal",
      hislip(5, 1, 1, hs(ERROR, 1, 0, b"Unrecognized message type") + hs(FATAL, 1)))
write("hislip_client_fuzz", "device_clear",
      hislip(5, 0x81, 4, hs(DATA_END, 0, FIRST, b"+1\n") + hs(DATA, 0, FIRST, b"abc") +
             hs(CLEAR_COMPLETE_ACK, 1),
             hs(ASYNC_SRQ, 0, 0) + hs(ASYNC_CLEAR_ACK, 1)))
write("hislip_client_fuzz", "huge_length",
      hislip(0, 1, 0, b"HS" + struct.pack(">BBIQ", DATA_END, 0, FIRST, 1 << 62) + b"xyz"))

# hislip_message_fuzz: messages back to back, as either channel carries them.
write("hislip_message_fuzz", "handshake",
      hs(1, 0, 0x01000007) + hs(18, 0, 0x5156) + hs(16, 0, 0, struct.pack(">Q", 1 << 20)))
write("hislip_message_fuzz", "responses",
      hs(DATA, 1, FIRST, b"+1.0E") + hs(DATA_END, 0, FIRST, b"-03\n") + hs(INTERRUPTED, 0, FIRST) +
      hs(ERROR, 1, 0, b"Unrecognized message type") + hs(FATAL, 1))
write("hislip_message_fuzz", "bad_prologue_and_huge_length",
      b"XS" + bytes(14) + b"HS" + struct.pack(">BBIQ", DATA_END, 0, FIRST, 1 << 62) + b"xyz")

# sim_instrument_fuzz: configuration byte (3000X, 4 channels, generator, voltmeter), messages;
# scpi_parser_fuzz: suffix limits' byte, the same messages.
for i, text in enumerate([
        "*IDN?\n*RST;*CLS\n:SYSTem:ERRor?\n*ESR?\n:OPERegister:CONDition?\n:AER?",
        ":CHANnel1:SCALe 500mV;:TIMebase:SCALe 4E-08\n:CHAN1:SCAL?;OFFS?\n:TIM:SCAL?",
        ":WAVeform:SOURce CHANnel2;FORMat BYTE;POINts MAX\n:DIGitize CHANnel2\n"
        ":WAVeform:PREamble?\n:WAVeform:POINts? MAX",
        ":TRIGger:EDGE:LEVel 1.25;SLOPe NEGative\n:TRIG:LEV?\n:TRIG:SWEep NORMal;:TRIG:SWE?",
        ":FUNCtion1:OPERation FFT;:FUNC1:SOURce1 CHAN1\n:FUNC:SPAN 1E+06\n:FUNC2:OPER?",
        ":WGEN1:FUNCtion SINusoid;FREQuency 1kHz;VOLTage 0.5\n:WGEN2:OUTPut ON\n:WGEN:FUNC?",
        ":CHANnel3:LABel \"Ab c\";:DISPlay:ANNotation:TEXT 'x;y'\n:CHAN3:LAB?\n:DVM:ENABle 1;MODE DC",
        ":SIMulate:CHANnel1:SIGNal SINusoid,1000,1,0\n:SIMulate:CHANnel1:ADD NOISe,0.01\n"
        ":SIMulate:DELay 5\n:SIMulate:GARBage 2\n:SIMulate:CUT 10\n:SIMulate:CLEar",
        ":CHAN1:SCAL #H1F;:CHAN1:OFFS #B101;:TIM:POS #Q17\n:CHAN1:RANG MAXimum\n:BAD:HEADer 1",
        ":SYSTem:SETup #15hello\n:MEASure:FREQuency? CHANnel1\n:DISPlay:DATA? BMP8bit,COLor"]):
    write("sim_instrument_fuzz", f"messages_{i}",
          bytes([0x0F if i % 2 == 0 else 0x00]) + text.encode())
    write("scpi_parser_fuzz", f"messages_{i}", bytes([0x3F if i % 2 == 0 else 0x15]) + text.encode())


# csv_reader_fuzz: read size, then the file.
def csv_file(channel, lines, end="\r\n", header_extra=""):
    header = f"{channel};250000000;0.5;2E-07;-0.125;-2E-06;4E-09{header_extra}"
    body = "".join(f"{-2e-6 + i * 4e-9:.9f};{0.01 * i:.9f}{end}" for i in range(lines))
    return header + end + body


write("csv_reader_fuzz", "crlf", bytes([7]) + csv_file(2, 12).encode())
write("csv_reader_fuzz", "lf_bom", bytes([96]) + b"\xef\xbb\xbf" + csv_file(1, 11, "\n").encode())
write("csv_reader_fuzz", "cr_comma_decimal",
      bytes([3]) + csv_file(4, 12, "\r").replace(".", ",").encode())
write("csv_reader_fuzz", "blank_line_ends_data",
      bytes([50]) + (csv_file(3, 12) + "\r\n  \r\n9;9\r\n").encode())
write("csv_reader_fuzz", "too_few_samples", bytes([1]) + csv_file(1, 10).encode())
write("csv_reader_fuzz", "bad_header", bytes([5]) + b"5;1;1;1;1;1;0\r\n0;0\r\n")
