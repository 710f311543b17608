"""GDB's views of the containers, strings and values of kxcore, and its own forms of their simplest functions.

This file is stored beside the library as libkxbase.so.<version>-gdb.py. GDB runs it when it loads the library, if the
folder is on its list of safe paths (docs/debugger.md). To load it by hand: source tools/gdb/kxcore.py.

A view only reads memory and calls nothing in the program, so it also works on a core file. Counts come from the object
itself. GDB's `set print elements` limits what is shown, so garbage in an uninitialised variable does no harm.

The functions, `array[1]`, `map.Size()`, `*it` and a few more, read memory too. They replace those of the program, which
the compiler has inlined or never compiled.
"""

import itertools
import re

import gdb
import gdb.printing
import gdb.xmethod

PRINTERS = gdb.printing.RegexpCollectionPrettyPrinter("kxcore")


def view_of(*names):
    """Registers a view for the classes of these names, and for templates with any arguments."""

    def register(view):
        for name in names:
            PRINTERS.add_printer(name, r"^%s(<.*>)?$" % name, view)
        return view

    return register


def address(pointer):
    return int(pointer.cast(gdb.lookup_type("unsigned long")))


def at(place, element_type):
    """The object of that type at the address place, a number."""
    return gdb.Value(place).cast(element_type.pointer()).dereference()


def round_up(size, alignment):
    return (size + alignment - 1) // alignment * alignment


def numbered(elements):
    return (("[%d]" % index, element) for index, element in enumerate(elements))


def keys_and_values(pairs):
    """The children of a map as GDB expects them: keys and values in turn."""
    for index, pair in enumerate(pairs):
        yield "[%d]" % (2 * index), pair["m_key"]
        yield "[%d]" % (2 * index + 1), pair["m_value"]


def base_named(value_type, name):
    """The base class of that name, at any distance, or the type itself."""
    value_type = value_type.strip_typedefs()
    while not re.match(r"^%s<" % re.escape(name), value_type.name or ""):
        value_type = next(field.type.strip_typedefs() for field in value_type.fields() if field.is_base_class)
    return value_type


class Container:
    """Shows a container's name and number of elements, then the elements. A view defines size() and elements()."""

    hint = "array"

    def __init__(self, value):
        self.value = value
        self.name = value.type.strip_typedefs().name.split("<")[0]

    def to_string(self):
        return "%s of %d" % (self.name, self.size())

    def size(self):
        return int(self.value["m_nSize"])

    def children(self):
        elements = itertools.islice(self.elements(), max(self.size(), 0))
        return keys_and_values(elements) if self.hint == "map" else numbered(elements)

    def display_hint(self):
        return self.hint


@view_of("TArray")
class Array(Container):
    def count(self, end):
        first = self.value["m_pBegin"]
        return (address(self.value[end]) - address(first)) // first.type.target().sizeof

    def size(self):
        return self.count("m_pEnd") if 0 <= self.count("m_pEnd") <= self.room() else -1

    def room(self):
        return self.count("m_pCapacityEnd")

    def to_string(self):
        if self.size() < 0:
            return "TArray, not initialised"
        return "TArray of %d, room for %d" % (self.size(), self.room())

    def elements(self):
        first = self.value["m_pBegin"]
        return ((first + index).dereference() for index in range(self.size()))


@view_of("TMaxArray")
class MaxArray(Container):
    def room(self):
        return int(self.value.type.strip_typedefs().template_argument(1))

    def to_string(self):
        if self.size() > self.room():
            return "TMaxArray, not initialised"
        return "TMaxArray of %d, room for %d" % (self.size(), self.room())

    def elements(self):
        count = self.size() if self.size() <= self.room() else 0
        return (self.value["m_aElements"][index] for index in range(count))


@view_of("TBlockArray")
class BlockArray(Container):
    def elements(self):
        block_size = int(self.value["m_nBlockSize"])
        slots = int(self.value["m_nBlocks"]) * block_size
        for index in range(self.size()):
            block, place = divmod((int(self.value["m_nFirst"]) + index) % slots, block_size)
            yield self.value["m_ppBlocks"][block][place]


class Nodes(Container):
    """A container of nodes. A view defines nodes(), the addresses of the nodes, and offset(), that of the element in
    its node."""

    def element_type(self):
        return self.value.type.strip_typedefs().template_argument(0)

    def elements(self):
        element_type = self.element_type()
        return (at(node + self.offset(element_type), element_type) for node in self.nodes())


@view_of("TList", "TSList")
class List(Nodes):
    def offset(self, element_type):
        return round_up(self.links().type.sizeof, element_type.alignof)

    def links(self):
        return self.value["m_sentinel" if self.name == "TList" else "m_head"]

    def nodes(self):
        link = self.links()["m_pNext"]
        while True:
            yield address(link)
            link = link["m_pNext"]


@view_of("TRedBlackTree", "TSet", "TMultiSet")
class Tree(Nodes):
    def element_type(self):
        return base_named(self.value.type, "kx::detail::TOrderedTree").template_argument(0)

    def offset(self, element_type):
        # The distance from a node to its element is that from the tree object to its number of elements.
        return address(self.value["m_nSize"].address) - address(self.value["m_links"].address)

    def nodes(self):
        node = self.value["m_links"]["m_pChild"][0]
        while node["m_pChild"][0]:
            node = node["m_pChild"][0]
        while True:
            yield address(node)
            if node["m_pChild"][1]:
                node = node["m_pChild"][1]
                while node["m_pChild"][0]:
                    node = node["m_pChild"][0]
            else:
                while node["m_pParent"]["m_pChild"][0] != node:
                    node = node["m_pParent"]
                node = node["m_pParent"]


@view_of("TMap", "TMultiMap")
class TreeMap(Tree):
    hint = "map"


@view_of("THashSet")
class Hash(Container):
    def elements(self):
        for bucket in range(int(self.value["m_nBucketCount"])):
            index = int(self.value["m_pBuckets"][bucket])
            while index != 0xFFFFFFFF:
                node = self.value["m_pNodes"][index]
                yield node["m_element"]
                index = int(node["m_nNext"])


@view_of("THashMap", "TMultiHashMap")
class HashMap(Hash):
    hint = "map"


def text_at(pointer, length):
    return pointer.cast(gdb.lookup_type("char").const().pointer()).lazy_string(length=length)


@view_of("ZString")
class String:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return text_at(self.value["m_pChars"], int(self.value["m_nLength"]) & 0x7FFFFFFF)

    def display_hint(self):
        return "string"


@view_of("ZStackString", "ZStackStringBase")
class StackString:
    """Works with addresses, because the program's debug information may lack the base class, whose key function is in
    the library. The number of characters and the characters follow the pointer to the virtual functions."""

    def __init__(self, value):
        self.place = address(value.address)

    def to_string(self):
        text = gdb.Value(self.place + 12).cast(gdb.lookup_type("char").pointer())
        return text_at(text, int(at(self.place + 8, gdb.lookup_type("unsigned int"))))

    def display_hint(self):
        return "string"


class Position:
    """Shows an iterator or an enumerator. A view defines state(), which says where it is, and element(), which returns
    the element there or None."""

    kind = "iterator"
    child = "element"

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return self.kind + self.state()

    def state(self):
        return " at the end" if self.element() is None else ""

    def children(self):
        element = self.element()
        if element is not None:
            yield self.child, element


@view_of("kx::detail::TNodeIterator")
class NodeIterator(Position):
    """The end of a TList looks like an element, because nothing distinguishes the sentinel of a ring from a node."""

    def element(self):
        element = self.value["m_pElement"]
        links = self.value.type.strip_typedefs().template_argument(1)
        node = address(element) - round_up(links.sizeof, element.type.target().alignof)
        if node <= 0 or (links.name.endswith("TreeLinks") and not at(node, links)["m_pParent"]):
            return None
        return element.dereference()


@view_of("TBlockArrayIterator")
class BlockArrayIterator(Position):
    def state(self):
        return " at the end" if self.element() is None else " at %d" % int(self.value["m_nIndex"])

    def element(self):
        return self.value["m_pElement"].dereference() if self.value["m_pElement"] else None


@view_of("kx::detail::THashIterator")
class HashIterator(Position):
    def element(self):
        return self.value["m_pCurrent"].dereference() if self.value["m_pCurrent"] else None


class Enumerator(Position):
    kind = "enumerator"
    child = "current"


@view_of("kx::detail::TNodeEnumerator", "TTreeValueEnumerator")
class NodeEnumerator(Enumerator):
    def state(self):
        return " before the first or past the last" if self.element() is None else ""

    def element(self):
        current = self.value["m_pCurrent"]
        return current.dereference() if current != self.value["m_pEnd"] else None


@view_of("kx::detail::THashEnumerator")
class HashEnumerator(Enumerator):
    def state(self):
        if self.element() is not None:
            return ""
        return " before the first" if int(self.value["m_nBucket"]) == 0xFFFFFFFF else " past the last"

    def element(self):
        return self.value["m_pCurrent"].dereference() if self.value["m_pCurrent"] else None


@view_of("TBlockArrayEnumerator")
class BlockArrayEnumerator(Enumerator):
    def state(self):
        if int(self.value["m_nIndex"]) == 0xFFFFFFFF:
            return " before the first"
        return " past the last" if self.element() is None else " at %d" % int(self.value["m_nIndex"])

    def element(self):
        return self.value["m_pElement"].dereference() if self.value["m_pElement"] else None


@view_of("TArrayEnumerator")
class ArrayEnumerator(Enumerator):
    """Shows the next element, because an enumerator does not know whether it is still before the first."""

    child = "next"

    def to_come(self):
        current = self.value["m_pCurrent"]
        size = current.type.target().sizeof
        return max((address(self.value["m_pEnd"]) - address(current)) // size - 1, 0)

    def state(self):
        return ", %d to come" % self.to_come()

    def element(self):
        return (self.value["m_pCurrent"] + 1).dereference() if self.to_come() else None

    def current(self):
        return self.value["m_pCurrent"].dereference() if self.value["m_pCurrent"] != self.value["m_pEnd"] else None


@view_of("ZGuid")
class Guid:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        digits = b"".join(int(self.value[half]).to_bytes(8, "little") for half in ("m_nLow", "m_nHigh")).hex()
        return "-".join((digits[:8], digits[8:12], digits[12:16], digits[16:20], digits[20:]))


@view_of("Version")
class Version:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return ".".join(str(int(self.value[part])) for part in ("major", "minor", "patch", "build"))


@view_of("ZRuntimeResourceID")
class RuntimeResourceID:
    def __init__(self, value):
        self.number = int(value["m_nHigh"]) << 32 | int(value["m_nLow"])

    def to_string(self):
        return "no resource" if self.number == 0xFFFFFFFFFFFFFFFF else "resource %d" % self.number


# The built-in types, by their number in a record.
KINDS = {
    2: "signed char",
    3: "short",
    4: "int",
    5: "long",
    6: "unsigned char",
    7: "unsigned short",
    8: "unsigned int",
    9: "unsigned long",
    11: "float",
    12: "double",
    20: "bool",
    32: "ZString",
}
ARRAY = "TArray<ZDynamicObject>"
OBJECT = "TArray<SDynamicObjectKeyValuePair>"


def type_name(identity):
    """The name of the type of this identity, None for no type. An identity begins like the record of a module."""
    if not identity:
        return None
    record = identity.cast(gdb.lookup_type("STypeIDData").pointer())
    kind = int(record["m_nKind"]) >> 16
    if kind in KINDS:
        return KINDS[kind]
    # The symbol of the record's function contains the name of the type, because the function belongs to its slot.
    found = re.search(r"<TTypeSlot<(.*)>::Name\(\)>", record["m_pfnName"].format_string(symbols=True))
    if found:
        return found.group(1).strip()
    # The first module that named the type has no symbols. The program's own slots still identify the types of trees.
    for name in (ARRAY, OBJECT):
        slot = gdb.lookup_global_symbol("TTypeSlot<%s >::ms_pSlot" % name)
        if slot is not None and address(slot.value()) == address(identity):
            return name
    return "a type without a symbol"


def held_value(variant, name):
    """The value that a variant refers to, or None if the program's debug information does not have its type."""
    try:
        return variant["m_pData"].cast(gdb.lookup_type(name).pointer()).dereference()
    except gdb.error:
        return None


@view_of("ZObjectRef", "ZVariantRef", "ZVariant")
class Variant:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        name = type_name(self.value["m_pType"])
        return "%s of %s" % (self.value.type.strip_typedefs().name, name or "nothing")

    def children(self):
        name = type_name(self.value["m_pType"])
        if name is not None:
            value = tree(self.value) if name in (ARRAY, OBJECT) else held_value(self.value, name)
            yield "value", self.value["m_pData"] if value is None else value


def tree(variant):
    """The variant as a ZDynamicObject, which consists of the same two pointers."""
    return variant.address.cast(gdb.lookup_type("ZDynamicObject").pointer()).dereference()


@view_of("ZDynamicObject")
class DynamicObject:
    def __init__(self, value):
        self.value = value
        try:
            self.name = type_name(value["m_pType"])
        except gdb.error:
            self.name = "no type"

    def to_string(self):
        if self.name is None:
            return "null"
        if self.name == ARRAY:
            return "array of %d" % len(self.nodes())
        if self.name == OBJECT:
            return "object of %d" % len(self.nodes())
        held = held_value(self.value, self.name)
        return "%s at %s" % (self.name, self.value["m_pData"]) if held is None else held

    def nodes(self):
        """The addresses of the elements or properties. A node begins with the three pointers of their array."""
        pointers = self.value["m_pData"].cast(gdb.lookup_type("unsigned long").pointer())
        return range(int(pointers[0]), int(pointers[1]), 16 if self.name == ARRAY else 32)

    def children(self):
        value_type = self.value.type.strip_typedefs().unqualified()
        if self.name == ARRAY:
            for index, node in enumerate(self.nodes()):
                yield "[%d]" % index, at(node, value_type)
        elif self.name == OBJECT:
            # A property consists of its key, then its value.
            for index, node in enumerate(self.nodes()):
                yield "[%d]" % (2 * index), at(node, gdb.lookup_type("ZString"))
                yield "[%d]" % (2 * index + 1), at(node + 16, value_type)

    def display_hint(self):
        return {ARRAY: "array", OBJECT: "map"}.get(self.name)


def element_number(view, index):
    index = int(index)
    if not 0 <= index < view.size():
        raise gdb.GdbError("There is no element %d: the size is %d." % (index, view.size()))
    return next(itertools.islice(view.elements(), index, None))


def element_of(view):
    element = view.element()
    if element is None:
        raise gdb.GdbError("There is no element here: %s." % view.to_string())
    return element


def current_of(view):
    current = view.current() if isinstance(view, ArrayEnumerator) else view.element()
    if current is None:
        raise gdb.GdbError("There is no element here: %s." % view.to_string())
    return current


def length_of(view):
    return gdb.Value(int(view.value["m_nLength"]) & 0x7FFFFFFF)


# The functions of each kind of view, by their names: the type of the argument if there is one, and what computes the
# result from the view.
FUNCTIONS = (
    ((Array, MaxArray, BlockArray), {"operator[]": ("unsigned long", element_number)}),
    ((Container,), {"Size": (None, lambda view: gdb.Value(view.size()))}),
    ((Container,), {"IsEmpty": (None, lambda view: gdb.Value(view.size() == 0))}),
    ((Position,), {"operator*": (None, element_of), "operator->": (None, lambda view: element_of(view).address)}),
    ((Enumerator,), {"Current": (None, current_of)}),
    ((String,), {"Length": (None, length_of), "ToCString": (None, lambda view: view.value["m_pChars"])}),
)


class Function(gdb.xmethod.XMethodWorker):
    def __init__(self, view, argument, compute):
        self.view, self.argument, self.compute = view, argument, compute

    def get_arg_types(self):
        return [gdb.lookup_type(self.argument)] if self.argument else []

    def __call__(self, value, *arguments):
        # GDB passes the object or, like a function, its address.
        if value.type.code in (gdb.TYPE_CODE_PTR, gdb.TYPE_CODE_REF):
            value = value.referenced_value()
        return self.compute(self.view(value), *arguments)


class Functions(gdb.xmethod.XMethodMatcher):
    def __init__(self):
        super().__init__("kxcore")
        self.methods = []

    def match(self, class_type, name):
        class_name = class_type.strip_typedefs().unqualified().name or ""
        view = next((p.gen_printer for p in PRINTERS.subprinters if p.compiled_re.search(class_name)), None)
        for kinds, functions in FUNCTIONS:
            if view is not None and issubclass(view, kinds) and name in functions:
                return Function(view, *functions[name])
        return None


gdb.xmethod.register_xmethod_matcher(gdb.current_objfile(), Functions(), replace=True)
gdb.printing.register_pretty_printer(gdb.current_objfile(), PRINTERS, replace=True)
