"""LLDB's views of the containers, strings and values of kxcore.

Load them with `command script import <path of this file>`; docs/debugger.md says where it is installed.

A view only reads memory and calls nothing in the program, so it also works on a core file. Elements are found when they
are shown, and never more of them than the count in the object, so a large or an uninitialised container costs nothing.
"""

import re
import struct

import lldb

NO_INDEX = 0xFFFFFFFF
VIEWS = []


def view_of(*names):
    """Registers a view for the classes of these names, and for templates with any arguments."""

    def register(view):
        VIEWS.extend((name, re.compile(r"^%s(<.*>)?$" % name), view) for name in names)
        return view

    return register


class Memory:
    """The memory of the program that a value belongs to. What cannot be read is 0."""

    def __init__(self, value):
        self.process = value.GetProcess()

    def bytes(self, address, size):
        if not (0 < size <= 1 << 20 and 0 < address < 1 << 64):
            return b""
        return self.process.ReadMemory(address, size, lldb.SBError()) or b""

    def unpack(self, layout, address):
        size = struct.calcsize(layout)
        return struct.unpack(layout, self.bytes(address, size).ljust(size, b"\0"))

    def pointer(self, address):
        return self.unpack("<Q", address)[0]


def class_of(value_type):
    return value_type.GetCanonicalType().GetUnqualifiedType()


def field(value, name):
    return value.GetChildMemberWithName(name)


def number(value, name):
    return field(value, name).GetValueAsUnsigned()


def alignment(value_type):
    """The natural alignment of a type. The debug information has no alignas."""
    value_type = value_type.GetCanonicalType()
    if value_type.IsArrayType():
        return alignment(value_type.GetArrayElementType())
    if value_type.GetTypeClass() not in (lldb.eTypeClassClass, lldb.eTypeClassStruct, lldb.eTypeClassUnion):
        return max(value_type.GetByteSize(), 1)
    parts = [value_type.GetFieldAtIndex(i).GetType() for i in range(value_type.GetNumberOfFields())]
    parts += [value_type.GetDirectBaseClassAtIndex(i).GetType() for i in range(value_type.GetNumberOfDirectBaseClasses())]
    return max([8 if value_type.IsPolymorphicClass() else 1] + [alignment(part) for part in parts])


def offset_in_node(value, links, element_type):
    """The offset of the element in a node with such links: that of a node's field, or what the alignment makes it."""
    name = {"SListLinks": "SListNode", "SSListLink": "SSListNode", "SRedBlackTreeLinks": "SRedBlackTreeNode"}
    name = "%s<%s>" % (name[links.GetName().split("::")[-1]], class_of(element_type).GetName())
    node = value.GetTarget().FindFirstType(name)
    for i in range(node.GetNumberOfFields()):
        if node.GetFieldAtIndex(i).GetName() == "m_Element":
            return node.GetFieldAtIndex(i).GetOffsetInBytes()
    step = alignment(element_type)
    return (links.GetByteSize() + step - 1) // step * step


class View:
    """The base of all views. A view may define text(), which is the summary, and children(), pairs of names and
    places: an address and a type."""

    def __init__(self, value, _=None):
        value = value.GetNonSyntheticValue()
        self.address = value.GetLoadAddress()
        self.value = value
        if value.GetType().IsReferenceType():
            # SBValue.Dereference cannot do it if the debug information lacks the class.
            self.address = value.GetValueAsUnsigned()
            self.value = value.CreateValueFromAddress(
                value.GetName(), self.address, value.GetType().GetDereferencedType()).GetNonSyntheticValue()
        self.type = class_of(self.value.GetType())
        self.memory = Memory(value)
        self.target = value.GetTarget()
        self.update()

    def update(self):
        self.found = []
        self.walk = self.children()
        return False

    def text(self):
        return None

    def children(self):
        return iter(())

    def size(self):
        """The number of children. For a container this costs no walk."""
        return sum(1 for _ in self.children())

    # What LLDB calls.

    def num_children(self):
        return self.size()

    def has_children(self):
        return self.size() > 0

    def get_child_index(self, name):
        for index in range(self.num_children()):
            child = self.get_child_at_index(index)
            if child is None or child.GetName() == name:
                return index if child else -1
        return -1

    def get_child_at_index(self, index):
        while len(self.found) <= index:
            try:
                name, address, value_type = next(self.walk)
            except StopIteration:
                return None
            self.found.append(self.value.CreateValueFromAddress(name, address, value_type))
        return self.found[index]


class Container(View):
    """Shows a container's name and number of elements. A view defines elements(), the addresses of the elements."""

    def text(self):
        return "%s of %d" % (self.type.GetName().split("<")[0], self.size())

    def size(self):
        return number(self.value, "m_nSize")

    def element_type(self):
        return self.type.GetTemplateArgumentType(0)

    def children(self):
        element_type = self.element_type()
        for index, address in zip(range(self.size()), self.elements()):
            yield "[%d]" % index, address, element_type


@view_of("TArray")
class Array(Container):
    def count(self, end):
        return (number(self.value, end) - number(self.value, "m_pBegin")) // self.element_type().GetByteSize()

    def size(self):
        return self.count("m_pEnd") if 0 <= self.count("m_pEnd") <= self.count("m_pCapacityEnd") else 0

    def text(self):
        return "TArray of %d, room for %d" % (self.size(), self.count("m_pCapacityEnd"))

    def elements(self):
        first, step = number(self.value, "m_pBegin"), self.element_type().GetByteSize()
        return (first + index * step for index in range(self.size()))


@view_of("TMaxArray")
class MaxArray(Container):
    def room(self):
        return field(self.value, "m_aElements").GetType().GetByteSize() // self.element_type().GetByteSize()

    def size(self):
        return min(number(self.value, "m_nSize"), self.room())

    def text(self):
        return "TMaxArray of %d, room for %d" % (self.size(), self.room())

    def elements(self):
        step = self.element_type().GetByteSize()
        return (self.address + index * step for index in range(self.size()))


@view_of("TBlockArray")
class BlockArray(Container):
    def elements(self):
        first, blocks, block_size = (number(self.value, name) for name in ("m_nFirst", "m_nBlocks", "m_nBlockSize"))
        table, step = number(self.value, "m_ppBlocks"), self.element_type().GetByteSize()
        for index in range(self.size() if blocks * block_size else 0):
            block, place = divmod((first + index) % (blocks * block_size), block_size)
            yield self.memory.pointer(table + 8 * block) + place * step


@view_of("TList", "TSList")
class List(Container):
    def elements(self):
        links = field(self.value, "m_sentinel")
        links = links if links.IsValid() else field(self.value, "m_head")
        offset = offset_in_node(self.value, links.GetType(), self.element_type())
        node = links.GetLoadAddress()
        while True:
            node = self.memory.pointer(node)
            yield node + offset


class Keyed(Container):
    """Shows the elements of a set, or the values of a map under their keys."""

    def children(self):
        for index, address in zip(range(self.size()), self.elements()):
            element = self.value.CreateValueFromAddress("[%d]" % index, address, self.element_type())
            key, value = field(element, "m_key"), field(element, "m_value")
            if element.GetType().GetName().startswith("TKeyValuePair<"):
                yield "[%s]" % shown(key), value.GetLoadAddress(), value.GetType()
            else:
                yield element.GetName(), address, element.GetType()


@view_of("TRedBlackTree", "TSet", "TMultiSet", "TMap", "TMultiMap")
class Tree(Keyed):
    def element_type(self):
        base = self.type
        while not base.GetName().startswith("kx::detail::TOrderedTree<"):
            base = class_of(base.GetDirectBaseClassAtIndex(0).GetType())
        return base.GetTemplateArgumentType(0)

    def elements(self):
        # The distance from a node to its element is that from the tree object to its number of elements.
        header = field(self.value, "m_links").GetLoadAddress()
        offset = field(self.value, "m_nSize").GetLoadAddress() - header
        parent, left, right = 8, 16, 24
        node = header
        for _ in range(self.size()):
            following = self.memory.pointer(node + right)
            if following:
                while self.memory.pointer(following + left):
                    following = self.memory.pointer(following + left)
            else:
                child, following = node, self.memory.pointer(node + parent)
                while following and self.memory.pointer(following + left) != child:
                    child, following = following, self.memory.pointer(following + parent)
            node = following
            yield node + offset


@view_of("THashSet", "THashMap", "TMultiHashMap")
class Hash(Keyed):
    def node_type(self):
        return field(self.value, "m_pNodes").GetType().GetPointeeType()

    def element_type(self):
        return self.node_type().GetFieldAtIndex(1).GetType()

    def elements(self):
        step, offset = self.node_type().GetByteSize(), self.node_type().GetFieldAtIndex(1).GetOffsetInBytes()
        buckets, nodes = number(self.value, "m_pBuckets"), number(self.value, "m_pNodes")
        for bucket in range(number(self.value, "m_nBucketCount")):
            index = self.memory.unpack("<I", buckets + 4 * bucket)[0]
            while index != NO_INDEX:
                yield nodes + index * step + offset
                index = self.memory.unpack("<I", nodes + index * step)[0]


def quoted(text):
    text = text.decode("utf-8", "backslashreplace")
    return '"%s"' % text.translate({ord('"'): '\\"', ord("\\"): "\\\\", ord("\n"): "\\n", ord("\t"): "\\t"})


def shown(value):
    """A value in one line: its summary or its value."""
    return value.GetSummary() or value.GetValue() or value.GetType().GetName()


@view_of("ZString")
class String(View):
    def text(self):
        length, characters = self.memory.unpack("<I4xQ", self.address)
        return quoted(self.memory.bytes(characters, length & 0x7FFFFFFF))


@view_of("ZStackString", "ZStackStringBase")
class StackString(String):
    """Works with addresses, because the program's debug information may lack the base class, whose key function is in
    the library. The number of characters and the characters follow the pointer to the virtual functions."""

    def text(self):
        return quoted(self.memory.bytes(self.address + 12, self.memory.unpack("<I", self.address + 8)[0]))


class Position(View):
    """Shows an iterator or an enumerator. A view defines state(), which says where it is, and place(), the address of
    the element there or 0."""

    kind, child = "iterator", "element"

    def text(self):
        return self.kind + self.state()

    def state(self):
        return "" if self.place() else " at the end"

    def pointer(self):
        return field(self.value, "m_pCurrent" if field(self.value, "m_pCurrent").IsValid() else "m_pElement")

    def place(self):
        return self.pointer().GetValueAsUnsigned()

    def children(self):
        if self.place():
            yield self.child, self.place(), self.pointer().GetType().GetPointeeType()


@view_of("kx::detail::TNodeIterator")
class NodeIterator(Position):
    """The end of a TList looks like an element, because nothing distinguishes the sentinel of a ring from a node."""

    def place(self):
        element, links = super().place(), self.type.GetTemplateArgumentType(1)
        node = element - offset_in_node(self.value, links, self.pointer().GetType().GetPointeeType())
        is_header = links.GetName().endswith("TreeLinks") and not self.memory.pointer(node + 8)
        return 0 if node <= 0 or is_header else element


@view_of("kx::detail::THashIterator")
class HashIterator(Position):
    pass


@view_of("TBlockArrayIterator")
class BlockArrayIterator(Position):
    def state(self):
        return " at %d" % number(self.value, "m_nIndex") if self.place() else " at the end"


class Enumerator(Position):
    kind, child = "enumerator", "current"


@view_of("kx::detail::TNodeEnumerator", "TTreeValueEnumerator")
class NodeEnumerator(Enumerator):
    def state(self):
        return "" if self.place() else " before the first or past the last"

    def place(self):
        return 0 if super().place() == number(self.value, "m_pEnd") else super().place()


@view_of("kx::detail::THashEnumerator")
class HashEnumerator(Enumerator):
    def state(self):
        if self.place():
            return ""
        return " before the first" if number(self.value, "m_nBucket") == NO_INDEX else " past the last"


@view_of("TBlockArrayEnumerator")
class BlockArrayEnumerator(Enumerator):
    def state(self):
        if number(self.value, "m_nIndex") == NO_INDEX:
            return " before the first"
        return " at %d" % number(self.value, "m_nIndex") if self.place() else " past the last"


@view_of("TArrayEnumerator")
class ArrayEnumerator(Enumerator):
    """Shows the next element, because an enumerator does not know whether it is still before the first."""

    child = "next"

    def step(self):
        return self.pointer().GetType().GetPointeeType().GetByteSize()

    def to_come(self):
        return max((number(self.value, "m_pEnd") - super().place()) // self.step() - 1, 0)

    def state(self):
        return ", %d to come" % self.to_come()

    def place(self):
        return super().place() + self.step() if self.to_come() else 0


@view_of("ZGuid")
class Guid(View):
    def text(self):
        digits = self.memory.bytes(self.address, 16).hex()
        return "-".join((digits[:8], digits[8:12], digits[12:16], digits[16:20], digits[20:]))


@view_of("Version")
class Version(View):
    def text(self):
        return "%d.%d.%d.%d" % self.memory.unpack("<BBHI", self.address)


@view_of("ZRuntimeResourceID")
class RuntimeResourceID(View):
    def text(self):
        high, low = self.memory.unpack("<II", self.address)
        return "no resource" if high == low == 0xFFFFFFFF else "resource %d" % (high << 32 | low)


# The built-in types, by their number in a record.
KINDS = {
    2: lldb.eBasicTypeSignedChar,
    3: lldb.eBasicTypeShort,
    4: lldb.eBasicTypeInt,
    5: lldb.eBasicTypeLong,
    6: lldb.eBasicTypeUnsignedChar,
    7: lldb.eBasicTypeUnsignedShort,
    8: lldb.eBasicTypeUnsignedInt,
    9: lldb.eBasicTypeUnsignedLong,
    11: lldb.eBasicTypeFloat,
    12: lldb.eBasicTypeDouble,
    20: lldb.eBasicTypeBool,
}
STRING_KIND = 32
ARRAY = "TArray<ZDynamicObject>"
OBJECT = "TArray<SDynamicObjectKeyValuePair>"


@view_of("ZObjectRef", "ZVariantRef", "ZVariant")
class Variant(View):
    def update(self):
        self.identity, self.data = self.memory.unpack("<QQ", self.address)
        self.name, self.held = self.held_type() if self.identity else (None, None)
        return super().update()

    def held_type(self):
        """The name of the type that is held, and the type itself if the program's debug information has it. An identity
        begins like the record of a module: the number of the built-in type, and a function that returns the name."""
        kind = self.memory.unpack("<I", self.identity)[0] >> 16
        if kind in KINDS:
            held = self.target.GetBasicType(KINDS[kind])
            return held.GetName(), held
        name = "ZString"
        if kind != STRING_KIND:
            # The symbol of that function contains the name of the type, because the function belongs to its slot.
            function = self.target.ResolveLoadAddress(self.memory.pointer(self.identity + 24))
            symbol = re.search(r"\bTTypeSlot<(.*)>::Name\(\)", str(function))
            name = symbol.group(1).strip() if symbol else "a type without a symbol"
        held = self.target.FindFirstType(name)
        return name, held if held.IsValid() else None

    def text(self):
        return "%s of %s" % (self.type.GetName(), self.name or "nothing")

    def children(self):
        if self.name in (ARRAY, OBJECT):
            yield "value", self.address, self.target.FindFirstType("ZDynamicObject")
        elif self.held is not None:
            yield "value", self.data, self.held


@view_of("ZDynamicObject")
class DynamicObject(Variant):
    def nodes(self):
        """The addresses of the elements or properties. A node begins with the three pointers of their array."""
        first, end = self.memory.unpack("<QQ", self.data)
        return range(first, end, 16 if self.name == ARRAY else 32)

    def text(self):
        if self.name in (ARRAY, OBJECT):
            return "%s of %d" % ("array" if self.name == ARRAY else "object", len(self.nodes()))
        if self.held is None:
            return "%s at 0x%x" % (self.name, self.data) if self.name else "null"
        held = self.value.CreateValueFromAddress("value", self.data, self.held)
        return held.GetSummary() or held.GetValue() or self.name

    def size(self):
        return len(self.nodes()) if self.name in (ARRAY, OBJECT) else super().size()

    def children(self):
        if self.name == ARRAY:
            for index, node in enumerate(self.nodes()):
                yield "[%d]" % index, node, self.type
        elif self.name == OBJECT:
            # A property consists of its key, then its value.
            for node in self.nodes():
                key = self.value.CreateValueFromAddress("key", node, self.target.FindFirstType("ZString"))
                yield "[%s]" % shown(key), node + 16, self.type
        elif self.held is not None:
            held = self.value.CreateValueFromAddress("value", self.data, self.held)
            for index in range(held.GetNumChildren() if self.name != "ZString" else 0):
                child = held.GetChildAtIndex(index)
                if child.GetLoadAddress() != lldb.LLDB_INVALID_ADDRESS:
                    yield child.GetName(), child.GetLoadAddress(), child.GetType()


def summary(value, _):
    """The summary of a value of any class that has a view."""
    value = value.GetNonSyntheticValue()
    value_type = value.GetType().GetDereferencedType() if value.GetType().IsReferenceType() else value.GetType()
    name = class_of(value_type).GetName()
    return next(view for _, pattern, view in VIEWS if pattern.match(name))(value).text()


def __lldb_init_module(debugger, _):
    for name, _, view in VIEWS:
        options = "--category kxcore --skip-pointers --regex '^(const )?%s(<.*>)?( &)?$'" % name
        debugger.HandleCommand("type summary add --expand --python-function %s.summary %s" % (__name__, options))
        debugger.HandleCommand("type synthetic add --python-class %s.%s %s" % (__name__, view.__name__, options))
    debugger.HandleCommand("type category enable kxcore")
