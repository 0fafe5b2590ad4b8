# How gdb prints the objects of libmorvane-qv: `print text` shows the text of a QV_STRING, `print list` the elements of a
# QV_VECTOR, and so on, each with its sort and its count of references. `qv-objects` lists what lives.
#
# gdb loads this file on its own with the library if it lies below a folder of `show auto-load scripts-directory`, under the
# library's whole path. After an installation to another prefix than /usr, gdb is told of it in ~/.gdbinit:
#
#   add-auto-load-scripts-directory PREFIX/share/gdb/auto-load
#   add-auto-load-safe-path PREFIX/share/gdb/auto-load
#
# Memory is only read, no function of the process is called: it works in core dumps too. Where fields lie is read from the
# table `qv___layout` of the library itself, so that no debug information is needed. What damaged memory holds is told as
# far as it can be read.

import struct

import gdb
import gdb.printing

# A fact of the table, and how many there can be.
LAYOUT = "36si"
FACTS = 64


class Damaged(Exception):
    """Memory that does not hold what it should."""


class Memory:
    """Reads numbers and objects of the process. One is made for each printed value."""

    def __init__(self, facts, order, pointer):
        self.facts = facts
        self.order = order
        self.pointer_format = {4: "I", 8: "Q"}[pointer]
        self.no_pointer = (1 << 8 * pointer) - 1

    def bytes(self, address, size):
        try:
            return bytes(gdb.selected_inferior().read_memory(address, size))
        except (gdb.error, OverflowError, ValueError) as error:
            raise Damaged(f"no memory at {address:#x}") from error

    def number(self, kind, address):
        return struct.unpack(self.order + kind, self.bytes(address, struct.calcsize("=" + kind)))[0]

    def symbol(self, name):
        return int(gdb.parse_and_eval(f"(long)&{name}")) & self.no_pointer

    def field(self, kind, address, name):
        return self.number(kind, address + self.facts[name])

    def pointer(self, address, name):
        return self.field(self.pointer_format, address, name)

    def name(self, address):
        """A short text of ASCII characters that ends with a zero."""
        for length in range(1, 80):
            if self.number("B", address + length - 1) == 0:
                text = self.bytes(address, length - 1).decode("ascii", "replace")
                if text.isprintable():
                    return text
                break
        raise Damaged(f"no name at {address:#x}")

    def sort(self, address):
        """The name of the sort of an object."""
        kind = self.field("Q", address, "QV_OBJ.type")
        if kind == 0:
            sort = self.pointer(address, "QV_OBJ.sort")
            if self.field("Q", sort, "QV_OBJ.type") == 1:
                return self.name(self.pointer(sort, "QV_SORT.name"))
        raise Damaged(f"no object at {address:#x}")

    def objects(self, sort):
        """How many objects of a sort live: what the sort counts itself and what each thread does."""
        total = self.field("I", sort, "QV_SORT.created") - self.field("I", sort, "QV_SORT.ended")
        place = self.field("h", sort, "QV_OBJ.memory")
        table = self.number(self.pointer_format, self.symbol("qv___Counts")) if place > 0 else 0
        while table:
            total += self.number("I", table + 8 * place) - self.number("I", table + 8 * place + 4)
            table = self.pointer(table, "QV___COUNTS.before")
        return total & 0xFFFFFFFF

    def length(self, address, family):
        length = self.field("q", address, family + ".length")
        if length < 0:
            raise Damaged(f"a length of {length}")
        return length

    def dict_items(self, address):
        """The addresses of key and value of each entry of a Dict, in the order of the keys."""
        if self.length(address, "QV_DICT") == 0:
            return
        word = self.field("Q", address, "QV_DICT.hasIndex")
        if word >> self.facts["QV_DICT.hasIndex bit"] & 1:
            index = self.pointer(address, "QV_DICT.index")
            for run in self.run_items(self.pointer(index, "QV___DICT_INDEX.runs")):
                yield from self.run_items(self.pointer(run, "QV___DICT_ITEM.run"))
        else:
            yield from self.run_items(self.pointer(address, "QV_DICT.run"))

    def run_items(self, run):
        size = self.facts["QV___DICT_ITEM"]
        front = self.field("i", run, "QV___DICT_RUN.front")
        length = self.field("i", run, "QV___DICT_RUN.length")
        if front < 0 or length < 0:
            raise Damaged(f"a length of {length}")
        first = run + self.facts["QV___DICT_RUN"] + size * front
        return range(first, first + size * length, size)

    def dict_entries(self, address):
        for item in self.dict_items(address):
            yield self.pointer(item, "QV___DICT_ITEM.key"), self.pointer(item, "QV___DICT_ITEM.val")


def limit():
    """How many elements or characters are printed at most."""
    return gdb.parameter("print elements") or 1 << 60


def quoted(code_points, is_whole):
    charset = gdb.parameter("host-charset")
    charset = "utf-8" if charset in (None, "auto") else charset
    escapes = {0: "\\000", 9: "\\t", 10: "\\n", 13: "\\r", 34: '\\"', 92: "\\\\"}

    def shown(code):
        if code in escapes:
            return escapes[code]
        if code < 0x110000 and not 0xD800 <= code <= 0xDFFF and chr(code).isprintable():
            try:
                chr(code).encode(charset)
                return chr(code)
            except (LookupError, UnicodeError):
                pass
        return f"\\u{code:04x}" if code < 0x10000 else f"\\U{code:08x}"

    return '"' + "".join(map(shown, code_points)) + '"' + ("" if is_whole else "...")


def counted(count, what):
    return f"{count} {what}" if count == 1 else f"{count} {what}s"


# What is said of the value of an object: its text, and what else stands with its sort.


def string_text(memory, address):
    length = memory.length(address, "QV_STRING")
    count = min(length, limit())
    data = memory.bytes(memory.pointer(address, "QV_STRING.first"), 4 * count) if count else b""
    return quoted(struct.unpack(f"{memory.order}{count}I", data), count == length), None


def buffer_text(memory, address):
    bits = memory.length(address, "QV_BUFFER")
    size = (bits + 7) // 8
    count = min(size, limit())
    data = memory.bytes(memory.pointer(address, "QV_BUFFER.first"), count) if count else b""
    text = data.hex(" ") + ("" if count == size else "...")
    return text, counted(bits // 8, "byte") if bits % 8 == 0 else counted(bits, "bit")


def time_text(memory, address):
    fields = [memory.field("q", address, "QV_TIME." + name) for name in "year month day hour minute second".split()]
    return "{:04}-{:02}-{:02} {:02}:{:02}:{:02} UTC".format(*fields), None


def boxed_text(kind, name, shown):
    return lambda memory, address: (shown(memory.field(kind, address, name)), None)


def container_text(family, what):
    return lambda memory, address: (None, counted(memory.length(address, family), what))


def priority_map_text(memory, address):
    return None, counted(memory.length(memory.pointer(address, "QV_PRIORITY_MAP.byPriority"), "QV_DICT"), "object")


def store_text(memory, address):
    values = memory.length(memory.pointer(address, "QV_STORE.values"), "QV_DICT")
    stores = memory.length(memory.pointer(address, "QV_STORE.stores"), "QV_DICT")
    return None, counted(values, "value") + ", " + counted(stores, "sub-store")


TEXTS = {
    "QV_STRING": string_text,
    "QV_BUFFER": buffer_text,
    "QV_TIME": time_text,
    "QV_BOXED_BOOL": boxed_text("i", "QV_BOXED_BOOL.value", lambda value: "true" if value else "false"),
    "QV_BOXED_INT": boxed_text("q", "QV_BOXED_INT.value", str),
    "QV_BOXED_REAL": boxed_text("d", "QV_BOXED_REAL.value", repr),
    "QV_BOXED_NULL": lambda memory, address: ("null", None),
    "QV_VECTOR": container_text("QV_VECTOR", "element"),
    "QV_DICT": container_text("QV_DICT", "item"),
    "QV_RANGE_MAP": container_text("QV_RANGE_MAP", "range"),
    "QV_PRIORITY_MAP": priority_map_text,
    "QV_STORE": store_text,
}


def description(memory, address):
    if address == 0:
        return "NULL"
    if address == memory.no_pointer:
        return f"<given up>"
    try:
        kind = memory.field("Q", address, "QV_OBJ.type")
        if kind == 1:
            objects = counted(memory.objects(address), "object")
            return f"<sort {memory.name(memory.pointer(address, 'QV_SORT.name'))}, {objects}>"
        if kind == 2:
            record = memory.pointer(address, "QV_MODULE.moduleRecord")
            return f"<module {memory.name(memory.pointer(record, 'QV_MODULE_RECORD.name'))}>"

        sort = memory.sort(address)
        marks = [sort, counted(memory.field("i", address, "QV_OBJ.retainCount"), "reference")]
    except Damaged as damage:
        return f"<damaged: {damage}>"

    text = more = None
    try:
        if sort in TEXTS:
            text, more = TEXTS[sort](memory, address)
    except Damaged as damage:
        more = f"damaged: {damage}"
    if more:
        marks.append(more)
    return (text + " " if text else "") + "<" + ", ".join(marks) + ">"


# The parts of an object, as pairs of a name and the address of an object or a text. A map's come as pairs too.


def vector_parts(memory, address):
    first = memory.pointer(address, "QV_VECTOR.first")
    size = struct.calcsize("=" + memory.pointer_format)
    for i in range(memory.length(address, "QV_VECTOR")):
        yield f"[{i}]", memory.number(memory.pointer_format, first + size * i)


def dict_parts(memory, address):
    for i, (key, value) in enumerate(memory.dict_entries(address)):
        yield f"key {i}", key
        yield f"value {i}", value


def range_map_parts(memory, address):
    first = memory.pointer(address, "QV_RANGE_MAP.first")
    size = memory.facts["QV___RANGE_MAP_ENTRY"]
    for i in range(memory.length(address, "QV_RANGE_MAP")):
        entry = first + size * i
        start = memory.field("q", entry, "QV___RANGE_MAP_ENTRY.startingKey")
        end = memory.field("q", entry, "QV___RANGE_MAP_ENTRY.endingKey")
        yield f"[{start}..{end}]", memory.pointer(entry, "QV___RANGE_MAP_ENTRY.value")


def priority_map_parts(memory, address):
    for entry, obj in memory.dict_entries(memory.pointer(address, "QV_PRIORITY_MAP.byPriority")):
        yield f"[{memory.field('q', entry, 'QV___PRIORITY_MAP_ENTRY.priority')}]", obj


def store_parts(memory, address):
    """Values as `address`, sub-stores as `address.`, in the order of the addresses."""
    def table(name, mark):
        for key, value in memory.dict_entries(memory.pointer(address, name)):
            yield string_text(memory, key)[0].strip('"') + mark, value

    values, stores = table("QV_STORE.values", ""), table("QV_STORE.stores", ".")
    value, store = next(values, None), next(stores, None)
    while value or store:
        if store is None or (value and value[0] + "." <= store[0]):
            yield value
            value = next(values, None)
        else:
            yield store
            store = next(stores, None)


PARTS = {
    "QV_VECTOR": (vector_parts, "array"),
    "QV_DICT": (dict_parts, "map"),
    "QV_RANGE_MAP": (range_map_parts, None),
    "QV_PRIORITY_MAP": (priority_map_parts, None),
    "QV_STORE": (store_parts, None),
}


class Printer:
    def __init__(self, memory, address):
        self.memory = memory
        self.address = address

    def to_string(self):
        return description(self.memory, self.address)


class ContainerPrinter(Printer):
    def __init__(self, memory, address, pointer_type, parts, hint):
        super().__init__(memory, address)
        self.pointer_type = pointer_type
        self.parts = parts
        self.hint = hint

    def display_hint(self):
        return self.hint

    def children(self):
        try:
            for name, address in self.parts(self.memory, self.address):
                yield name, gdb.Value(address).cast(self.pointer_type)
        except Damaged as damage:
            yield "damaged", str(damage)


class Lookup(gdb.printing.PrettyPrinter):
    """Finds what prints a value, for one loaded library."""

    def __init__(self):
        super().__init__("libmorvane-qv")
        self.facts = None

    def memory(self):
        pointer = gdb.lookup_type("void").pointer().sizeof
        one = gdb.Value(b"\1\0", gdb.lookup_type("short"))
        memory = Memory(self.facts, "<" if int(one) == 1 else ">", pointer)
        if self.facts is None:
            table = memory.bytes(memory.symbol("qv___layout"), struct.calcsize(LAYOUT) * FACTS)
            facts = struct.iter_unpack(memory.order + LAYOUT, table)
            memory.facts = self.facts = {name.rstrip(b"\0").decode(): value for name, value in facts}
        return memory

    def __call__(self, value):
        try:
            value = pointer_of(value)
            return printer(self.memory(), int(value), value.type) if value is not None else None
        except (Damaged, gdb.error):
            return None  # as gdb prints it without this


def printer(memory, address, pointer_type):
    address &= memory.no_pointer
    try:
        parts, hint = PARTS[memory.sort(address)]
        return ContainerPrinter(memory, address, pointer_type, parts, hint)
    except (Damaged, KeyError):
        return Printer(memory, address)


def pointer_of(value):
    """The pointer to an object that a value is or, as those of C++ do, has; else None."""
    value_type = value.type.strip_typedefs()
    if value_type.code == gdb.TYPE_CODE_STRUCT:
        fields = value_type.fields()
        if fields and fields[0].is_base_class and (fields[0].type.name or "").startswith("qv::Reference<"):
            return pointer_of(value[fields[0]]["object_"])
    elif value_type.code == gdb.TYPE_CODE_PTR and is_object(value_type.target()):
        return value
    return None


def is_object(target):
    """Whether a structure begins with the header of objects, or could: those that are opaque go by their names."""
    target = target.unqualified().strip_typedefs()
    while target.code == gdb.TYPE_CODE_STRUCT:
        if target.name == "QV_OBJ":
            return True
        fields = [field for field in target.fields() if hasattr(field, "bitpos")]  # but for static members
        if not fields:
            return (target.name or "").startswith("QV_")
        target = fields[0].type.strip_typedefs()
    return False


class Objects(gdb.Command):
    """List the live objects of libmorvane-qv.

Usage: qv-objects [SORT]
Without a sort: all sorts that have objects, and how many. With one: its objects, the oldest first, at most as many as
`show print elements` says. There are lists only in a run that was started with QV_RUNTIME_FLAG_OBJECT_DATABASE."""

    def __init__(self, lookup):
        super().__init__("qv-objects", gdb.COMMAND_DATA)
        self.lookup = lookup

    def invoke(self, argument, from_tty):
        try:
            memory = self.lookup.memory()
            module = memory.symbol("qv___module")
            first = memory.pointer(module, "QV_MODULE.sortsFirst")
            if first == 0:
                raise gdb.GdbError("There are no lists of objects: see `help qv-objects`.")
            for sort in self.walk(memory, first, "QV_SORT.sortsNext"):
                name = memory.name(memory.pointer(sort, "QV_SORT.name"))
                if not argument:
                    print(f"{memory.objects(sort):8} {name}")
                elif argument == name:
                    for obj in self.walk(memory, memory.pointer(sort, "QV_SORT.odbFirst"), "QV_OBJ.odbNext"):
                        print(f"{obj:#x} {description(memory, obj)}")
        except Damaged as damage:
            raise gdb.GdbError(str(damage)) from damage

    @staticmethod
    def walk(memory, address, link):
        steps = limit()
        while address and steps:
            yield address
            address = memory.pointer(address, link)
            steps -= 1


def register(objfile):
    lookup = Lookup()
    gdb.printing.register_pretty_printer(objfile, lookup, replace=True)
    Objects(lookup)


register(gdb.current_objfile())
