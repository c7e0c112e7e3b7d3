#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz targets (fuzz/corpus/<target>/) from the
example parameter document, the JSON texts of the tests and a few hand-made
frames and messages. Run from anywhere; it replaces the generated seeds."""
import hashlib
import json
import pathlib
import re
import struct

ROOT = pathlib.Path(__file__).resolve().parent.parent
CORPUS = ROOT / "fuzz" / "corpus"


def header(body, message_id=0x0200, source=0, session=0):
    """The 16-byte bus header: source id, session, flags, message id, length word."""
    return struct.pack("<iiHHI", source, session, 0, message_id, len(body))


def write(target, seeds):
    directory = CORPUS / target
    directory.mkdir(parents=True, exist_ok=True)
    for old in directory.glob("seed-*"):
        old.unlink()
    for data in seeds:
        name = "seed-" + hashlib.sha1(data).hexdigest()[:16]
        (directory / name).write_bytes(data)
    print(f"{target}: {len(set(seeds))} seeds")


def compact(value):
    return json.dumps(value, separators=(",", ":"), ensure_ascii=False).encode()


def documents():
    example = json.loads((ROOT / "examples" / "mdvr_parameters.json").read_text())
    docs = [example]
    for key, section in example["PARAMETER"]["MDVR"].items():
        docs.append({"PARAMETER": {"MDVR": {key: section}}})
    # JSON objects and arrays written as raw strings in the tests.
    for source in sorted((ROOT / "tests").glob("test_*.cpp")):
        for text in re.findall(r'R"\((.*?)\)"', source.read_text(), re.S):
            try:
                value = json.loads(text)
            except ValueError:
                continue
            if isinstance(value, (dict, list)) and value:
                docs.append(value)
    return docs


def message_seeds(docs):
    seeds = [header(b""), header(b"{}") + b"{}", b"\0" * 8]
    seeds += [header(compact(d)) + compact(d) for d in docs]
    return seeds


def codec_seeds():
    frames = [
        (0, bytes.fromhex("7e017d5e027d5d7e")),      # 7e7e frame, escaped
        (0, bytes.fromhex("7e017e027e")),            # 7e7e with a flag inside
        (1, bytes.fromhex("7e007d027d03017f")),      # 7e7f frame, escaped
        (1, bytes.fromhex("7e00417f9998")),          # 7e7f with a tail
        (1, bytes.fromhex("7e0041427d")),            # 7e7f ending in an escape
        (2, bytes.fromhex("7e017e027d7e")),          # 7e7e round trip
        (3, bytes.fromhex("7e007f7d017f")),          # 7e7f round trip
        (2, bytes(range(256))),
        (3, bytes(range(256))),
    ]
    return [bytes([mode]) + frame for mode, frame in frames]


def receive_seeds(docs):
    def message(message_id, body=b"", source=0, session=0):
        return bytes([1]) + header(body, message_id, source, session) + body
    body = compact(docs[0])
    return [
        message(0x0001), message(0x0001, b"abcd"), message(0x0100, source=7),
        message(0x8001, source=7, session=9), message(0x8001, source=-1), message(0x8001, source=3),
        message(0xFFFF), message(0x0200, body), message(0x0200, compact(docs[1])),
        bytes([0]) + header(b"xx", 0x0001)[:16] + b"x",   # length disagrees
        bytes([0]) + b"\x01\x00",                          # shorter than a header
    ]


def region_seeds():
    def seed(text, out_length, text_length=None):
        length = len(text) if text_length is None else text_length
        return struct.pack("<HH", length & 0xFFFF, out_length & 0xFFFF) + text
    digits = b"0123456789ABCDEFabcdef" * 5
    return [
        seed(b"FF00", 50), seed(b"FF00", 50, 3), seed(b"ab", 50), seed(digits[:100], 50),
        seed(digits[:100] + b"\0" * 2, 50, 102), seed(b"F", 1), seed(b"FF", 0), seed(b"FFFF", 0x8001),
        seed(b"FFFF", 1, 0x8000), seed(b"zz\x7f\x80", 2),
    ]


def main():
    docs = documents()
    write("message", message_seeds(docs))
    write("codec", codec_seeds())
    write("receive", receive_seeds(docs))
    write("region", region_seeds())


if __name__ == "__main__":
    main()
