"""Checks the views of a natvis file. GDB runs this while the program is stopped in Stop: gdb ... -x natvis.py.

It does what a debugger that reads natvis does, for each variable of the program: finds the view, evaluates its
expressions, and lists its elements. GDB evaluates the expressions, so a field that does not exist is an error. The elements
must be those that GDB's own view finds. A view that fits no variable is an error too.
"""

import itertools
import os
import re
import sys
import xml.etree.ElementTree

import gdb

XMLNS = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
# The elements of the format that this check knows, and what each may contain.
CONTENTS = {
    "AutoVisualizer": {"Type"},
    "Type": {"AlternativeType", "DisplayString", "StringView", "Expand"},
    "Expand": {"Item", "ExpandedItem", "ArrayItems", "IndexListItems", "LinkedListItems", "TreeItems", "CustomListItems"},
    "ArrayItems": {"Size", "ValuePointer"},
    "IndexListItems": {"Size", "ValueNode"},
    "LinkedListItems": {"Size", "HeadPointer", "NextPointer", "ValueNode"},
    "TreeItems": {"Size", "HeadPointer", "LeftPointer", "RightPointer", "ValueNode"},
    "CustomListItems": {"Variable", "Size", "Loop"},
    "Loop": {"Exec", "Item", "Loop"},
}
ATTRIBUTES = {"Name", "Condition", "Optional", "ExcludeView", "InitialValue"}


def check_schema(element):
    tag = element.tag.removeprefix(XMLNS)
    unknown = {child.tag.removeprefix(XMLNS) for child in element} - CONTENTS.get(tag, set()) | set(element.attrib) - ATTRIBUTES
    if unknown:
        raise ValueError("%s has unknown parts: %s" % (tag, ", ".join(unknown)))
    for child in element:
        check_schema(child)


def child_text(element, tag):
    return element.find(XMLNS + tag).text


class Evaluator:
    """Evaluates the expressions of one view for one object."""

    def __init__(self, pattern, value):
        # GDB knows a template by the name that the compiler gave it, in which no two closing brackets touch.
        self.address = value.address
        arguments = [] if "<" not in pattern else [value.type.template_argument(i) for i in range(pattern.count("*"))]
        self.arguments = {"$T%d" % (i + 1): "%s " % argument for i, argument in enumerate(arguments)}
        self.variables = []

    def __call__(self, expression, this=None):
        gdb.set_convenience_variable("self", self.address if this is None else this)
        expression = re.sub(r"\$T\d", lambda found: self.arguments[found.group()], expression)
        expression = expression.replace("__int64", "long").replace("$i", "$index")
        expression = re.sub(r"(\w+<\w+<\w+>)(>::\w+)", r"'\1 \2'", expression)
        expression = re.sub(r"\bthis\b", "$self", expression)
        for name in self.variables:
            expression = re.sub(r"\b%s\b" % name, "$" + name, expression)
        expression = re.sub(r"(?<![\w>.:])(m_\w+|major|minor|patch|build)\b", r"$self->\1", expression)
        return gdb.parse_and_eval(expression)


def check_text(evaluate, text):
    """Evaluates what is in the braces of a display string."""
    for part in re.findall(r"\{([^{}]+)\}", text.replace("{{", "").replace("}}", "")):
        expression, _, form = part.partition(",")
        evaluate(expression)
        if form.startswith("["):
            evaluate(form[1:form.index("]")])


def linked(evaluate, items):
    node, next_pointer, value_node = (child_text(items, tag) for tag in ("HeadPointer", "NextPointer", "ValueNode"))
    node = evaluate(node)
    for _ in range(int(evaluate(child_text(items, "Size")))):
        yield evaluate(value_node, node)
        node = evaluate(next_pointer, node)


def in_order(evaluate, items):
    left, right, value_node = (child_text(items, tag) for tag in ("LeftPointer", "RightPointer", "ValueNode"))

    def walk(node):
        if node:
            yield from walk(evaluate(left, node))
            yield evaluate(value_node, node)
            yield from walk(evaluate(right, node))

    yield from walk(evaluate(child_text(items, "HeadPointer")))


def looped(evaluate, loop):
    while evaluate(loop.get("Condition")):
        for step in loop:
            if step.tag == XMLNS + "Loop":
                yield from looped(evaluate, step)
            elif step.tag == XMLNS + "Exec":
                evaluate(step.text)
            else:
                yield evaluate(step.text)


def elements(evaluate, items):
    tag = items.tag.removeprefix(XMLNS)
    if tag == "LinkedListItems":
        yield from linked(evaluate, items)
    elif tag == "TreeItems":
        yield from in_order(evaluate, items)
    elif tag == "CustomListItems":
        for variable in items.findall(XMLNS + "Variable"):
            evaluate.variables.append(variable.get("Name"))
            gdb.set_convenience_variable(variable.get("Name"), evaluate(variable.get("InitialValue")))
        yield from looped(evaluate, items.find(XMLNS + "Loop"))
    else:
        for index in range(int(evaluate(child_text(items, "Size")))):
            gdb.set_convenience_variable("index", index)
            if tag == "ArrayItems":
                yield evaluate(child_text(items, "ValuePointer"))[index]
            else:
                yield evaluate(child_text(items, "ValueNode"))


def base_classes(value):
    """The object as each of its classes, the most derived one first."""
    yield value
    for field in value.type.strip_typedefs().fields():
        if field.is_base_class:
            yield from base_classes(value.cast(field.type))


class Natvis:
    def __init__(self, path):
        root = xml.etree.ElementTree.parse(path).getroot()
        check_schema(root)
        self.unused = set()
        self.views = []
        for view in root:
            for name in [view] + view.findall(XMLNS + "AlternativeType"):
                name = name.get("Name")
                self.unused.add(name)
                self.views.append((name, re.compile("^%s$" % re.escape(name).replace(r"\*", ".*").replace(",", ", ?")), view))

    def check(self, value):
        """Checks the view of an object, if there is one, and returns the elements that it lists."""
        value = value.referenced_value() if value.type.code == gdb.TYPE_CODE_REF else value
        if value.type.strip_typedefs().code not in (gdb.TYPE_CODE_STRUCT, gdb.TYPE_CODE_UNION):
            return
        for base in base_classes(value):
            name = base.type.strip_typedefs().unqualified().name or ""
            for pattern, compiled, view in self.views:
                if compiled.match(name):
                    self.unused.discard(pattern)
                    found = list(self.evaluate(Evaluator(pattern, base), view))
                    self.compare(value, found)
                    for element in found:
                        self.check(element)
                    return

    def evaluate(self, evaluate, view):
        is_shown = False
        for part in view.iter():
            tag = part.tag.removeprefix(XMLNS)
            # The condition of a loop is part of the loop; after the display string that is shown, none is evaluated.
            is_open = tag != "Loop" and not (tag == "DisplayString" and is_shown)
            holds = not part.get("Condition") or is_open and evaluate(part.get("Condition"))
            if tag == "DisplayString":
                is_shown = is_shown or bool(holds)
                check_text(evaluate, part.text)
            elif tag == "StringView":
                check_text(evaluate, "{%s}" % part.text)
            elif tag == "ExpandedItem" and holds:
                self.check(evaluate(part.text))
            elif tag == "Item" and part.get("Name"):
                evaluate(part.text)
            elif tag.endswith("Items"):
                yield from elements(evaluate, part)

    def compare(self, value, found):
        printer = gdb.default_visualizer(value)
        if hasattr(printer, "elements"):
            expected = [int(element.address) for element in itertools.islice(printer.elements(), printer.size())]
            if [int(element.address) for element in found] != expected:
                raise ValueError("%s: natvis lists %d elements, GDB's view others" % (value.type, len(found)))


def check_program(path):
    natvis = Natvis(path)
    frame = gdb.newest_frame()
    while frame is not None:
        frame.select()
        for symbol in frame.block():
            if symbol.is_variable or symbol.is_argument:
                try:
                    natvis.check(symbol.value(frame))
                except (gdb.error, ValueError) as error:
                    # In a library without debug information, this class is known by its name only.
                    if "ZStackString" not in str(symbol.type):
                        raise ValueError("%s: %s" % (symbol.name, error)) from error
                    natvis.unused.discard("ZStackString<*>")
        frame = frame.older() if frame.name() != "main" else None
    if natvis.unused:
        raise ValueError("no variable for %s" % ", ".join(natvis.unused))


try:
    check_program(os.environ["KX_NATVIS"])
    print("all views of the file evaluate")
except (ValueError, xml.etree.ElementTree.ParseError) as error:
    print("natvis: %s" % error, file=sys.stderr)
gdb.execute("kill")
