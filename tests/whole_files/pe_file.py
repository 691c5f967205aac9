"""Reads the headers of a Windows program or module (PE32+), and says what of its hardening is missing."""

import struct

DOS_HEADER_POINTER = 0x3c
FILE_HEADER_BYTES = 20
SECTION_HEADER_BYTES = 40
DIRECTORIES_AT = 112  # in the optional header
IMAGE_BASE_AT = 24
DLL_CHARACTERISTICS_AT = 70
MACHINE_AMD64 = 0x8664
MAGIC_64_BIT = 0x20b
FOUR_GIB = 1 << 32

FILE_RELOCATIONS_STRIPPED = 0x0001
FILE_LARGE_ADDRESSES = 0x0020
DLL_HIGH_ENTROPY = 0x0020
DLL_DYNAMIC_BASE = 0x0040
DLL_NX_COMPATIBLE = 0x0100
SECTION_EXECUTABLE = 0x20000000
SECTION_WRITABLE = 0x80000000
DIRECTORY_IMPORT, DIRECTORY_RELOCATION, DIRECTORY_BOUND_IMPORT, DIRECTORY_DELAY_IMPORT = 1, 5, 11, 13
RELOCATION_64_BIT = 10
IMPORT_BY_ORDINAL = 1 << 63


class PeFile:
    def __init__(self, data):
        self.data = data
        self.header = self.number(DOS_HEADER_POINTER, "I")
        if data[:2] != b"MZ" or data[self.header:self.header + 4] != b"PE\0\0":
            raise ValueError("no PE file")
        self.file_header = self.header + 4
        self.optional = self.file_header + FILE_HEADER_BYTES
        if (self.number(self.file_header, "H"), self.number(self.optional, "H")) != (MACHINE_AMD64, MAGIC_64_BIT):
            raise ValueError("not for 64-bit Windows")
        self.characteristics_at = self.file_header + 18
        self.dll_characteristics_at = self.optional + DLL_CHARACTERISTICS_AT
        self.image_base_at = self.optional + IMAGE_BASE_AT
        self.sections_at = self.optional + self.number(self.file_header + 16, "H")

    def number(self, place, kind):
        return struct.unpack_from("<" + kind, self.data, place)[0]

    def text(self, address):
        place = self.place(address)
        return self.data[place:self.data.index(b"\0", place)].decode("ascii")

    def section_headers(self):
        count = self.number(self.file_header + 2, "H")
        return [self.sections_at + i * SECTION_HEADER_BYTES for i in range(count)]

    def directory_at(self, index):
        return self.optional + DIRECTORIES_AT + 8 * index

    def directory(self, index):
        """Address and size, relative to the image."""
        return struct.unpack_from("<II", self.data, self.directory_at(index))

    def place(self, address):
        """Where the file has what is mapped there."""
        for header in self.section_headers():
            _, start, size, raw = struct.unpack_from("<IIII", self.data, header + 8)
            if start <= address < start + size:
                return address - start + raw
        raise ValueError(f"{address:#x} is in no section")

    def imports(self):
        """For each library, in the order of the file, the names of its functions; an ordinal is a number."""
        found = {}
        address, size = self.directory(DIRECTORY_IMPORT)
        for descriptor in range(self.place(address), self.place(address) + size, 20):
            names, _, _, library, addresses = struct.unpack_from("<5I", self.data, descriptor)
            if library == 0:
                break
            found.setdefault(self.text(library), []).extend(self.functions(names or addresses))
        return found

    def functions(self, address):
        place = self.place(address)
        while entry := self.number(place, "Q"):
            yield entry & 0xffff if entry & IMPORT_BY_ORDINAL else self.text(entry + 2)
            place += 8

    def relocations(self):
        """How many addresses the loader can move."""
        address, size = self.directory(DIRECTORY_RELOCATION)
        if size == 0:
            return 0
        count, place = 0, self.place(address)
        end = place + size
        while place < end and (block := self.number(place + 4, "I")) > 8:
            entries = struct.unpack_from(f"<{(block - 8) // 2}H", self.data, place + 8)
            count += sum(entry >> 12 == RELOCATION_64_BIT for entry in entries)
            place += block
        return count


def weaknesses(data):
    """A line for each thing that a hardened file has and this one lacks."""
    pe = PeFile(data)
    characteristics = pe.number(pe.characteristics_at, "H")
    dll_characteristics = pe.number(pe.dll_characteristics_at, "H")
    for bit, name in ((DLL_DYNAMIC_BASE, "its address is not random"), (DLL_HIGH_ENTROPY, "its address has few random bits"),
                      (DLL_NX_COMPATIBLE, "its data may be executed")):
        if not dll_characteristics & bit:
            yield name
    if characteristics & FILE_RELOCATIONS_STRIPPED or pe.relocations() == 0:
        yield "it cannot be moved"
    if not characteristics & FILE_LARGE_ADDRESSES or pe.number(pe.image_base_at, "Q") < FOUR_GIB:
        yield "it lies below 4 GiB"
    for header in pe.section_headers():
        flags = pe.number(header + 36, "I")
        if flags & SECTION_EXECUTABLE and flags & SECTION_WRITABLE:
            yield f"{data[header:header + 8].rstrip(bytes(1)).decode()} is writable and executable"
    for index, name in ((DIRECTORY_BOUND_IMPORT, "bound"), (DIRECTORY_DELAY_IMPORT, "delayed")):
        if pe.directory(index) != (0, 0):
            yield f"it has {name} imports"
    for library, functions in pe.imports().items():
        if any(isinstance(function, int) for function in functions):
            yield f"of {library} it imports numbers"
