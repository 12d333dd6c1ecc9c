#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Reads the finished DLL, of 32 or 64 bits: exported names, argument bytes that each function removes (32 bits),
imports, version resource."""
import argparse
import re
import struct
import subprocess

I386, AMD64 = 0x14C, 0x8664
SYSTEM_LIBRARIES = {"kernel32.dll", "msvcrt.dll", "user32.dll"}
# Handlers, threads and processes: a DLL that works for its host's calls only has no use for them.
INTRUDING = "ExceptionHandler|ExceptionFilter|beginthread|Thread$|CreateThread|Process"
RAISING = "RaiseException"  # how exceptions inside the library are thrown on 64 bits; on 32 bits not a need
VERSION_TYPE = 16  # RT_VERSION
CHINESE_TAIWAN = 0x0404
BIG5 = 950
STRINGS = {
    "FileDescription": "Tavrix DLL",
    "FileVersion": "1, 0, 0, 1",
    "InternalName": "Tavrix",
    "OriginalFilename": "Tavrix.DLL",
    "ProductName": "Tavrix Dynamic Link Library",
    "ProductVersion": "1, 0, 0, 1",
}


class Image:
    """A PE file."""

    EXPORTS, IMPORTS, RESOURCES = 0, 1, 2

    def __init__(self, path):
        with open(path, "rb") as file:
            self.data = file.read()
        pe = self.unpack("<I", 0x3C)[0]
        assert self.data[pe:pe + 4] == b"PE\0\0", "no PE file"
        machine, sections, optional_bytes = self.unpack("<HH12xH", pe + 4)
        assert machine in (I386, AMD64), f"machine {machine:#x}"
        self.is64 = machine == AMD64
        optional = pe + 24
        self.base = self.unpack("<Q", optional + 24)[0] if self.is64 else self.unpack("<I", optional + 28)[0]
        directories = optional + (112 if self.is64 else 96)
        self.directories = [self.unpack("<II", directories + 8 * i)[0] for i in range(16)]
        self.sections = []
        for i in range(sections):
            size, rva, raw_size, raw = self.unpack("<IIII", optional + optional_bytes + 40 * i + 8)
            self.sections.append((rva, max(size, raw_size), raw))

    def unpack(self, layout, offset):
        return struct.unpack_from(layout, self.data, offset)

    def offset(self, rva):
        for start, size, raw in self.sections:
            if start <= rva < start + size:
                return raw + rva - start
        raise AssertionError(f"no section holds {rva:#x}")

    def text(self, rva):
        start = self.offset(rva)
        return self.data[start:self.data.index(b"\0", start)].decode("ascii")

    def exports(self):
        """Address by name."""
        table = self.offset(self.directories[self.EXPORTS])
        _, functions, names, addresses, name_table, ordinals = self.unpack("<IIIIII", table + 16)
        assert functions == names, "functions are exported without names"
        found = {}
        for i in range(names):
            name = self.text(self.unpack("<I", self.offset(name_table) + 4 * i)[0])
            ordinal = self.unpack("<H", self.offset(ordinals) + 2 * i)[0]
            found[name] = self.unpack("<I", self.offset(addresses) + 4 * ordinal)[0]
        return found

    def imports(self):
        """The names of the libraries and those of the functions."""
        libraries, functions = set(), set()
        descriptor = self.offset(self.directories[self.IMPORTS])
        while (name := self.unpack("<12xI", descriptor)[0]) != 0:
            libraries.add(self.text(name).lower())
            entry = self.offset(self.unpack("<I", descriptor)[0])
            layout, step = ("<Q", 8) if self.is64 else ("<I", 4)
            while (hint := self.unpack(layout, entry)[0]) != 0:
                functions.add(self.text(hint + 2))
                entry += step
            descriptor += 20
        return libraries, functions

    def version(self):
        """Language and bytes of the only version resource."""
        root = self.offset(self.directories[self.RESOURCES])

        def entries(table):
            names, ids = self.unpack("<12xHH", table)
            return [self.unpack("<II", table + 16 + 8 * i) for i in range(names + ids)]

        (name_table,) = [offset for kind, offset in entries(root) if kind == VERSION_TYPE]
        ((_, language_table),) = entries(root + (name_table & 0x7FFFFFFF))
        ((language, leaf),) = entries(root + (language_table & 0x7FFFFFFF))
        rva, size = self.unpack("<II", root + leaf)
        start = self.offset(rva)
        return language, self.data[start:start + size]


def version_blocks(data, start, end):
    """The blocks of a version resource as (key, value bytes, children)."""
    blocks = []
    while start + 6 <= end:
        length, value_length, is_text = struct.unpack_from("<HHH", data, start)
        if length == 0:
            break
        key_end = start + 6
        while data[key_end:key_end + 2] != b"\0\0":
            key_end += 2
        key = data[start + 6:key_end].decode("utf-16-le")
        value = (key_end + 2 + 3) & ~3
        value_end = value + value_length * (2 if is_text else 1)
        children = version_blocks(data, (value_end + 3) & ~3, start + length)
        blocks.append((key, data[value:value_end], children))
        start = (start + length + 3) & ~3
    return blocks


def removed_bytes(objdump, path, address):
    """The operands of all `ret` instructions of the function at the address."""
    listing = subprocess.run([objdump, "-d", f"--start-address={address:#x}", path], check=True,
                             capture_output=True, text=True).stdout
    body = re.split(r"^[0-9a-f]+ <[^>]+>:$", listing, flags=re.MULTILINE)[1]
    return {int(operand, 16) if operand else 0
            for operand in re.findall(r"\tret +(?:\$(0x[0-9a-f]+))?", body)}


def check(arguments):
    image = Image(arguments.dll)
    with open(arguments.exports, encoding="utf-8") as file:
        lines = [line.split() for line in file if line[0].isalpha()]
    expected = {name: sum(map(int, count.split("+"))) for name, count in lines}

    exports = image.exports()
    assert set(exports) == set(expected), f"exported names: {sorted(exports)}"
    for name, address in exports.items():
        if image.is64:
            break  # callers remove the arguments
        removed = removed_bytes(arguments.objdump, arguments.symbols, image.base + address)
        assert removed == {expected[name]}, f"{name} removes {removed} bytes, not {expected[name]}"

    libraries, functions = image.imports()
    assert libraries <= SYSTEM_LIBRARIES, f"imports: {sorted(libraries)}"
    assert "GlobalAlloc" in functions
    unwanted = INTRUDING if image.is64 else f"{INTRUDING}|{RAISING}"
    intruding = {name for name in functions if re.search(unwanted, name)}
    assert not intruding, f"takes more of the process than memory: {sorted(intruding)}"

    language, data = image.version()
    assert language == CHINESE_TAIWAN, f"language {language:#x}"
    ((key, fixed, blocks),) = version_blocks(data, 0, len(data))
    assert key == "VS_VERSION_INFO", key
    signature, _, *versions = struct.unpack_from("<6I", fixed)
    assert signature == 0xFEEF04BD and versions == [0x10000, 1, 0x10000, 1], f"fixed versions {versions}"
    tables = {key: children for key, _, children in blocks}
    ((table, _, strings),) = tables["StringFileInfo"]
    assert table.upper() == f"{CHINESE_TAIWAN:04X}{BIG5:04X}", f"string table {table}"
    found = {key: value.decode("utf-16-le").rstrip("\0") for key, value, _ in strings}
    assert found == STRINGS, f"strings {found}"
    ((_, translation, _),) = tables["VarFileInfo"]
    assert struct.unpack("<HH", translation) == (CHINESE_TAIWAN, BIG5), f"translation {translation}"


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--objdump", required=True)
    parser.add_argument("--exports", required=True, help="list of names and argument bytes")
    parser.add_argument("--symbols", required=True, help="the DLL before its symbols were taken away")
    parser.add_argument("dll")
    check(parser.parse_args())
