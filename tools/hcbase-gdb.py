"""Lets gdb show an HCString as its text and an HCArray as a sequence."""

import gdb
import gdb.printing


class StringPrinter:
    """The text lies inside the object until it is too long for that."""

    def __init__(self, value):
        self._storage = value["m_storage"]

    def to_string(self):
        sizes = self._storage["sizes"]
        on_heap = int(sizes["heapCapacity"]) != 0
        text = self._storage["heap"] if on_heap else self._storage["local"].address
        characters = text.cast(gdb.lookup_type("char").const().pointer())
        # lazy_string leaves it to gdb how much of a long text is shown, and stands a length that makes no sense.
        return characters.lazy_string(length=max(0, int(sizes["length"])))

    def display_hint(self):
        return "string"


class ArrayPrinter:
    def __init__(self, value):
        self._size = int(value["m_nSize"])
        self._data = value["m_storage"]["m_data"]

    def to_string(self):
        return f"array of length {self._size}"

    def children(self):
        return ((f"[{index}]", self._data[index]) for index in range(self._size))

    def display_hint(self):
        return "array"


def printers():
    collection = gdb.printing.RegexpCollectionPrettyPrinter("hcbase")
    collection.add_printer("HCString", "^HCString$", StringPrinter)
    collection.add_printer("HCArray", "^(HC|ZR)Array<.*>$", ArrayPrinter)
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
